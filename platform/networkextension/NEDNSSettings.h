#pragma once

#include <string>
#include <vector>

namespace platform {

/// The DNS servers that the system itself uses. Printed as `NEDNSSettings(servers:
/// ["127.0.0.53"])`.
struct NEDNSSettings {
  /// As the configuration has them, not checked.
  std::vector<std::string> servers;

  void describe(std::string& out) const;

  bool operator==(const NEDNSSettings&) const = default;
};

}  // namespace platform
