#pragma once

#include <string>

namespace quilletctl {

/// What the program ends with, beside 0.
inline constexpr int kFailed = 1;
inline constexpr int kBadUsage = 2;
/// As systemctl(1) says it of a service.
inline constexpr int kNotRunning = 7;

/// Why a command was not done.
struct Failure {
  int status = kFailed;
  /// One line without its line feed; printable.
  std::string text;
};

}  // namespace quilletctl
