#pragma once

#include <cstddef>
#include <string>

#include "platform/store/JSONValue.h"

namespace quilletctl {

/// The result of `explain` for a person, in lines of at most `width` columns.
std::string explainText(const platform::JSONValue& route, std::size_t width);

}  // namespace quilletctl
