#pragma once

#include <memory>
#include <optional>

#include "platform/log/Activity.h"
#include "platform/network/NWConnection.h"
#include "platform/network/OpenConnections.h"
#include "platform/network/ReceiveQueue.h"
#include "platform/network/SendQueue.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

/// The connection as a connected, non-blocking socket. An exchange of one datagram each way costs
/// seven system calls: socket, connect, getsockname, send, one to be watched, recv, close.
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
  std::shared_ptr<UDPConnection> self();

  void reportStart(const State& outcome);
  void report(const State& state);
  void reportCancelled();

  void afterSending();

  void socketIsReady(bool canRead, bool canWrite) override;
  void watchAsNeeded();
  void receiveOne();

  void deliverLater();
  void deliver();
  void deliverErrors();

  void touch();

  const Activity::Ref activity_ = Activity::current();
  const NWEndpoint::Host host_;
  const NWEndpoint::Port port_;
  UDPSocket socket_;
  State state_;
  bool isStarted_ = false;
  bool isCancelled_ = false;
  bool isDeliveryDue_ = false;
  std::optional<OpenConnections::Place> place_;  // present while it is an open connection
  ReceiveQueue receives_;
  SendQueue sends_{socket_, receives_};
};

}  // namespace platform
