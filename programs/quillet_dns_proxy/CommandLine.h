#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/senders/SenderLookup.h"
#include "programs/ListenAddress.h"

namespace quillet {

/// What the command line asks for.
struct CommandLine {
  std::vector<ListenAddress> listen;
  std::optional<std::filesystem::path> vendorData;
  std::filesystem::path defaultsDirectory;
  /// Where the control socket is; absent: there is none.
  std::optional<std::filesystem::path> control;
  std::string sourceApp;
  /// How far it is looked for whose application a flow is; absent: not at all.
  std::optional<platform::SenderLookup::Depth> identify;
  /// Whether the provider is the one for safe search.
  bool safeSearch = false;
  /// Whether the settings are to be checked, and nothing served.
  bool check = false;
};

/// The command line read, or the status that the program ends with because help or the version was
/// asked for (0) or an option is wrong (2); what there is to say is printed.
std::variant<CommandLine, int> parseCommandLine(int argc, const char* const* argv);

}  // namespace quillet
