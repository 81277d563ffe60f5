#pragma once

#include <filesystem>
#include <vector>

#include "platform/xpc/ServicePlaces.h"

namespace quillet {

/// Where the control socket may be: the proxy takes the first, a client the first at which somebody
/// answers.
inline std::vector<std::filesystem::path> controlPlaces() {
  return platform::servicePlaces("dns-proxy.sock", "quillet");
}

}  // namespace quillet
