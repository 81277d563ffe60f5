#include "control_client/StatusText.h"

#include <cstdint>
#include <optional>

#include "control_client/DisplayText.h"
#include "control_client/JSONFields.h"
#include "control_client/Quantities.h"
#include "control_client/RoutingRule.h"
#include "control_client/Sheet.h"

namespace quilletctl {

namespace {

using platform::JSONValue;

constexpr char kNone[] = "-";
constexpr std::size_t kLabelWidth = 15;
constexpr std::size_t kCountWidth = 12;
constexpr std::size_t kShareWidth = 9;

std::string text(const JSONValue& object, const char* name) {
  return printable(textOf(object, name).value_or(kNone));
}

std::string count(const JSONValue& object, const char* name) {
  const auto number = countOf(object, name);
  return number ? std::to_string(*number) : kNone;
}

/// A quantity in its unit.
std::string shown(const std::optional<double>& number, std::string (*unit)(double)) {
  return number ? unit(*number) : kNone;
}

std::string listIn(const JSONValue& values) {
  std::string list;
  for (const auto& value : values.is_array() ? values : JSONValue::array()) {
    if (value.is_string()) {
      list += (list.empty() ? "" : ", ") + printable(value.get<std::string>());
    }
  }
  return list.empty() ? kNone : list;
}

std::string bypassText(const JSONValue& status) {
  const auto isOn = flagOf(status, "bypass");
  if (!isOn) {
    return kNone;
  }
  return *isOn ? "on: no rule applies, the system's own server answers everything" : "off";
}

std::string policyText(const JSONValue& policy) {
  const auto age = numberOf(policy, "age");
  const auto* const domains = countOf(policy, "domains") == 1U ? " domain" : " domains";
  auto result =
      age ? count(policy, "domains") + domains + ", fetched " + durationText(*age) + " ago"
          : std::string("none yet");
  const auto outcome = textOf(policy, "outcome");
  if (outcome == "failed") {
    result += "; the last fetch failed";
  } else if (outcome == "waiting") {
    result += "; waiting for the policy server";
  }
  return result;
}

std::string answerTimes(const JSONValue& status) {
  const auto median = numberOf(status, "median_ms");
  const auto slowest = numberOf(status, "p99_ms");
  if (!median || !slowest) {
    return "no answer yet";
  }
  return "median " + millisecondsText(*median) + " ms, 99 % within " + millisecondsText(*slowest) +
         " ms";
}

void addSettings(Sheet& sheet, const JSONValue& status) {
  const auto row = [&sheet](const char* label, const std::string& value) {
    sheet.line(padded(label, kLabelWidth), value);
  };
  row("listens at", listIn(memberOf(status, "listen")));
  row("bypass", bypassText(status));
  row("log", text(status, "log"));
  row("policy", policyText(memberOf(status, "policy")));
  row("memory", shown(numberOf(status, "memory"), sizeText));
}

void addQueries(Sheet& sheet, const JSONValue& status) {
  const auto& transport = memberOf(memberOf(status, "queries"), "transport");
  sheet.line(padded("queries", kLabelWidth),
             count(transport, "udp") + " by UDP, " + count(transport, "tcp") + " by TCP");
  sheet.line(padded("of these", kLabelWidth), count(status, "answered") + " answered, " +
                                                  count(status, "unanswered") + " unanswered, " +
                                                  count(status, "declined") + " declined, " +
                                                  count(status, "open") + " open");
  sheet.line(padded("answer times", kLabelWidth), answerTimes(status));
}

std::uint64_t sumOf(const JSONValue& byRule) {
  std::uint64_t sum = 0;
  for (const auto& rule : kRoutingRules) {
    sum += countOf(byRule, std::to_string(rule.number).c_str()).value_or(0);
  }
  return sum;
}

void addRules(Sheet& sheet, const JSONValue& status) {
  const auto& byRule = memberOf(memberOf(status, "queries"), "rule");
  const auto whole = sumOf(byRule);
  sheet.line(padded("rule", RoutingRule::kWidest + 2) + rightAligned("queries", kCountWidth) +
                 rightAligned("share", kShareWidth) + "  ",
             "servers");
  for (const auto& rule : kRoutingRules) {
    const auto number = std::to_string(rule.number);
    const auto queries = countOf(byRule, number.c_str()).value_or(0);
    const bool isDeclined = rule.number == RoutingRule::kDeclined;
    sheet.line(padded(number + ' ' + std::string(rule.name), RoutingRule::kWidest + 2) +
                   rightAligned(std::to_string(queries), kCountWidth) +
                   rightAligned(shareText(queries, whole), kShareWidth) + "  ",
               isDeclined ? "the system's own"
                          : listIn(memberOf(memberOf(status, "servers"), number.c_str())));
  }
}

}  // namespace

std::string statusText(const JSONValue& status, std::size_t width) {
  Sheet sheet(width);
  sheet.line("", "quillet-dns-proxy " + text(status, "version") + ", process " +
                     count(status, "pid") + ", has run for " +
                     shown(numberOf(status, "uptime"), durationText));
  sheet.blankLine();
  addSettings(sheet, status);
  sheet.blankLine();
  addQueries(sheet, status);
  sheet.blankLine();
  addRules(sheet, status);
  return sheet.text();
}

}  // namespace quilletctl
