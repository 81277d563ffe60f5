#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace platform {

/// `text` as a signed decimal integer: an optional leading "+" or "-", then digits only, within 64
/// bits. Absent for anything else, the empty text included.
std::optional<std::int64_t> decimalInteger(std::string_view text);

}  // namespace platform
