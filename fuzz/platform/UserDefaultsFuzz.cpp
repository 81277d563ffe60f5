// The input as the file of a suite: it is refused or read, and what was read survives a value being
// set.

#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/Require.h"
#include "platform/store/UserDefaults.h"
#include "tests/support/LogCapture.h"

namespace {

using quillet::fuzz::require;

/// One for the process; its directory is removed at exit.
class Suite {
 public:
  Suite() {
    // In memory where that is possible, since setting a value waits for the disk.
    const bool hasMemory = std::filesystem::is_directory("/dev/shm");
    const auto parent = hasMemory ? "/dev/shm" : std::filesystem::temp_directory_path();
    std::string shape = parent / "UserDefaultsFuzz.XXXXXX";
    directory_ = ::mkdtemp(shape.data());
    platform::UserDefaults::setDirectory(directory_);
  }
  ~Suite() { std::filesystem::remove_all(directory_); }
  Suite(const Suite&) = delete;
  Suite& operator=(const Suite&) = delete;

  [[nodiscard]] platform::UserDefaults* holding(const std::uint8_t* data, std::size_t size) const {
    std::ofstream(directory_ / "group.json", std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return platform::UserDefaults::suite("group");
  }

 private:
  std::filesystem::path directory_;
};

void readAll(const platform::UserDefaults& defaults) {
  for (const char* const key : {"mdmConf", "userEmail", "send_ip", "ip", "send_timezone"}) {
    const int kinds = defaults.dictionaryForKey(key).has_value() +
                      defaults.stringForKey(key).has_value() +
                      defaults.boolForKey(key).has_value() + (defaults.integerForKey(key) != 0);
    require(kinds <= 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Suite suite;
  const quillet::test::LogCapture log;  // keeps the run's own output readable
  auto* const defaults = suite.holding(data, size);
  if (defaults == nullptr) {
    return 0;
  }
  readAll(*defaults);
  if (size > 4096) {
    return 0;  // a file near the bound may not take another value
  }
  const auto before = defaults->stringForKey("userEmail");
  defaults->setObject("10.0.0.1", "ip");
  auto* const again = platform::UserDefaults::suite("group");
  require(again == defaults && again->stringForKey("ip") == "10.0.0.1");
  require(again->stringForKey("userEmail") == before);
  return 0;
}
