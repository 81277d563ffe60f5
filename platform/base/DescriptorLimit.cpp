#include "platform/base/DescriptorLimit.h"

#include <sys/resource.h>

#include <algorithm>

namespace platform {

std::size_t descriptorLimit() {
  rlimit limit{};
  return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
}

void raiseDescriptorLimit(std::size_t wanted) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = std::max(limit.rlim_cur, std::min<rlim_t>(wanted, limit.rlim_max));
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
}

}  // namespace platform
