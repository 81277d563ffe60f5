#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/foundation/UserDefaults.h"

namespace quillet::test {

/// A folder of user defaults of the test's own, in use while it lives.
class DefaultsFolder {
 public:
  DefaultsFolder() {
    std::string path = std::filesystem::temp_directory_path() / "quillet-defaults-XXXXXX";
    path_ = ::mkdtemp(path.data());
    platform::UserDefaults::setDirectory(path_);
  }
  ~DefaultsFolder() {
    platform::UserDefaults::setDirectory({});
    std::filesystem::remove_all(path_);
  }
  DefaultsFolder(const DefaultsFolder&) = delete;
  DefaultsFolder& operator=(const DefaultsFolder&) = delete;

  /// Makes `text` the file of the application group's suite, as another program would replace it.
  void write(std::string_view text) const {
    const auto fresh = path_ / "fresh";
    std::ofstream(fresh) << text;
    std::filesystem::rename(fresh, path_ / "group.com.quillet.filteringosx.json");
  }

 private:
  std::filesystem::path path_;
};

}  // namespace quillet::test
