#include "platform/log/StandardOutput.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <string>

namespace platform {

namespace {

// A pipe that says it is writable has room for this much (pipe(7)), so a write of no more does not
// wait even when the descriptor is a blocking one.
constexpr std::size_t kMaxLine = PIPE_BUF;

bool hasRoom(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  return ::poll(&waiting, 1, 0) == 1 && (waiting.revents & POLLOUT) != 0;
}

}  // namespace

void printLine(std::string_view line) { printLine(STDOUT_FILENO, line); }

void printLine(int descriptor, std::string_view line) {
  std::string text(line.substr(0, kMaxLine - 1));
  text.push_back('\n');
  if (hasRoom(descriptor)) {
    [[maybe_unused]] const auto written = ::write(descriptor, text.data(), text.size());
  }
}

}  // namespace platform
