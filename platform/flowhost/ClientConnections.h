#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/dispatch/Timer.h"
#include "platform/flowhost/ClientConnection.h"
#include "platform/tcp/TCPListener.h"

namespace platform {

/// The clients by TCP of all listen addresses. What this process itself connects is closed at once,
/// with a log line. Inside the event loop only.
class ClientConnections final : public std::enable_shared_from_this<ClientConnections>,
                                public TCPListener::Owner {
 public:
  /// Connections that are open. One costs a descriptor, 80 KiB of a query that is not whole, and
  /// what `ClientConnection` lets its queries and answers cost. One more closes the one that has
  /// been idle longest.
  static constexpr std::size_t kMaxConnections = 128;
  /// Queries of all connections that are outstanding, for each of the connections that there may
  /// be. One costs what `ClientConnection::kMaxOutstanding` says, and a descriptor.
  static constexpr std::size_t kOutstandingShare = 4;

  /// A further address to serve; what connects there waits.
  std::error_code bind(const SocketAddress& address);
  /// Offers what comes, as work of the event loop.
  std::error_code listen(ClientConnection::Offer offer);
  /// Closes listeners and connections.
  void close();

 private:
  /// `kMaxConnections`, or an eighth of the descriptors that the process may have.
  static std::size_t usualLimit();

  void accepted(FileDescriptor socket, const SocketAddress& client) override;
  void cannotAccept(const TCPListener& listener, std::error_code error) override;
  void makeRoom();
  void checkTime();
  void dropClosed();

  const std::size_t limit_ = usualLimit();
  const std::shared_ptr<OutstandingQueries> outstanding_ =
      std::make_shared<OutstandingQueries>(OutstandingQueries{limit_ * kOutstandingShare});
  ClientConnection::Offer offer_;
  std::vector<std::shared_ptr<TCPListener>> listeners_;
  std::vector<std::shared_ptr<ClientConnection>> connections_;
  std::error_code acceptError_;  // until a connection is accepted
  Timer idleCheck_;              // scheduled while there are connections
};

}  // namespace platform
