#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "platform/base/Error.h"
#include "platform/store/FileWatch.h"
#include "platform/store/JSONDocument.h"
#include "platform/store/RegularFile.h"

namespace platform {

/// The user defaults of one suite, kept as one JSON object in the file `SUITE.json` of the defaults
/// directory. The file is replaced atomically when a value is set, so other programs may read and
/// replace it at any time; of two that set values at the same moment, the later one's file stays.
/// Not thread-safe.
class UserDefaults {
 public:
  /// Where the suites of this process lie; without it, or with an empty path, no suite can be
  /// opened. Suites that are open already go over to the new directory.
  static void setDirectory(const std::filesystem::path& directory);

  /// The file of a suite.
  static std::filesystem::path fileOf(const std::filesystem::path& directory,
                                      std::string_view name);

  /// For a process that runs the event loop: whether the kernel is to tell of changes, so that
  /// `suite` needs no system call. See `FileWatch`.
  static void watchChanges(bool doesWatch);

  /// The suite of that name, the same object at every call, lasting as long as the process; its
  /// file is read again when it changed, which costs one system call to find out. Absent when there
  /// is no defaults directory, when the name cannot be a file's, or when the file is there but
  /// cannot be read or holds no JSON object (one log line says so when that begins). A file that is
  /// not there is an empty suite; of one that goes beyond the bounds of `parseJSON` there is what
  /// they leave.
  static UserDefaults* suite(std::string_view name);

  /// The standard user defaults: the suite `standard`.
  static UserDefaults* standard() { return suite("standard"); }

  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;
  ~UserDefaults() = default;

  // These show the values as the last call of `suite` found them.

  [[nodiscard]] std::optional<JSONObject> dictionaryForKey(std::string_view key) const;
  /// Absent unless the value is text.
  [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
  /// Absent unless the value is a boolean.
  [[nodiscard]] std::optional<bool> boolForKey(std::string_view key) const;
  /// 0 unless the value is a number; a fraction is cut off, a number out of range takes the nearest
  /// end.
  [[nodiscard]] std::int64_t integerForKey(std::string_view key) const;

  /// Sets the value, or removes it for null, and writes the file, with what others have put there
  /// since. A failure is one log line; the value is kept in memory until the file changes. A file
  /// that could not be read whole is left as it is, so that nothing in it is lost.
  void setObject(JSONValue value, std::string_view key);

 private:
  UserDefaults() = default;

  void moveTo(std::filesystem::path file);
  void refreshUnlessUnchanged();
  void refresh();
  void read(const FileState& found);
  void take(tl::expected<JSONDocument, JSONFault> document);
  void write();
  [[nodiscard]] tl::expected<FileState, Error> replaced() const;
  void becomeEmpty();
  void becomeUnusable(std::string_view reason);
  [[nodiscard]] const JSONValue* find(std::string_view key) const;

  struct Suites;
  static Suites& suites();

  std::filesystem::path file_;
  FileWatch watch_;
  JSONObject values_;
  bool isUsable_ = true;
  /// What `values_` lacks of the file, and why.
  std::optional<std::string> loss_;
  /// The file that was looked at last; absent when there was none.
  std::optional<FileState> state_;
  /// False while the file may change without a change of its state.
  bool isSettled_ = true;
};

}  // namespace platform
