#include "control_client/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace quilletctl {

namespace {

constexpr std::size_t kUsualWidth = 80;

std::string_view environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::optional<ScreenSize> terminalSize(int descriptor) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
    return std::nullopt;
  }
  return ScreenSize{size.ws_col, size.ws_row};
}

std::size_t outputWidth() {
  return terminalSize(STDOUT_FILENO).value_or(ScreenSize{kUsualWidth, 0}).width;
}

bool isOutputTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

bool isOutputColoured() {
  return isOutputTerminal() && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
}

}  // namespace quilletctl
