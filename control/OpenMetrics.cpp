// The status as OpenMetrics 1.0 text.

#include <DeploymentValues.h>

#include "control/ProxyStatus.h"
#include "platform/base/Description.h"

namespace quillet {

namespace {

// Upper bounds of the histogram's buckets: powers of four, from 256 microseconds to 67 seconds.
constexpr unsigned kFirstExponent = 8;
constexpr unsigned kLastExponent = 26;

/// Families of metrics one after another, each with its samples.
class Exposition {
 public:
  /// Begins a family. One with a unit ends with it: `uptime_seconds`.
  Exposition& family(const std::string& name, std::string_view type, std::string_view help,
                     std::string_view unit = "") {
    name_ = "quillet_" + name;
    line("# TYPE ", name_, " ", type);
    if (!unit.empty()) {
      line("# UNIT ", name_, " ", unit);
    }
    line("# HELP ", name_, " ", help);
    return *this;
  }

  /// `suffix` is what the family's type adds to its name, with the labels.
  template <class Number>
  Exposition& sample(std::string_view suffix, const Number& value) {
    line(name_, suffix, " ", value);
    return *this;
  }

  template <class Number>
  void gauge(const std::string& name, std::string_view help, const Number& value,
             std::string_view unit = "") {
    family(name, "gauge", help, unit).sample("", value);
  }

  /// The whole text.
  std::string finish() { return text_ + "# EOF\n"; }

 private:
  template <class... Pieces>
  void line(const Pieces&... pieces) {
    (platform::describe(text_, pieces), ...);
    text_.push_back('\n');
  }

  std::string text_;
  std::string name_;
};

void addQueries(Exposition& out, const QueryCounters& queries) {
  out.family("queries", "counter", "Queries that are over, by what became of them.")
      .sample("_total{outcome=\"answered\"}", queries.answered)
      .sample("_total{outcome=\"unanswered\"}", queries.unanswered)
      .sample("_total{outcome=\"declined\"}", queries.declined);
  out.family("rule_queries", "counter", "The same by the rule that chose the server, 0 for none.");
  for (std::size_t rule = 0; rule < queries.byRule.size(); ++rule) {
    out.sample("_total{rule=\"" + std::to_string(rule) + "\"}", queries.byRule[rule]);
  }
  out.family("transport_queries", "counter", "The same by transport.")
      .sample("_total{transport=\"udp\"}", queries.udp)
      .sample("_total{transport=\"tcp\"}", queries.tcp);
}

void addTimes(Exposition& out, const AnswerTimes& times) {
  out.family("answer_seconds", "histogram",
             "From the arrival of a query until its answer was sent.", "seconds");
  for (unsigned exponent = kFirstExponent; exponent <= kLastExponent; exponent += 2) {
    const auto bound = static_cast<double>(std::uint64_t{1} << exponent) / 1e6;
    out.sample("_bucket{le=\"" + platform::description(bound) + "\"}", times.countUpTo(exponent));
  }
  out.sample("_bucket{le=\"+Inf\"}", times.count())
      .sample("_sum", times.sumSeconds())
      .sample("_count", times.count());
}

void addPolicy(Exposition& out, const ProxyStatus& status) {
  if (status.policyAge) {
    out.gauge("policy_age_seconds", "Since a policy was fetched.", *status.policyAge, "seconds");
  }
  out.gauge("policy_domains", "Domains of the policy.", status.policyDomains);
  out.gauge("policy_failed", "Whether the last fetch has failed.",
            status.policyOutcome == PolicyState::Outcome::failed ? 1 : 0);
}

}  // namespace

std::string ProxyStatus::openMetrics() const {
  Exposition out;
  out.family("build", "info", "The program.")
      .sample(std::string("_info{version=\"") + deployment::kVersion + "\"}", 1);
  out.gauge("uptime_seconds", "Since the start.", uptime, "seconds");
  out.gauge("resident_memory_bytes", "Memory in use.", memory, "bytes");
  out.gauge("bypass", "Whether all queries are declined.", bypass ? 1 : 0);
  out.gauge("log_brief", "Whether the log has one line for each query.",
            log == platform::LogMode::brief ? 1 : 0);
  addPolicy(out, *this);
  addQueries(out, queries);
  out.gauge("open_queries", "Queries that wait for their answer.", openQueries);
  addTimes(out, queries.times);
  return out.finish();
}

}  // namespace quillet
