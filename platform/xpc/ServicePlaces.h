#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

/// Where a service of this name may have its socket, a file of that name, in the order in which it
/// is chosen and looked for: the service manager's runtime directory ($RUNTIME_DIRECTORY, the first
/// of several), the user's ($XDG_RUNTIME_DIR, when that is a folder of the user we run as;
/// `usersFolder` in there), /run/quillet.
std::vector<std::filesystem::path> servicePlaces(const std::string& serviceName,
                                                 const std::string& usersFolder = "");

}  // namespace platform
