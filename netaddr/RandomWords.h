#pragma once

#include <cstdint>
#include <span>

namespace quillet {

/// Fills the words from the system's random source. Throws std::system_error when it has none to
/// give: a number that is not random is never handed out for one.
void fillWithRandomWords(std::span<std::uint64_t> words);

}  // namespace quillet
