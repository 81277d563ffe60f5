#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>

namespace platform {

/// What tells one state of a file from another: every write to it and every replacement of it
/// changes one of these, unless it follows the last one within the step of the kernel's file times.
struct FileState {
  /// The step of file times: the kernel takes them from its timer tick.
  static constexpr std::uint64_t kTimeStep = 20'000'000;

  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  /// When the content, and when content or attributes changed last: nanoseconds since 1970, modulo
  /// 2^64.
  std::uint64_t modified = 0;
  std::uint64_t changed = 0;

  bool operator==(const FileState&) const = default;
};

/// A file's content, and the state that the file had before it was read.
struct FileText {
  std::string text;
  FileState state;
};

/// The present state of the regular file at `path`, by one system call that does not open it. Any
/// other kind of file is the error `operation_not_supported`.
tl::expected<FileState, std::error_code> regularFileState(const std::filesystem::path& path);

/// The regular file at `path`, whole. Neither waits nor reads when something else stands there (a
/// FIFO, a device, a directory): that is the error `operation_not_supported`; more than `maxSize`
/// bytes is `file_too_large`.
tl::expected<FileText, std::error_code> readRegularFile(const std::filesystem::path& path,
                                                        std::size_t maxSize);

/// Puts a file with this content, for the owner only, in the place of `path`, such that a reader
/// sees the old file or the new one, whole, also after a power cut. Gives the new file's state. On
/// failure the old file stays.
tl::expected<FileState, std::error_code> replaceFile(const std::filesystem::path& path,
                                                     std::string_view text);

}  // namespace platform
