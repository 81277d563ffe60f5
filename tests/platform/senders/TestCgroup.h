#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "platform/senders/CgroupWalk.h"

namespace platform::test {

/// A cgroup of the test's own, with those above it that the test has named too; gone at the end.
class TestCgroup {
 public:
  /// Absent where there is no tree of version 2, or the test may not change it. `path` lies in a
  /// cgroup that no other test has.
  static std::unique_ptr<TestCgroup> create(const std::string& path) {
    const auto mount = CgroupMount::find();
    if (!mount) {
      return nullptr;
    }
    const auto top = mount->directory / ("quillet-test-" + std::to_string(::getpid()));
    std::error_code error;
    std::filesystem::create_directories(top / path, error);
    return error ? nullptr : std::unique_ptr<TestCgroup>(new TestCgroup(top / path, top));
  }
  ~TestCgroup() { remove(); }
  TestCgroup(const TestCgroup&) = delete;
  TestCgroup& operator=(const TestCgroup&) = delete;

  /// Takes it away, and what is empty above it.
  void remove() const {
    for (auto path = path_; ::rmdir(path.c_str()) == 0 && path != top_; path = path.parent_path()) {
    }
  }

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::uint64_t id() const {
    struct stat state {};
    ::stat(path_.c_str(), &state);
    return state.st_ino;
  }

  /// What `make` gives, which this process calls while it is in the cgroup.
  template <class Make>
  [[nodiscard]] auto inside(const Make& make) const {
    const Stay stay(path_);
    return make();
  }

 private:
  class Stay {
   public:
    explicit Stay(const std::filesystem::path& path) : home_(own()) { enter(path); }
    ~Stay() { enter(home_); }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

   private:
    static void enter(const std::filesystem::path& path) {
      std::ofstream(path / "cgroup.procs") << ::getpid();
    }
    static std::filesystem::path own() {
      std::ifstream file("/proc/self/cgroup");
      for (std::string line; std::getline(file, line);) {
        if (line.starts_with("0::")) {
          return CgroupMount::find()->directory.native() + line.substr(3);
        }
      }
      return {};
    }

    const std::filesystem::path home_;
  };

  TestCgroup(std::filesystem::path path, std::filesystem::path top)
      : path_(std::move(path)), top_(std::move(top)) {}

  const std::filesystem::path path_;
  const std::filesystem::path top_;
};

}  // namespace platform::test
