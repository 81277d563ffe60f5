#pragma once

#include <optional>
#include <span>
#include <system_error>
#include <vector>

#include "platform/senders/DiagnosisSocket.h"
#include "platform/senders/SocketDiagnosis.h"

namespace platform {

/// The two ends of what was sent, and where it came in.
struct SocketPath {
  Transport transport = Transport::udp;
  SocketAddress client;
  SocketAddress destination;
  /// The interface by which it came; a socket bound to a device is not found without. 0 for none.
  unsigned interfaceIndex = 0;
};

/// The kernel's table of this machine's sockets, over `sock_diag`, which needs no privilege. A call
/// takes some microseconds and waits for nothing. Any thread, but one at a time.
///
/// When the kernel does not answer, nothing is found; that is one log line until it answers again.
/// A kernel without the interface looks for its module, which takes milliseconds, with each
/// request, and says the same as where there is no such socket. So a list is asked for first, which
/// may be empty; where even that is not there, nothing is asked for `kPause`.
class SocketTable {
 public:
  /// Nanoseconds.
  static constexpr std::uint64_t kPause = 60'000'000'000;

  /// The client's end of `path`: by UDP the socket that an answer from the destination would reach,
  /// by TCP the connected one. Absent for one that is closed or not on this machine. Of sockets
  /// that share the address (SO_REUSEPORT) the kernel names one.
  std::optional<SocketOwner> exact(const SocketPath& path);
  /// The same for several, by two system calls where the kernel tells of each.
  std::vector<std::optional<SocketOwner>> exact(std::span<const SocketPath> paths);

  /// A UDP socket that may have sent from `client`, wherever it has sent to: one that is bound to
  /// that address, else one bound to none. No socket of this process is one. The kernel looks at
  /// all sockets for this: half a millisecond for 10,000.
  std::optional<SocketOwner> byPort(const SocketAddress& client);

 private:
  /// What is known of the interface for one protocol.
  struct Interface {
    bool isThere = false;
    std::uint64_t pausedUntil = 0;
  };

  bool isThere(Transport transport);
  std::vector<socket_diagnosis::Answer> askTogether(std::span<const SocketPath> paths);
  std::vector<DiagnosedSocket> ask(const Data& request, bool isList);
  void logNewError(std::error_code error);

  DiagnosisSocket socket_;
  Interface udp_;
  Interface tcp_;
  std::error_code error_;  // of the last request
};

}  // namespace platform
