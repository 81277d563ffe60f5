#pragma once

#include <cstdint>
#include <optional>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/base/FileDescriptor.h"
#include "platform/senders/ConntrackMessage.h"
#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// Where a client has sent to whose packets come here by a redirection of the packet filter. The
/// kernel's connection tracking knows it. Nothing here waits. One thread.
class OriginalDestination {
 public:
  struct Result {
    enum class Kind {
      /// The client has sent to us.
      notCaptured,
      captured,
      /// The kernel does not let us know, or not now.
      cannotTell,
    };

    Kind kind = Kind::notCaptured;
    /// Of what is captured. The client's own port need not be the one that is seen here: of two
    /// exchanges of one socket, with two servers, the redirection changes the second one's.
    OriginalAddresses addresses;

    /// Absent unless it is captured.
    [[nodiscard]] std::optional<DatagramPath> path() const {
      return kind == Kind::captured
                 ? std::optional(DatagramPath{addresses.source, addresses.destination})
                 : std::nullopt;
    }
  };

  /// For so long nothing is asked after an error, nanoseconds. It costs a system call to learn that
  /// the process has no CAP_NET_ADMIN, and may cost the kernel the search for a module.
  static constexpr std::uint64_t kPause = 10'000'000'000;
  /// So long holds what was found about connection tracking being in use, nanoseconds.
  static constexpr std::uint64_t kUseAge = 10'000'000;

  /// Of a datagram that came by UDP from `client` to our address `local`. Takes CAP_NET_ADMIN in
  /// the user namespace that owns the network.
  Result ofDatagram(const SocketAddress& client, const SocketAddress& local);

  /// Of an accepted TCP connection from `client` to our address `local`.
  static Result ofConnection(int socket, const SocketAddress& client, const SocketAddress& local);

 private:
  using Answer = tl::expected<OriginalAddresses, std::error_code>;

  bool isTracking(std::uint64_t now);
  Answer ask(const SocketAddress& client, const SocketAddress& local);
  Answer receive();
  bool open();

  FileDescriptor count_;  // the kernel's file with the number of tracked exchanges
  bool isTracking_ = false;
  std::uint64_t trackingKnownUntil_ = 0;
  FileDescriptor socket_;
  std::uint32_t sequence_ = 0;
  std::uint64_t pausedUntil_ = 0;
};

}  // namespace platform
