#pragma once

#include <dirent.h>

#include <memory>
#include <string>
#include <string_view>

namespace platform {

/// Goes through the entries of a directory, without `.` and `..`. One that cannot be opened has
/// none, and `errno` says why.
class DirectoryReader {
 public:
  explicit DirectoryReader(const std::string& path) : directory_(::opendir(path.c_str())) {}

  [[nodiscard]] bool isOpen() const { return directory_ != nullptr; }
  [[nodiscard]] int descriptor() const { return ::dirfd(directory_.get()); }

  /// Valid until the next call; nullptr at the end.
  const dirent* next() {
    while (const dirent* entry = directory_ ? ::readdir(directory_.get()) : nullptr) {
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") {
        return entry;
      }
    }
    return nullptr;
  }

 private:
  struct Close {
    void operator()(DIR* directory) const { ::closedir(directory); }
  };

  std::unique_ptr<DIR, Close> directory_;
};

}  // namespace platform
