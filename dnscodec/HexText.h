#pragma once

#include <string>

#include "platform/foundation/Data.h"

namespace quillet {

/// Appends two lower-case hexadecimal digits for each octet of `bytes`.
void appendHex(std::string& out, platform::DataView bytes);

}  // namespace quillet
