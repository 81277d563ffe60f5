// The input as the file of a suite: it is refused or read, and what was read survives a value being
// set.

#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/Target.h"
#include "platform/store/UserDefaults.h"
#include "tests/support/LogCapture.h"

namespace {

/// The directory of the process's suites, removed at exit; in memory where that is possible, since
/// setting a value waits for the disk.
struct Directory {
  Directory() {
    const bool hasMemory = std::filesystem::is_directory("/dev/shm");
    std::string shape = hasMemory ? "/dev/shm/UserDefaultsFuzz.XXXXXX"
                                  : std::filesystem::temp_directory_path() / "Fuzz.XXXXXX";
    path = ::mkdtemp(shape.data());
    platform::UserDefaults::setDirectory(path);
  }
  ~Directory() { std::filesystem::remove_all(path); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  std::filesystem::path path;
};

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  static const Directory directory;
  const test::LogCapture log;  // keeps the run's own output readable
  std::ofstream(directory.path / "group.json", std::ios::binary) << platform::textOf(input);
  auto* const defaults = platform::UserDefaults::suite("group");
  if (defaults == nullptr) {
    return;
  }
  for (const char* const key : {"mdmConf", "userEmail", "send_ip", "ip", "send_timezone"}) {
    require(defaults->dictionaryForKey(key).has_value() + defaults->stringForKey(key).has_value() +
                defaults->boolForKey(key).has_value() + (defaults->integerForKey(key) != 0) <=
            1);
  }
  if (input.size() > 4096) {
    return;  // a file near the bound may not take another value
  }
  const auto before = defaults->stringForKey("userEmail");
  defaults->setObject("10.0.0.1", "ip");
  auto* const again = platform::UserDefaults::suite("group");
  require(again == defaults && again->stringForKey("ip") == "10.0.0.1");
  require(again->stringForKey("userEmail") == before);
}
