#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>

#include "platform/base/FileDescriptor.h"

namespace platform::test {

/// A pipe with room for one page, neither end of which waits.
struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
      reader = FileDescriptor(ends[0]);
      writer = FileDescriptor(ends[1]);
      ::fcntl(writer.get(), F_SETPIPE_SZ, 4096);
    }
  }

  /// What lies in the pipe.
  [[nodiscard]] std::string read() const {
    std::string text(4096, '\0');
    const ssize_t count = ::read(reader.get(), text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
  }

  FileDescriptor reader;
  FileDescriptor writer;
};

}  // namespace platform::test
