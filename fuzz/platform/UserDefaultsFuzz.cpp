// The input as the file of a suite: it is refused or read, and what was read survives a value being
// set.

#include "fuzz/Target.h"
#include "platform/store/UserDefaults.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/LogCapture.h"

void quillet::fuzz::run(platform::DataView input) {
  static const test::DefaultsFolder folder;
  const test::LogCapture log;  // keeps the run's own output readable
  folder.write(platform::textOf(input));
  constexpr char kSuite[] = "group.com.quillet.filteringosx";
  auto* const defaults = platform::UserDefaults::suite(kSuite);
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
  auto* const again = platform::UserDefaults::suite(kSuite);
  require(again == defaults && again->stringForKey("ip") == "10.0.0.1");
  require(again->stringForKey("userEmail") == before);
}
