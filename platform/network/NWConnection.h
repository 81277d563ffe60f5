#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/Data.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWEndpoint.h"
#include "platform/network/NWError.h"
#include "platform/network/NWPath.h"

namespace platform {

/// One UDP association to one remote address: a connected socket, or one client of an `NWListener`
/// (see `AcceptedConnection` for what differs there).
///
/// States, each reported once through `stateUpdateHandler`, never inside a call of the owner's:
///
///     start() -> setup -> preparing -> ready            the socket is connected
///                                   -> waiting(error)   no such address, no route; it stays so
///                                   -> failed(error)    the system gives no socket, or the
///                                                       address is one that this process serves
///     any of them -> cancelled                          after `cancel`, and nothing after that
///
/// A refused port is no state: it arrives as the error of a receive. There are no timeouts. The
/// process keeps at most `kMaxConnections` of these open; one more cancels the one that has been
/// idle longest.
///
/// Its handlers run in the activity in which it was made.
///
/// A started connection keeps itself and its handlers alive until it is cancelled or has failed;
/// then it lets go of all of them, and nothing is reported after that. Inside the event loop only.
class NWConnection : public std::enable_shared_from_this<NWConnection> {
 public:
  struct State {
    enum class Kind { setup, preparing, ready, waiting, failed, cancelled };
    Kind kind = Kind::setup;
    /// Present for waiting and failed.
    std::optional<NWError> error;

    /// The framework's form: `ready`, `failed(POSIXErrorCode(rawValue: 24): Too many open files)`.
    void describe(std::string& out) const;
  };

  using StateUpdateHandler = std::function<void(const State&)>;
  using SendCompletion = std::function<void(std::optional<NWError>)>;
  /// `content` is absent exactly when there is an error; a datagram of no bytes is present and
  /// empty.
  using ReceiveCompletion = std::function<void(std::optional<Data> content, bool isComplete,
                                               std::optional<NWError> error)>;

  /// Sockets open at one time in this process. One costs a descriptor, about 2 KiB here and in the
  /// kernel, and up to the kernel's receive buffer (some 200 KiB) when its answers are not taken.
  static constexpr std::size_t kMaxConnections = 2048;

  static std::shared_ptr<NWConnection> create(NWEndpoint::Host host, NWEndpoint::Port port);

  NWConnection(const NWConnection&) = delete;
  NWConnection& operator=(const NWConnection&) = delete;
  virtual ~NWConnection() = default;

  /// Set before `start`. It may call anything of the connection but not replace itself.
  StateUpdateHandler stateUpdateHandler;

  /// Set before `start`. A link lasts while its other end comes and goes: it lives as long as
  /// somebody holds it, is none of the open connections, and nobody hears of what the network says
  /// of an earlier datagram (ICMP): only a datagram completes a receive. Of what is sent at once to
  /// a peer that is not there only the first goes out.
  bool isLink = false;

  /// Opens and connects the socket. Called once.
  virtual void start(DispatchQueue queue) = 0;

  /// Sends `content` as one datagram. The completion runs once, later, in the order of the sends;
  /// never when the connection is cancelled while the datagram waits for room. Sent from `start`
  /// on, before ready is reported; without a socket, or after `cancel`, it carries an error.
  virtual void send(Data content, SendCompletion completion) = 0;

  /// Takes the next datagram that arrives, up to 65,535 bytes whole. Several may be armed; they are
  /// served in order. The completion runs once, later; never when the connection is cancelled
  /// first. After waiting or failed it carries that error.
  virtual void receiveMessage(ReceiveCompletion completion) = 0;

  /// Closes the socket, drops the completions of what has not been sent or received, and reports
  /// cancelled. A second call does nothing.
  virtual void cancel() = 0;

  /// How the datagrams go; absent while the socket is not connected.
  [[nodiscard]] virtual std::optional<NWPath> currentPath() const = 0;

  /// The state last reported.
  [[nodiscard]] virtual State state() const = 0;

  /// For log texts.
  virtual void describe(std::string& out) const = 0;

  /// How many started exchanges of this process have neither failed nor are cancelled.
  static std::size_t openCount();

 protected:
  NWConnection() = default;
};

}  // namespace platform
