// An identifier comes from one name in the path and is no longer than the path. A slice around the
// path and a cgroup without a unit's name inside it change nothing; a container around it and a
// login session inside it hide all.

#include <string>

#include "fuzz/Target.h"
#include "platform/senders/CgroupApplication.h"

void quillet::fuzz::run(platform::DataView input) {
  const std::string path(platform::textOf(input));
  const auto application = platform::cgroupApplication(path);
  if (application) {
    require(!application->empty() && application->size() <= path.size());
    require(application->find('\0') == std::string::npos || path.find('\0') != std::string::npos);
  }
  require(platform::cgroupApplication("/outer.slice/" + path) == application);
  require(platform::cgroupApplication(path + "/inner") == application);
  require(!platform::cgroupApplication("/docker-0.scope/" + path));
  require(!platform::cgroupApplication(path + "/session-1.scope"));
}
