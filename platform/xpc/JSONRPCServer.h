#pragma once

#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "platform/base/Error.h"
#include "platform/dispatch/Timer.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/xpc/JSONRPCConnection.h"
#include "platform/xpc/ServiceSocket.h"

namespace platform {

/// A service at a Unix socket, driven by the event loop: for methods that ask for the loop's own
/// state and take no time. Inside the event loop only. `NSXPCListener` has a thread for each
/// client.
///
/// Clients take turns, and one iteration of the loop has one turn: however many clients ask however
/// much, the loop's other work waits for one call, or one piece of a long text.
/// A client that may not be served (`Peer::isOurs`) gets one error and is closed.
class JSONRPCServer final : private SocketWatcher, public JSONRPCConnection::Owner {
 public:
  /// Clients at one time, or an eighth of the descriptors that the process may have. One costs a
  /// descriptor, half a line, and `JSONRPCConnection::kMaxWaiting` or one answer. A further one
  /// takes the place of the one that has neither sent nor taken anything for the longest.
  static constexpr std::size_t kMaxConnections = 256;
  static constexpr mode_t kMode = 0660;

  /// `service` outlives the server.
  explicit JSONRPCServer(JSONRPCService& service);
  /// Ends all connections; the socket's file goes.
  ~JSONRPCServer();
  JSONRPCServer(const JSONRPCServer&) = delete;
  JSONRPCServer& operator=(const JSONRPCServer&) = delete;

  /// Begins to serve. Called once. The error says what keeps it from it.
  std::optional<Error> listen(const std::filesystem::path& path);

 private:
  using Connection = std::shared_ptr<JSONRPCConnection>;

  void socketIsReady(bool canRead, bool canWrite) override;
  void wantsTurn(const Connection& connection) override;
  void ended(const Connection& connection) override;
  void accept(FileDescriptor client);
  void cannotAccept(std::error_code error);
  void makeRoom();
  void scheduleTurn();
  void giveTurn();

  JSONRPCService& service_;
  const std::size_t limit_;
  std::optional<ServiceSocket> file_;
  WatchedSocket socket_;
  Timer pausing_;                // valid while nobody is accepted
  std::error_code acceptError_;  // until a client is accepted
  std::vector<Connection> connections_;
  std::deque<std::weak_ptr<JSONRPCConnection>> turns_;
  bool isTurnScheduled_ = false;
  const std::shared_ptr<JSONRPCServer*> self_;  // what a scheduled turn finds us by
};

}  // namespace platform
