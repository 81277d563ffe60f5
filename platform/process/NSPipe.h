#pragma once

#include "platform/base/Data.h"
#include "platform/base/FileDescriptor.h"

namespace platform {

/// A pipe that a child process writes into. Neither end is inherited but by the child that it was
/// made for.
class NSPipe {
 public:
  /// Bytes that `readDataToEndOfFile` keeps; what a child writes beyond them is read and dropped.
  static constexpr std::size_t kMaxKept = 1024UL * 1024;

  /// Not open when the system has no descriptors left.
  NSPipe();

  [[nodiscard]] bool isOpen() const { return reading_.isOpen(); }
  /// For the child; closed here once it runs.
  [[nodiscard]] const FileDescriptor& writing() const { return writing_; }
  void closeWriting() { writing_ = FileDescriptor(); }

  /// All that is written until everybody who can write has closed it. Blocks; comes back early,
  /// with what there is, when child processes are ended (`ChildProcesses::end`).
  Data readDataToEndOfFile();

 private:
  FileDescriptor reading_;
  FileDescriptor writing_;
};

}  // namespace platform
