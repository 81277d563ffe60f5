#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

namespace platform {

/// Where the system says which time zone it is in.
struct TimeZonePaths {
  /// A symbolic link into the time zone database, see localtime(5).
  std::filesystem::path localtime = "/etc/localtime";
  /// A file with the identifier as its first line.
  std::filesystem::path timezone = "/etc/timezone";
};

/// Finds the identifier of the current system time zone, for example `Europe/Ljubljana`. The first
/// of these that names one decides: the variable TZ, as tzset(3) reads it; the target of
/// /etc/localtime, as it is written, since many zones are themselves links to another's file;
/// /etc/timezone; else `UTC`. Not thread-safe.
class SystemTimeZone {
 public:
  explicit SystemTimeZone(TimeZonePaths paths = {}) : paths_(std::move(paths)) {}

  /// The identifier, valid until the next call. Looks at the sources again at most once a second of
  /// the shared clock.
  const std::string& identifier();

 private:
  const TimeZonePaths paths_;
  std::string identifier_;
  /// Of the monotonic clock, when `identifier_` is not empty.
  std::uint64_t lookedUpAt_ = 0;
};

/// The identifier of this system's time zone, valid until the next call. Follows changes of the
/// setting within a second. Not thread-safe.
const std::string& currentTimeZoneIdentifier();

}  // namespace platform
