#include "DnsProxyExt/routing/MappedDomains.h"

#include <algorithm>
#include <utility>

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

std::vector<MappedDomain> mappedDomainsIn(std::string_view text) {
  std::vector<MappedDomain> entries;
  for (auto& entry : platform::parseCommaDelimitedArr(enclosed(text))) {
    const auto colon = entry.find(':');
    if (colon == std::string::npos) {
      entries.push_back({std::move(entry), std::nullopt});
    } else {
      entries.push_back({entry.substr(0, colon), entry.substr(colon + 1)});
    }
  }
  return entries;
}

DomainMap parseMappedDomains(std::string_view text) {
  DomainMap map;
  for (auto& [fragment, server] : mappedDomainsIn(text)) {
    if (server) {
      map.set(std::move(fragment), std::make_shared<Utils::DNSHost>(serverText(*server)));
    }
  }
  return map;
}

}  // namespace quillet
