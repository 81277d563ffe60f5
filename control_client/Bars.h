#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quilletctl {

/// Bars of block characters, which part a cell in eighths; where the terminal takes ASCII only, of
/// less exact ones.

/// A bar that is `part` of `whole` as long as `width`, filled with blanks to `width`. What is more
/// than nothing shows.
std::string horizontalBar(std::uint64_t part, std::uint64_t whole, std::size_t width);

/// A bar for each value, `height` lines high, the uppermost first. The highest value fills them.
std::vector<std::string> verticalBars(const std::vector<std::uint64_t>& values, std::size_t height);

}  // namespace quilletctl
