#pragma once

#include <cstdint>
#include <string_view>

namespace quilletctl {

/// What chose the server of a query, for a person to read.
struct RoutingRule {
  int number;
  /// At most `kWidest` columns.
  std::string_view name;

  static constexpr std::size_t kWidest = 19;
  /// Of a query that the provider leaves to the system's own server.
  static constexpr int kDeclined = 0;
  /// What nothing else applies to.
  static constexpr int kFiltered = 5;
};

/// In the order in which they apply; at the end what none applies to.
inline constexpr RoutingRule kRoutingRules[] = {
    {1, "local network"},
    {2, "allowed application"},
    {3, "mapped domain"},
    {4, "policy domain"},
    {RoutingRule::kFiltered, "filtering service"},
    {RoutingRule::kDeclined, "declined"},
};

/// Empty for a number that is none of them.
constexpr std::string_view nameOfRule(std::uint64_t number) {
  for (const auto& rule : kRoutingRules) {
    if (static_cast<std::uint64_t>(rule.number) == number) {
      return rule.name;
    }
  }
  return "";
}

}  // namespace quilletctl
