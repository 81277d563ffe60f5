#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "DnsProxyExt/routing/Utils.h"

namespace quillet {

/// A domain fragment to the server that answers for it. A fragment serves every domain that
/// contains it.
class DomainMap {
 public:
  using Entry = std::pair<const std::string, DNSHostRef>;

  /// Octets of a domain that are searched; of a longer one, those at its end. Bounds the time of a
  /// lookup: a domain name has 255 octets at most (RFC 1035 section 2.3.4), a hostile text may have
  /// some 64 Ki.
  static constexpr std::size_t kMaxSearched = 1024;

  static constexpr std::size_t kMaxShown = 16;
  static constexpr std::size_t kMaxPrinted = 256UL * 1024;

  DomainMap() = default;
  DomainMap(std::initializer_list<std::pair<std::string, DNSHostRef>> entries);

  /// Maps a fragment, in place of what it was mapped to.
  void set(std::string fragment, DNSHostRef server);

  /// The longest fragment that `domain` contains and its server, so that the most particular one
  /// decides; of several of that length the one that stands first in it. Or nullptr. A fragment
  /// without text matches nothing. Letter case counts.
  ///
  /// Looks up the pieces of `domain` that are as long as a fragment, so the time depends on the
  /// lengths that fragments have and not on how many there are.
  [[nodiscard]] const Entry* find(std::string_view domain) const;
  /// Its server alone.
  [[nodiscard]] DNSHostRef server(std::string_view domain) const;

  /// The different servers that it names, in the order of their texts; of more than `kMaxShown`
  /// some. Made once for as long as the map stays as it is.
  [[nodiscard]] const std::set<std::string>& serverTexts() const;

  [[nodiscard]] std::size_t size() const { return servers_.size(); }
  [[nodiscard]] bool empty() const { return servers_.empty(); }

  /// In the order of the fragments, as many as some `kMaxPrinted` octets hold: one server's text
  /// may be long, and stand for thousands of them.
  void describe(std::string& out) const;

 private:
  [[nodiscard]] std::set<std::string> findServerTexts() const;

  struct Hash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  std::unordered_map<std::string, DNSHostRef, Hash, std::equal_to<>> servers_;
  /// Of all fragments that have text, the longest first.
  std::set<std::size_t, std::greater<>> lengths_;
  mutable std::optional<std::set<std::string>> serverTexts_;  // once they are asked for
};

}  // namespace quillet
