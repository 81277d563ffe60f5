#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace platform::test {

/// Writes the file in place, not by a replacement.
inline void writeFile(const std::filesystem::path& path, std::string_view text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// An empty directory, removed at the end with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string shape = std::filesystem::temp_directory_path() / "quillet-test.XXXXXX";
    path_ = ::mkdtemp(shape.data());
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  /// Puts a new file in the place of the one of that name, as other programs do.
  void replaceFile(const std::string& name, std::string_view text) const {
    writeFile(path_ / "fresh", text);
    std::filesystem::rename(path_ / "fresh", path_ / name);
  }

  /// Runs `command` in it, by the shell.
  void run(const std::string& command) const {
    EXPECT_EQ(std::system(("cd " + path_.native() + "; " + command).c_str()), 0) << command;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace platform::test
