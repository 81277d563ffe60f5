#pragma once

#include <string>
#include <string_view>

namespace quillet {

/// `text` with the letters A to Z in lower case; other characters stand as they are. Signing
/// identifiers and configuration switches are ASCII.
std::string lowercased(std::string_view text);

/// Whether the two texts are equal but for the case of the letters A to Z.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace quillet
