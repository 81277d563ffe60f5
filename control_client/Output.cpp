#include "control_client/Output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace quilletctl {

namespace {

tl::unexpected<Failure> cannotWrite() {
  return tl::unexpected(
      Failure{kFailed, std::string("standard output: ") + ::strerrordesc_np(errno)});
}

}  // namespace

tl::expected<void, Failure> write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    return cannotWrite();
  }
  return {};
}

tl::expected<void, Failure> flush() {
  if (std::fflush(stdout) != 0) {
    return cannotWrite();
  }
  return {};
}

std::string jsonLine(const platform::JSONValue& value) {
  return value.dump(-1, ' ', /*ensure_ascii=*/true) + "\n";
}

}  // namespace quilletctl
