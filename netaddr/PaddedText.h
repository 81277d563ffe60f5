#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillet {

/// The text when it has that length already; otherwise the pad, repeated and cut, makes up the
/// difference in front of it. An empty pad adds nothing.
std::string stringByPaddingLeftToLength(std::string_view text, std::size_t length,
                                        std::string_view pad);

/// Appends the number in decimal or lower-case hexadecimal, with zeros in front up to so many
/// digits.
void appendDecimal(std::string& out, std::uint64_t number, std::size_t digits = 1);
void appendHexadecimal(std::string& out, std::uint64_t number, std::size_t digits = 1);

}  // namespace quillet
