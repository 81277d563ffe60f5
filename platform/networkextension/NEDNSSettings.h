#pragma once

#include <string>
#include <vector>

namespace platform {

/// The DNS servers that the system itself uses. For log texts only.
struct NEDNSSettings {
  std::vector<std::string> servers;

  void describe(std::string& out) const;
};

}  // namespace platform
