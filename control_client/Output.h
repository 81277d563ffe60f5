#pragma once

#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "control_client/Failure.h"
#include "platform/store/JSONValue.h"

namespace quilletctl {

/// To standard output; fails when that takes no more, such as a full disk.
tl::expected<void, Failure> write(std::string_view text);
tl::expected<void, Failure> flush();

/// The value in ASCII, with `\u` escapes for all else, and a line feed.
std::string jsonLine(const platform::JSONValue& value);

}  // namespace quilletctl
