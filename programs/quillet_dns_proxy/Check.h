#pragma once

#include "programs/quillet_dns_proxy/CommandLine.h"

namespace quillet {

/// Reads the settings that the command line names and prints what is wrong with them on standard
/// output, a line each: `FILE: KEY: what is wrong`, `FILE: what` for a file that cannot be used.
/// Binds, writes and sends nothing. Returns the process' exit status: 0 when nothing is found, else
/// 1.
int checkSettings(const CommandLine& commandLine);

}  // namespace quillet
