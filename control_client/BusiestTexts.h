#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quilletctl {

/// Counts which texts come most often, in bounded memory: the "space-saving" algorithm (Metwally,
/// Agrawal, El Abbadi, 2005). Beyond the bound a new text takes the place of the rarest, and its
/// count, so that counts are exact until then and never too low afterwards.
class BusiestTexts {
 public:
  /// Texts that are counted. One costs its text twice and about 200 octets.
  static constexpr std::size_t kMaxTexts = 512;

  using Count = std::pair<std::uint64_t, std::string>;

  void add(std::string_view text);
  /// At most `limit`, the busiest first; those of equal count by their texts.
  [[nodiscard]] std::vector<Count> first(std::size_t limit) const;

 private:
  /// The highest count first.
  struct Order {
    bool operator()(const Count& a, const Count& b) const {
      return a.first != b.first ? a.first > b.first : a.second < b.second;
    }
  };

  std::map<std::string, std::uint64_t, std::less<>> counts_;
  std::set<Count, Order> order_;  // the same as counts_
};

}  // namespace quilletctl
