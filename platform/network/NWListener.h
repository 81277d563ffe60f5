#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/network/NWConnection.h"
#include "platform/network/NWEndpoint.h"
#include "platform/network/NWError.h"
#include "platform/network/NWParameters.h"
#include "platform/udp/DatagramSlots.h"

namespace platform {

struct Associations;

/// A UDP port that clients send to, on every local address. Each client (address and port) that is
/// not known is one new connection object, which already has the datagram that made it known.
///
/// Datagrams are read one after another: one is with its connection, and all work that this has
/// given to the queue has run, before the next is read. So whoever starts a new connection at once
/// and receives from it when it is ready misses nothing, whatever other clients send.
///
/// States, each reported once, never inside a call of the owner's:
///
///     start() -> setup -> ready
///                      -> failed(error)    the system does not watch the socket
///     any of them -> cancelled             after `cancel`, and nothing after that
///
/// What this process's own sockets have sent is dropped, with a log line: two ports that answer
/// each other would never end.
///
/// It lives as long as its owner holds it. After `create`, on its queue only.
class NWListener final : public std::enable_shared_from_this<NWListener>, private SocketWatcher {
 public:
  struct State {
    enum class Kind { setup, waiting, ready, failed, cancelled };
    Kind kind = Kind::setup;
    /// Present for failed.
    std::optional<NWError> error;
  };

  /// Connections of one listener that somebody holds. One costs about 1 KiB and what it holds
  /// unread. A further client's datagrams are dropped, each with a log line.
  static constexpr std::size_t kMaxConnections = 64;

  /// Binds the port; 0 leaves the choice to the system.
  static tl::expected<std::shared_ptr<NWListener>, NWError> create(const NWParameters& parameters,
                                                                   NWEndpoint::Port port);
  ~NWListener();
  NWListener(const NWListener&) = delete;
  NWListener& operator=(const NWListener&) = delete;

  /// Set before `start`.
  std::function<void(const State&)> stateUpdateHandler;
  std::function<void(std::shared_ptr<NWConnection>)> newConnectionHandler;

  /// Begins to read, on `queue`. Called once.
  void start(DispatchQueue queue);
  /// Closes the port. Connections are left alone; they receive nothing more.
  void cancel();

  [[nodiscard]] NWEndpoint::Port port() const;

 private:
  NWListener();

  void onQueue(void (NWListener::*work)());
  void begin();
  void report(const State& state);
  void reportCancelled();
  void socketIsReady(bool canRead, bool canWrite) override;
  std::optional<ReceivedDatagram> next();
  bool readOne();
  void tellLost();
  void readRefusals();

  DatagramSlots slot_{1};
  const std::shared_ptr<Associations> associations_;
  std::optional<DispatchQueue> queue_;  // present once started
  bool isCancelled_ = false;
};

}  // namespace platform
