// An identifier comes from one name in the path and is no longer than that. A slice around the path
// and a cgroup without a unit's name inside it change nothing; a container around it and a login
// session inside it hide all.

#include <algorithm>
#include <string>

#include "fuzz/Target.h"
#include "platform/senders/CgroupApplication.h"

void quillet::fuzz::run(platform::DataView input) {
  const std::string path(platform::textOf(input));
  const auto application = platform::cgroupApplication(path);
  if (application) {
    std::size_t longest = 0;
    for (std::size_t at = 0; at <= path.size(); ++at) {
      const auto end = std::min(path.find('/', at), path.size());
      longest = std::max(longest, end - at);
      at = end;
    }
    require(!application->empty() && application->size() <= longest);
    require(application->find('\0') == std::string::npos || path.find('\0') != std::string::npos);
  }
  require(platform::cgroupApplication("/outer.slice/" + path) == application);
  require(platform::cgroupApplication(path + "/inner") == application);
  require(!platform::cgroupApplication("/docker-0.scope/" + path));
  require(!platform::cgroupApplication(path + "/session-1.scope"));
}
