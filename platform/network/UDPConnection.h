#pragma once

#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "platform/network/NWConnection.h"
#include "platform/network/OpenConnections.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

/// The connection as a connected, non-blocking socket. An exchange of one datagram each way costs
/// seven system calls: socket, connect, getsockname, send, one to be watched, recv, close.
///
/// A refusal (ICMP port unreachable) is the answer to a datagram sent earlier, and the kernel hands
/// it out with the next call on the socket, whichever it is. One refusal fails one receive.
///
/// To send to a port of this machine that nobody has costs 5 microseconds, more than all the rest
/// of a log line, so a link whose datagram is refused sends no more until its sends are reported.
class UDPConnection final : public NWConnection, private SocketWatcher {
 public:
  UDPConnection(NWEndpoint::Host host, NWEndpoint::Port port);

  void start(DispatchQueue queue) override;
  void send(Data content, SendCompletion completion) override;
  void receiveMessage(ReceiveCompletion completion) override;
  void cancel() override;
  [[nodiscard]] std::optional<NWPath> currentPath() const override;
  [[nodiscard]] State state() const override { return state_; }
  /// `[127.0.0.1:53 udp]`.
  void describe(std::string& out) const override;

 private:
  /// A send that has come to its end and is not reported yet.
  struct Sent {
    SendCompletion completion;
    std::optional<NWError> error;
  };
  /// A send that waits until the kernel has room.
  struct Waiting {
    Data content;
    SendCompletion completion;
  };

  std::shared_ptr<UDPConnection> self();

  State open();
  std::error_code openMakingRoom(sa_family_t family);
  void reportStart(const State& outcome);
  void report(const State& state);
  void reportCancelled();

  std::error_code trySend(const Data& content);
  void keepReceiveError(std::error_code error);
  void sendWaiting();
  void finish(SendCompletion completion, std::optional<NWError> error);

  void socketIsReady(bool canRead, bool canWrite) override;
  void watchAsNeeded();
  void receiveOne();
  void completeOldestReceive(std::optional<Data> content, bool isComplete,
                             std::optional<NWError> error);

  void deliverLater();
  void deliver();
  void deliverReceiveErrors();
  std::optional<NWError> takeReceiveError();

  void touch();

  const NWEndpoint::Host host_;
  const NWEndpoint::Port port_;
  UDPSocket socket_;
  State state_;
  bool isStarted_ = false;
  bool isCancelled_ = false;
  bool isDeliveryDue_ = false;
  std::optional<OpenConnections::Place> place_;  // present while it is an open connection
  bool isPeerGone_ = false;                      // of a link: one of `sent_` was refused
  std::vector<Sent> sent_;
  std::list<Waiting> waiting_;
  std::list<ReceiveCompletion> receives_;  // the oldest first
  std::vector<NWError> receiveErrors_;     // each fails one receive
};

}  // namespace platform
