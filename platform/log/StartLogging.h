#pragma once

#include <string_view>

namespace platform {

/// Puts a program's log in order; `main` calls it first, while there is one thread. Records go to
/// the journal when standard error is connected to it, else to standard error as lines under the
/// name `processName`, those not yet written also when the program crashes (see `writeLogOnCrash`).
///
/// A standard stream that is closed is opened on /dev/null, so that nothing else takes its number.
/// SIGPIPE is ignored from now on, so that a reader of the log that goes away does not end the
/// program. Child processes inherit that; who starts one gives the signal its default action back.
void startLogging(std::string_view processName);

}  // namespace platform
