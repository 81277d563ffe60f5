#pragma once

namespace platform {

/// How much is recorded of each query.
enum class LogMode {
  full,   ///< every step
  brief,  ///< one record, when it is over
};

/// The mode for queries that begin now. Any thread.
LogMode logMode();
void setLogMode(LogMode mode);

}  // namespace platform
