#pragma once

#include <optional>
#include <string_view>

namespace platform {

/// How much is recorded of each query.
enum class LogMode {
  full,   ///< every step
  brief,  ///< one record, when it is over
};

/// The mode of a name, `full` or `brief`.
std::optional<LogMode> logModeNamed(std::string_view name);
std::string_view nameOf(LogMode mode);

/// The mode for queries that begin now. Any thread.
LogMode logMode();
void setLogMode(LogMode mode);

}  // namespace platform
