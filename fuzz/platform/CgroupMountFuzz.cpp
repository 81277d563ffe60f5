// A mount is told by a line of its own, whatever stands around it.

#include <string>

#include "fuzz/Target.h"
#include "platform/senders/CgroupWalk.h"

void quillet::fuzz::run(platform::DataView input) {
  const std::string text(platform::textOf(input));
  const auto mount = platform::CgroupMount::from(text);
  const std::string line = "41 31 0:38 / /sys/fs/a\\040b rw shared:1 - cgroup2 none rw\n";
  const platform::CgroupMount whole{"/sys/fs/a b", "/"};
  require(platform::CgroupMount::from(line + text) == whole);
  const auto after = platform::CgroupMount::from(text + "\n" + line);
  require(after == (mount && mount->root == "/" ? *mount : whole));
}
