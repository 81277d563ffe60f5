#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Appends `text` to `out` such that it stays one line and reaches no terminal raw: a line feed
/// becomes
/// `\n`; any other control character (C0, DEL, C1) and any byte that is not part of valid UTF-8
/// becomes
/// `\xNN`. All else stands as it is, a backslash too.
void appendEscaped(std::string& out, std::string_view text);

}  // namespace platform
