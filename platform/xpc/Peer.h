#pragma once

#include <sys/types.h>

#include <system_error>
#include <tl/expected.hpp>
#include <vector>

namespace platform {

/// Who has connected to a Unix socket, as the kernel knew them at that instant (unix(7)).
struct Peer {
  static tl::expected<Peer, std::error_code> of(int socket);

  /// Whether it is root, the user that this process runs as, or in this process' group.
  [[nodiscard]] bool isOurs() const;

  uid_t user = 0;
  /// Its own and the further ones.
  std::vector<gid_t> groups;
};

}  // namespace platform
