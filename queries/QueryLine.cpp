#include "queries/QueryLine.h"

#include <charconv>
#include <string_view>

#include "platform/base/Description.h"
#include "queries/Mnemonics.h"

namespace quillet {

namespace {

bool standsAsItIs(char c) { return c > ' ' && c < '\x7F' && c != '=' && c != '\\'; }

void appendText(std::string& out, std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char c : text) {
    if (standsAsItIs(c)) {
      out.push_back(c);
    } else {
      const auto octet = static_cast<unsigned char>(c);
      out.append("\\x").append({kDigits[octet / 16], kDigits[octet % 16]});
    }
  }
  if (text.empty()) {
    out.push_back('-');
  }
}

void appendMilliseconds(std::string& out, double milliseconds) {
  char digits[32];
  const auto end =
      std::to_chars(digits, digits + sizeof digits, milliseconds, std::chars_format::fixed, 1);
  out.append(digits, end.ptr);
}

}  // namespace

void QueryLine::describe(std::string& out) const {
  out.append("query ");
  appendText(out, outcome.name.value_or(""));
  out.append(" ").append(outcome.type ? typeMnemonic(*outcome.type) : "-");
  out.append(" app=");
  appendText(out, outcome.application);
  out.append(" rule=");
  platform::describe(out, outcome.rule);
  out.append(" server=");
  appendText(out, outcome.server);
  out.append(" rcode=").append(outcome.rcode ? rcodeMnemonic(*outcome.rcode) : "none");
  out.append(" ms=");
  appendMilliseconds(out, outcome.milliseconds);
}

}  // namespace quillet
