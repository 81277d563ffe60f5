#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/JSONValue.h"

namespace platform {

/// The user defaults of one suite, kept as one JSON object in the file `SUITE.json` of the defaults
/// directory. The file is read again when it changed, and replaced atomically when a value is set, so
/// other programs may read and replace it at any time. Not thread-safe.
class UserDefaults {
 public:
  /// Where the suites of this process lie. Set once, before the first suite is opened; without it no suite
  /// can be opened.
  static void setDirectory(std::filesystem::path directory);

  /// The suite of that name, the same object at every call. Absent when there is no defaults directory, or
  /// when the suite's file is there but cannot be read or holds no JSON object (one log line names the file
  /// when that begins). A file that is not there is an empty suite.
  static UserDefaults* suite(std::string_view name);

  [[nodiscard]] std::optional<JSONObject> dictionaryForKey(std::string_view key) const;
  /// Absent unless the value is text.
  [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
  /// Absent unless the value is a boolean.
  [[nodiscard]] std::optional<bool> boolForKey(std::string_view key) const;
  /// 0 unless the value is a number; a fraction is cut off, a number out of range takes the nearest end.
  [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;
  /// Sets the value and writes the file. A failure is one log line; the value is kept in memory.
  void setObject(JSONValue value, std::string_view key);
};

}  // namespace platform
