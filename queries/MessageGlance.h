#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/Data.h"

namespace quillet {

/// What is to be known of a message that nobody takes apart otherwise. Nothing is allocated but the
/// name; what cannot be read is absent.
struct MessageGlance {
  /// Reads the header and the first question.
  static MessageGlance at(platform::DataView message);

  std::optional<std::uint16_t> id;
  /// Of the first question, as routing sees it but without the last dot; "." is the root. Both or
  /// neither are there.
  std::optional<std::string> name;
  std::optional<std::uint16_t> type;
};

/// The RCODE of an answer, with the upper bits that an OPT record brings (RFC 6891 section 6.1.3);
/// absent for what has no header.
std::optional<std::uint16_t> rcodeOf(platform::DataView answer);

}  // namespace quillet
