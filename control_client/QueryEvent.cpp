#include "control_client/QueryEvent.h"

#include "control_client/DisplayText.h"
#include "control_client/JSONFields.h"
#include "control_client/RoutingRule.h"

namespace quilletctl {

namespace {

using platform::JSONValue;

std::string word(const JSONValue& params, const char* name) {
  const auto text = textOf(params, name).value_or("");
  return text.empty() ? QueryEvent::kUnknown : cut(printableWord(text), QueryEvent::kMaxText);
}

std::string line(const JSONValue& params, const char* name) {
  const auto text = textOf(params, name).value_or("");
  return text.empty() ? QueryEvent::kUnknown : cut(printable(text), QueryEvent::kMaxText);
}

std::optional<int> ruleIn(const JSONValue& params) {
  const auto number = countOf(params, "rule");
  for (const auto& rule : kRoutingRules) {
    if (number == static_cast<std::uint64_t>(rule.number)) {
      return rule.number;
    }
  }
  return std::nullopt;
}

}  // namespace

QueryEvent QueryEvent::from(const JSONValue& params) {
  QueryEvent event;
  event.name = word(params, "name");
  event.type = word(params, "type");
  event.application = line(params, "app");
  event.server = word(params, "server");
  event.rule = ruleIn(params);
  if (memberOf(params, "rcode").is_string()) {
    event.rcode = word(params, "rcode");
  }
  event.milliseconds = numberOf(params, "ms").value_or(0);
  return event;
}

}  // namespace quilletctl
