#include "DnsProxyExt/routing/MappedDomains.h"

#include <algorithm>

#include "platform/base/CommaDelimited.h"
#include "platform/base/Utf8.h"

namespace quillet {

namespace {

/// How many bytes the first character takes; a byte that is no character's counts as one.
std::size_t firstLength(std::string_view text) {
  return std::max<std::size_t>(platform::utf8SequenceLength(text), 1);
}

std::size_t lastLength(std::string_view text) {
  constexpr std::size_t kLongest = 4;
  for (std::size_t length = 2; length <= std::min(kLongest, text.size()); ++length) {
    if (platform::utf8SequenceLength(text.substr(text.size() - length)) == length) {
      return length;
    }
  }
  return 1;
}

/// `text` without its first and its last character.
std::string_view enclosed(std::string_view text) {
  if (text.empty()) {
    return text;
  }
  text.remove_prefix(firstLength(text));
  if (!text.empty()) {
    text.remove_suffix(lastLength(text));
  }
  return text;
}

/// The server's part of what follows a fragment: `10.0.0.1` and `10.0.0.1:54` as they stand,
/// without the port when more follows.
std::string_view serverText(std::string_view rest) {
  return std::count(rest.begin(), rest.end(), ':') > 1 ? rest.substr(0, rest.find(':')) : rest;
}

}  // namespace

DomainMap parseMappedDomains(std::string_view text) {
  DomainMap map;
  for (const auto& entry : platform::parseCommaDelimitedArr(enclosed(text))) {
    const std::string_view view = entry;
    const auto colon = view.find(':');
    if (colon != std::string_view::npos) {
      const auto server = serverText(view.substr(colon + 1));
      map.set(entry.substr(0, colon), std::make_shared<Utils::DNSHost>(server));
    }
  }
  return map;
}

}  // namespace quillet
