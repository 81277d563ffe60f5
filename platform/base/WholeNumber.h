#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string_view>

namespace platform {

/// `text` as a decimal number: digits only, after a "-" for a signed type, within the type's range.
/// Absent for anything else, the empty text included.
template <std::integral Number>
std::optional<Number> wholeNumber(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace platform
