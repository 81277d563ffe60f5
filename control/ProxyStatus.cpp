#include "control/ProxyStatus.h"

#include <DeploymentValues.h>
#include <unistd.h>

#include <fstream>

namespace quillet {

using platform::JSONObject;
using platform::JSONValue;

namespace {

constexpr double kMedian = 0.5;
constexpr double kPercentile99 = 0.99;

template <class T>
JSONValue orNull(const std::optional<T>& value) {
  return value ? JSONValue(*value) : JSONValue(nullptr);
}

JSONValue outcomeText(const std::optional<PolicyState::Outcome>& outcome) {
  if (!outcome) {
    return nullptr;
  }
  switch (*outcome) {
    case PolicyState::Outcome::waiting:
      return "waiting";
    case PolicyState::Outcome::fetched:
      return "fetched";
    case PolicyState::Outcome::failed:
      break;
  }
  return "failed";
}

JSONValue queriesOf(const QueryCounters& queries) {
  JSONObject rules;
  for (std::size_t rule = 0; rule < queries.byRule.size(); ++rule) {
    rules[std::to_string(rule)] = queries.byRule[rule];
  }
  return {{"rule", std::move(rules)}, {"transport", {{"udp", queries.udp}, {"tcp", queries.tcp}}}};
}

}  // namespace

JSONValue ProxyStatus::json() const {
  JSONObject serversOfRules;
  for (const auto& [rule, texts] : servers) {
    serversOfRules[std::to_string(rule)] = texts;
  }
  const JSONObject policy{{"age", orNull(policyAge)},
                          {"domains", policyDomains},
                          {"outcome", outcomeText(policyOutcome)}};
  return JSONObject{{"version", deployment::kVersion},
                    {"pid", ::getpid()},
                    {"uptime", uptime},
                    {"listen", listen},
                    {"bypass", bypass},
                    {"log", platform::nameOf(log)},
                    {"servers", std::move(serversOfRules)},
                    {"policy", policy},
                    {"queries", queriesOf(queries)},
                    {"answered", queries.answered},
                    {"unanswered", queries.unanswered},
                    {"declined", queries.declined},
                    {"open", openQueries},
                    {"median_ms", orNull(queries.times.quantile(kMedian))},
                    {"p99_ms", orNull(queries.times.quantile(kPercentile99))},
                    {"memory", memory}};
}

std::uint64_t ProxyStatus::residentOctets() {
  std::uint64_t size = 0;
  std::uint64_t resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;  // in pages (proc(5))
  return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace quillet
