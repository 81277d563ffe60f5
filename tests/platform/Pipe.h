#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "platform/foundation/FileDescriptor.h"

namespace platform::test {

/// A pipe with room for one page.
struct Pipe {
  explicit Pipe(int flagsOfWriter = 0) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
      reader = FileDescriptor(ends[0]);
      writer = FileDescriptor(ends[1]);
      ::fcntl(writer.get(), F_SETPIPE_SZ, kRoom);
      ::fcntl(writer.get(), F_SETFL, flagsOfWriter);
    }
  }

  /// What lies in the pipe; waits for at least one byte, empty at the end of file.
  [[nodiscard]] std::string read() const {
    std::string text(64UL * 1024, '\0');
    ssize_t count = -1;
    do {
      count = ::read(reader.get(), text.data(), text.size());
    } while (count < 0 && errno == EINTR);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
  }

  /// All that comes until the writer is closed.
  [[nodiscard]] std::string readToEnd() const {
    std::string all;
    for (std::string some = read(); !some.empty(); some = read()) {
      all.append(some);
    }
    return all;
  }

  static constexpr int kRoom = 4096;
  FileDescriptor reader;
  FileDescriptor writer;
};

}  // namespace platform::test
