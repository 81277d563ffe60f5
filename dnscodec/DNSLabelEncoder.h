#pragma once

#include <string_view>

#include "platform/foundation/Data.h"

namespace quillet {

/// Writes names.
class DNSLabelEncoder {
 public:
  /// A name without compression, see `WireWriter::writeName`.
  static platform::Data encode(std::string_view name);
};

}  // namespace quillet
