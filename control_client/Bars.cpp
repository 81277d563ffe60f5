#include "control_client/Bars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "control_client/DisplayText.h"

namespace quilletctl {

namespace {

constexpr std::size_t kParts = 8;  // of a cell

/// A cell that is filled by 0 to 8 parts.
using Cells = std::array<std::string_view, kParts + 1>;

constexpr Cells kRising{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr Cells kGrowing{" ", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█"};
constexpr Cells kASCII{" ", ".", ".", ".", ":", ":", "|", "|", "#"};
constexpr Cells kASCIIGrowing{" ", ".", ".", ".", "-", "-", "=", "=", "#"};

/// The parts of a bar of `cells`; at least one for more than nothing.
std::size_t partsOf(std::uint64_t value, std::uint64_t whole, std::size_t cells) {
  if (value == 0 || whole == 0) {
    return 0;
  }
  const double share = static_cast<double>(std::min(value, whole)) / static_cast<double>(whole);
  const auto parts = std::llround(share * static_cast<double>(cells * kParts));
  return std::max<std::size_t>(static_cast<std::size_t>(parts), 1);
}

/// What falls into the cell that `below` others come before.
std::size_t partsInCell(std::size_t parts, std::size_t below) {
  return std::min(parts - std::min(parts, below * kParts), kParts);
}

}  // namespace

std::string horizontalBar(std::uint64_t part, std::uint64_t whole, std::size_t width) {
  const auto& cells = hasBlockCharacters() ? kGrowing : kASCIIGrowing;
  const auto parts = partsOf(part, whole, width);
  std::string bar;
  for (std::size_t cell = 0; cell < width; ++cell) {
    bar += cells[partsInCell(parts, cell)];
  }
  return bar;
}

std::vector<std::string> verticalBars(const std::vector<std::uint64_t>& values,
                                      std::size_t height) {
  const auto& cells = hasBlockCharacters() ? kRising : kASCII;
  const auto highest = values.empty() ? 0 : *std::ranges::max_element(values);
  std::vector<std::string> lines(height);
  for (const auto value : values) {
    const auto parts = partsOf(value, highest, height);
    for (std::size_t below = 0; below < height; ++below) {
      lines[height - 1 - below] += cells[partsInCell(parts, below)];
    }
  }
  return lines;
}

}  // namespace quilletctl
