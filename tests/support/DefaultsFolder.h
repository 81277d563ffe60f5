#pragma once

#include <string_view>

#include "platform/store/UserDefaults.h"
#include "tests/platform/TemporaryDirectory.h"

namespace quillet::test {

/// A folder of user defaults of the test's own, in use while it lives.
class DefaultsFolder {
 public:
  DefaultsFolder() { platform::UserDefaults::setDirectory(directory_.path()); }
  ~DefaultsFolder() { platform::UserDefaults::setDirectory({}); }
  DefaultsFolder(const DefaultsFolder&) = delete;
  DefaultsFolder& operator=(const DefaultsFolder&) = delete;

  /// Makes `text` the file of the application group's suite, as another program would replace it.
  void write(std::string_view text) const {
    directory_.replaceFile("group.com.quillet.filteringosx.json", text);
  }

 private:
  platform::test::TemporaryDirectory directory_;
};

}  // namespace quillet::test
