#include "platform/process/NSPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/process/ChildProcesses.h"

namespace platform {

namespace {

constexpr std::size_t kChunk = 16UL * 1024;

/// The bytes read next; none at the end.
ssize_t readSome(int descriptor, std::array<std::uint8_t, kChunk>& chunk) {
  while (true) {
    const auto size = ::read(descriptor, chunk.data(), chunk.size());
    if (size >= 0 || errno != EINTR) {
      return size;
    }
  }
}

}  // namespace

NSPipe::NSPipe() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
    reading_ = FileDescriptor(ends[0]);
    writing_ = FileDescriptor(ends[1]);
  }
}

Data NSPipe::readDataToEndOfFile() {
  Data kept;
  std::array<std::uint8_t, kChunk> chunk{};
  while (ChildProcesses::shared().waitUntilReadable(reading_.get())) {
    const auto size = readSome(reading_.get(), chunk);
    if (size <= 0) {
      break;
    }
    const auto room = std::min(static_cast<std::size_t>(size), kMaxKept - kept.size());
    kept.insert(kept.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(room));
  }
  return kept;
}

}  // namespace platform
