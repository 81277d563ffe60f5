#pragma once

#include <string>
#include <string_view>

namespace platform {

/// `text` without any of the non-overlapping occurrences of `piece`, found from the left. `piece`
/// is not empty.
std::string removingOccurrences(std::string_view text, std::string_view piece);

}  // namespace platform
