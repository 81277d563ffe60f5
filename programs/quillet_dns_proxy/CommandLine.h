#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "programs/ListenAddress.h"

namespace quillet {

/// What the command line asks for.
struct CommandLine {
  std::vector<ListenAddress> listen;
  std::optional<std::filesystem::path> vendorData;
  std::filesystem::path defaultsDirectory;
  std::string sourceApp;
};

/// The command line read, or the status that the program ends with because help or the version was
/// asked for (0) or an option is wrong (2); what there is to say is printed.
std::variant<CommandLine, int> parseCommandLine(int argc, const char* const* argv);

}  // namespace quillet
