#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "DnsProxyExt/upstream/Policy.h"
#include "control/QueryCounters.h"
#include "platform/log/LogMode.h"
#include "platform/store/JSONValue.h"

namespace quillet {

/// How the proxy is.
struct ProxyStatus {
  /// As the method `status` gives it.
  [[nodiscard]] platform::JSONValue json() const;
  /// The same as OpenMetrics text.
  [[nodiscard]] std::string openMetrics() const;

  /// Octets of this process that are in memory; 0 where the system does not tell.
  static std::uint64_t residentOctets();

  double uptime = 0;  // seconds
  std::vector<std::string> listen;
  bool bypass = false;
  platform::LogMode log = platform::LogMode::full;
  /// The servers of each rule.
  std::map<int, std::set<std::string>> servers{};
  /// Seconds since a policy was fetched.
  std::optional<double> policyAge{};
  std::size_t policyDomains = 0;
  std::optional<PolicyState::Outcome> policyOutcome;
  const QueryCounters& queries;
  std::size_t openQueries = 0;
  std::uint64_t memory = residentOctets();
};

}  // namespace quillet
