#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
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
    const auto top = "quillet-test-" + std::to_string(::getpid());
    std::error_code error;
    if (!mount || !std::filesystem::create_directories(mount->directory / top / path, error)) {
      return nullptr;
    }
    return std::unique_ptr<TestCgroup>(new TestCgroup(mount->directory, top + "/" + path));
  }
  ~TestCgroup() { remove(); }
  TestCgroup(const TestCgroup&) = delete;
  TestCgroup& operator=(const TestCgroup&) = delete;

  /// Takes it away, and what is empty above it.
  void remove() const {
    for (auto path = mount_ / path_; path != mount_ && ::rmdir(path.c_str()) == 0;) {
      path = path.parent_path();
    }
  }

  [[nodiscard]] std::uint64_t id() const {
    struct stat state {};
    ::stat((mount_ / path_).c_str(), &state);
    return state.st_ino;
  }

  /// What `make` gives, which this process calls while it is in the cgroup.
  template <class Make>
  [[nodiscard]] auto inside(const Make& make) const {
    std::stringstream own;
    own << std::ifstream("/proc/self/cgroup").rdbuf();
    const auto home = own.str().substr(own.str().find("0::/") + 4);
    const std::shared_ptr<void> back(nullptr,
                                     [&](void*) { enter(home.substr(0, home.find('\n'))); });
    enter(path_);
    return make();
  }

 private:
  TestCgroup(std::filesystem::path mount, std::string path)
      : mount_(std::move(mount)), path_(std::move(path)) {}
  void enter(const std::string& path) const {
    std::ofstream(mount_ / path / "cgroup.procs") << ::getpid();
  }

  const std::filesystem::path mount_;
  const std::string path_;  // below the mount
};

}  // namespace platform::test
