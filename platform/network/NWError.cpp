#include "platform/network/NWError.h"

#include <cerrno>
#include <cstring>

#include "platform/base/Description.h"

namespace platform {

NWError NWError::ownAddress() { return posix(ELOOP); }

std::string NWError::text() const {
  if (*this == ownAddress()) {
    return "The address is served by this program itself";  // the system's text speaks of files
  }
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
