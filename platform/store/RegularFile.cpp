#include "platform/store/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "platform/base/FileDescriptor.h"
#include "platform/base/SystemError.h"

namespace platform {

namespace {

tl::unexpected<std::error_code> failure(std::errc error) {
  return tl::make_unexpected(std::make_error_code(error));
}

std::uint64_t nanoseconds(const timespec& time) {
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(time.tv_nsec);
}

tl::expected<FileState, std::error_code> stateFrom(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) {
    return failure(std::errc::operation_not_supported);
  }
  return FileState{status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                   nanoseconds(status.st_ctim)};
}

tl::expected<FileState, std::error_code> stateOf(const FileDescriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) {
    return tl::make_unexpected(lastError());
  }
  return stateFrom(status);
}

tl::expected<std::string, std::error_code> readToEnd(const FileDescriptor& file,
                                                     std::size_t maxSize) {
  std::string text;
  char chunk[16 * 1024];
  while (true) {
    const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return tl::make_unexpected(lastError());
    }
    if (count == 0) {
      return text;
    }
    if (static_cast<std::size_t>(count) > maxSize - text.size()) {
      return failure(std::errc::file_too_large);
    }
    text.append(chunk, static_cast<std::size_t>(count));
  }
}

bool writeToEnd(const FileDescriptor& file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file.get(), text.data(), text.size());
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

tl::expected<FileState, std::error_code> regularFileState(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return tl::make_unexpected(lastError());
  }
  return stateFrom(status);
}

tl::expected<FileText, std::error_code> readRegularFile(const std::filesystem::path& path,
                                                        std::size_t maxSize) {
  // O_NONBLOCK: opening a FIFO that nobody writes to would wait.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) {
    return tl::make_unexpected(lastError());
  }
  const auto state = stateOf(file);
  if (!state) {
    return tl::make_unexpected(state.error());
  }
  auto text = readToEnd(file, maxSize);
  if (!text) {
    return tl::make_unexpected(text.error());
  }
  return FileText{*std::move(text), *state};
}

tl::expected<FileState, std::error_code> replaceFile(const std::filesystem::path& path,
                                                     std::string_view text) {
  std::string temporary = path.string() + ".XXXXXX";
  const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));  // mode 0600
  if (!file.isOpen()) {
    return tl::make_unexpected(lastError());
  }
  if (!writeToEnd(file, text) || ::fsync(file.get()) != 0 ||
      ::rename(temporary.c_str(), path.c_str()) != 0) {
    const std::error_code error = lastError();
    ::unlink(temporary.c_str());
    return tl::make_unexpected(error);
  }
  return stateOf(file);  // only now: renaming changes it
}

}  // namespace platform
