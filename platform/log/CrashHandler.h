#pragma once

namespace platform {

/// From now on, when the process ends by SIGABRT, SIGSEGV, SIGBUS, SIGFPE or SIGILL, the log
/// records that the sink in use holds back are written first; then the signal takes its usual
/// course, with a core dump where that is configured.
///
/// A best effort: the handler makes only calls that are safe in one, but it works on memory that
/// the fault may have damaged, and when several threads fail at once the first ends the process
/// under the others. A stack overflow is covered on the thread that called this. Does nothing in a
/// build with a sanitizer, whose own report is worth more.
void writeLogOnCrash();

}  // namespace platform
