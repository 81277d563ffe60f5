#pragma once

#include <cstddef>
#include <string>

#include "platform/store/JSONValue.h"

namespace quilletctl {

/// The result of `status` for a person, in lines of at most `width` columns. "-" stands for what
/// the proxy does not tell.
std::string statusText(const platform::JSONValue& status, std::size_t width);

}  // namespace quilletctl
