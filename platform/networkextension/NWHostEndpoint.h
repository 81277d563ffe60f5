#pragma once

#include <string>

namespace platform {

/// An address of a flow, as texts: the application's, or its destination. Printed as
/// `127.0.0.1:53` or
/// `[::1]:53`.
struct NWHostEndpoint {
  std::string hostname;
  std::string port;

  void describe(std::string& out) const;

  bool operator==(const NWHostEndpoint&) const = default;
};

}  // namespace platform
