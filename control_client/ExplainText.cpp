#include "control_client/ExplainText.h"

#include <algorithm>
#include <string_view>

#include "DnsProxyExt/settings/IdentityOption.h"
#include "control_client/DisplayText.h"
#include "control_client/JSONFields.h"
#include "control_client/RoutingRule.h"
#include "control_client/Sheet.h"

namespace quilletctl {

namespace {

using platform::JSONValue;

constexpr char kNone[] = "-";
constexpr std::size_t kLabelWidth = 10;
constexpr std::size_t kCodeWidth = 6;
constexpr std::size_t kMeaningWidth = 25;

std::string ruleText(const JSONValue& route) {
  const auto number = countOf(route, "rule");
  if (!number) {
    return kNone;
  }
  const auto name = nameOfRule(*number);
  return std::to_string(*number) + (name.empty() ? "" : ", " + std::string(name));
}

std::string matchText(const JSONValue& route) {
  const auto matched = textOf(route, "matched");
  const auto from = textOf(route, "from");
  if (matched && from) {
    return '"' + printable(*matched) + "\", from " + printable(*from);
  }
  if (matched || from) {
    return printable(matched ? *matched : *from);
  }
  const auto rule = countOf(route, "rule");
  if (rule == std::uint64_t{RoutingRule::kDeclined}) {
    return "no rule is looked at, as while bypass is on";
  }
  return rule == std::uint64_t{RoutingRule::kFiltered} ? "no other rule applies" : kNone;
}

std::string serverText(const JSONValue& route) {
  const auto server = textOf(route, "server").value_or(kNone);
  return server == "system" ? "the system's own" : printable(server);
}

std::string identityText(const JSONValue& route) {
  const auto goesAlong = flagOf(route, "identity");
  if (!goesAlong) {
    return kNone;
  }
  return *goesAlong ? "goes along" : "does not go along";
}

/// What an option of that code holds; empty when that is not known or not worth a word.
std::string meaningOf(std::string_view code) {
  const auto* const found =
      std::ranges::find(quillet::kIdentityOptions, code, &quillet::IdentityOption::code);
  const bool isKnown = found != std::end(quillet::kIdentityOptions);
  return isKnown && found->holds.front() != '`' ? std::string(found->holds) : "";
}

void addOptions(Sheet& sheet, const JSONValue& options) {
  if (!options.is_object()) {
    return;
  }
  for (const auto& [code, value] : options.items()) {
    const auto head = std::string(kLabelWidth, ' ') + padded(printable(code), kCodeWidth) +
                      padded(meaningOf(code), kMeaningWidth);
    sheet.line(head, value.is_string() ? printable(value.get<std::string>()) : kNone);
  }
}

}  // namespace

std::string explainText(const JSONValue& route, std::size_t width) {
  Sheet sheet(width);
  sheet.line(padded("rule", kLabelWidth), ruleText(route));
  sheet.line(padded("matched", kLabelWidth), matchText(route));
  sheet.line(padded("server", kLabelWidth), serverText(route));
  sheet.line(padded("identity", kLabelWidth), identityText(route));
  addOptions(sheet, memberOf(route, "options"));
  return sheet.text();
}

}  // namespace quilletctl
