#pragma once

#include <string_view>

namespace platform {

/// Writes `line` and a line break to standard output at once. Never waits: a line that the reader
/// has no room for, or that nobody reads any more, is lost. Programs ignore SIGPIPE
/// (`startLogging`).
void printLine(std::string_view line);

/// The same for another descriptor.
void printLine(int descriptor, std::string_view line);

}  // namespace platform
