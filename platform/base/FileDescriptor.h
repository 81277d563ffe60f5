#pragma once

#include <unistd.h>

#include <utility>

namespace platform {

/// Owns an open file descriptor and closes it at the end.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// Takes over `number`; a negative one, as a failed call returns it, stands for none.
  explicit FileDescriptor(int number) : number_(number) {}
  ~FileDescriptor() {
    if (isOpen()) {
      ::close(number_);
    }
  }
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  [[nodiscard]] int get() const { return number_; }

 private:
  int number_ = -1;
};

}  // namespace platform
