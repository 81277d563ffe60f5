#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Where a number stands in a JSON text.
struct JSONNumber {
  /// How many numbers stand before it.
  std::size_t index;
  std::size_t offset;
  std::size_t size;
};

/// The numbers of a JSON text that are beyond the range of a double. They end the library's parser,
/// which gives no way to go on after them: so it is handed a text that has zeros in their places.
/// Exact up to the first error of a text, and the parser goes no further than that.
std::vector<JSONNumber> findNumbersBeyondDouble(std::string_view text);

/// `text` with each of `numbers` replaced by a zero and blanks.
std::string withZeroFor(const std::vector<JSONNumber>& numbers, std::string_view text);

}  // namespace platform
