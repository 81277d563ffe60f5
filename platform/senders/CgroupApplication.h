#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The signing identifier of the application that runs in a cgroup, by the names that systemd,
/// desktops, Flatpak and snapd give to units. `path` is the cgroup's own within the tree, `/` for
/// the root.
///
///     app-flatpak-ID-N.scope                          ID
///     snap.SNAP.APP-UUID.scope                        snap.SNAP.APP; snap.SNAP.hook.NAME alike
///     snap.SNAP.APP.UUID.scope                        the same, of older ones
///     snap.SNAP.APP.service                           the same
///     app[-LAUNCHER]-ID-RANDOM.scope                  ID
///     app[-LAUNCHER]-ID[@RANDOM].service              ID
///     NAME.service below {system,app,session,background}.slice    NAME.service as it stands
///
/// The innermost unit that names one counts; in each ID `\xNN` is undone (systemd.unit(5)). Any
/// other scope (a login session, a terminal's tab, a container) hides what is inside it, as do the
/// cgroups that container runtimes make without a scope: the names in there are the container's.
std::optional<std::string> cgroupApplication(std::string_view path);

}  // namespace platform
