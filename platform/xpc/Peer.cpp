#include "platform/xpc/Peer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "platform/base/SystemError.h"

namespace platform {

namespace {

constexpr std::size_t kUsualCount = 64;

/// The further groups. The kernel says how much room they take when there is too little; there are
/// at most NGROUPS_MAX.
tl::expected<std::vector<gid_t>, std::error_code> furtherGroups(int socket) {
  std::vector<gid_t> groups(kUsualCount);
  auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
  int result = ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
  if (result != 0 && errno == ERANGE) {
    groups.resize(size / sizeof(gid_t));
    result = ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
  }
  if (result != 0) {
    return tl::unexpected(lastError());
  }
  groups.resize(size / sizeof(gid_t));
  return groups;
}

}  // namespace

tl::expected<Peer, std::error_code> Peer::of(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
    return tl::unexpected(lastError());
  }
  return furtherGroups(socket).map([&](std::vector<gid_t> all) {
    all.push_back(credentials.gid);
    return Peer{credentials.uid, std::move(all)};
  });
}

bool Peer::isOurs() const {
  return user == 0 || user == ::geteuid() ||
         std::find(groups.begin(), groups.end(), ::getegid()) != groups.end();
}

}  // namespace platform
