#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/Data.h"

namespace quillet {

struct EdnsOption {
  std::uint16_t code = 0;
  platform::DataView value;  ///< borrowed from the RDATA
};

/// The options in the RDATA of an OPT record (RFC 6891, section 6.1.2), in their order. Nothing
/// when an option runs past the end.
std::optional<std::vector<EdnsOption>> readEdnsOptions(platform::DataView rdata);

}  // namespace quillet
