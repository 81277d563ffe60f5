#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/// How many octets must be put in, taken out or replaced to make the one text of the other
/// (Levenshtein). Time and memory grow with the product and the sum of the lengths.
std::size_t editDistance(std::string_view left, std::string_view right);

}  // namespace platform
