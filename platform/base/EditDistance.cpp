#include "platform/base/EditDistance.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace platform {

std::size_t editDistance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> distances(right.size() + 1);  // of the part of `left` seen so far
  std::iota(distances.begin(), distances.end(), 0);
  for (const char letter : left) {
    std::size_t diagonal = distances[0]++;
    for (std::size_t i = 0; i < right.size(); ++i) {
      const auto replaced = diagonal + (letter == right[i] ? 0 : 1);
      diagonal = distances[i + 1];
      distances[i + 1] = std::min({replaced, diagonal + 1, distances[i] + 1});
    }
  }
  return distances.back();
}

}  // namespace platform
