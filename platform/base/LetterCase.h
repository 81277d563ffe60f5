#pragma once

#include <string>
#include <string_view>

namespace platform {

/// `text` by the simple case folding of Unicode, each character by itself: two texts that differ
/// only in letter case become the same. Bytes that are no UTF-8 stand as they are.
std::string caseFolded(std::string_view text);

/// Whether the two texts are equal but for the case of the letters A to Z, as configuration
/// switches are compared.
bool equalsIgnoringCase(std::string_view left, std::string_view right);

}  // namespace platform
