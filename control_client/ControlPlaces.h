#pragma once

#include <filesystem>
#include <vector>

namespace quilletctl {

/// Where a proxy has its control socket, in the order in which it is looked for: in the service
/// manager's runtime directory ($RUNTIME_DIRECTORY, the first of several), in the user's
/// ($XDG_RUNTIME_DIR/quillet, when that variable names a folder of the user we run as), in
/// /run/quillet.
std::vector<std::filesystem::path> controlPlaces();

}  // namespace quilletctl
