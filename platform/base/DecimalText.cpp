#include "platform/base/DecimalText.h"

#include "platform/base/WholeNumber.h"

namespace platform {

std::optional<std::int64_t> decimalInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return std::nullopt;
    }
  }
  return platform::wholeNumber<std::int64_t>(text);
}

}  // namespace platform
