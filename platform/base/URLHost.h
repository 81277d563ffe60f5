#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The host part of `text` read as a URL (RFC 3986 section 3.2.2), without user information, port
/// and the brackets of an IP literal; absent when the text is no URL or has no host part or an
/// empty one.
std::optional<std::string> urlHost(std::string_view text);

}  // namespace platform
