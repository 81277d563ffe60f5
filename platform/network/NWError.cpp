#include "platform/network/NWError.h"

#include <cstring>

#include "platform/foundation/Description.h"

namespace platform {

std::string NWError::text() const {
  if (domain_ == Domain::dns) {
    return "NoSuchRecord";
  }
  // Unlike strerror's its texts are those of no locale.
  const char* const known = ::strerrordesc_np(code_);
  return known != nullptr ? known : "Unknown error " + std::to_string(code_);
}

void NWError::describe(std::string& out) const {
  const bool isPosix = domain_ == Domain::posix;
  out.append(isPosix ? "POSIXErrorCode(rawValue: " : "");
  platform::describe(out, code_);
  out.append(isPosix ? "): " : ": ").append(text());
}

}  // namespace platform
