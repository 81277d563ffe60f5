#pragma once

#include <variant>

#include "control_client/Commands.h"

namespace quilletctl {

/// The command line read, or the status that the program ends with because help or the version was
/// asked for (0) or it is wrong (2); what there is to say is printed.
std::variant<Invocation, int> parseCommandLine(int argc, const char* const* argv);

}  // namespace quilletctl
