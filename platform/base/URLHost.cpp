#include "platform/base/URLHost.h"

#include <algorithm>

namespace platform {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// RFC 3986 section 3.1; a reference need not have one (section 4.2).
bool isSchemeAndColon(std::string_view text) {
  if (text.empty()) {
    return true;
  }
  if (text.back() != ':') {
    return false;
  }
  text.remove_suffix(1);
  return !text.empty() && isLetter(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
         });
}

/// RFC 3986 section 3.2.2: reg-name, and the colons of an IP literal.
bool isHostCharacter(char c) {
  return isLetter(c) || isDigit(c) ||
         std::string_view("-._~!$&'()*+,;=%:").find(c) != std::string_view::npos;
}

/// The authority without user information and port; what stands in brackets without them.
std::string_view hostOfAuthority(std::string_view authority) {
  if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
    authority.remove_prefix(at + 1);
  }
  if (!authority.starts_with('[')) {
    return authority.substr(0, authority.find(':'));
  }
  const auto close = authority.find(']');
  if (close == std::string_view::npos) {
    return {};
  }
  const auto rest = authority.substr(close + 1);
  return rest.empty() || rest.starts_with(':') ? authority.substr(1, close - 1)
                                               : std::string_view();
}

}  // namespace

std::optional<std::string> urlHost(std::string_view text) {
  const auto slashes = text.find("//");
  if (slashes == std::string_view::npos || !isSchemeAndColon(text.substr(0, slashes))) {
    return std::nullopt;
  }
  text.remove_prefix(slashes + 2);
  const auto host = hostOfAuthority(text.substr(0, text.find_first_of("/?#")));
  if (host.empty() || !std::all_of(host.begin(), host.end(), isHostCharacter)) {
    return std::nullopt;
  }
  return std::string(host);
}

}  // namespace platform
