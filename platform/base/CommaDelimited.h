#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// `text` split at every comma, each piece unchanged, empty pieces and blanks included. The empty
/// text gives the empty list.
std::vector<std::string> parseCommaDelimitedArr(std::string_view text);

}  // namespace platform
