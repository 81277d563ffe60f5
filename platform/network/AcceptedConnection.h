#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/network/NWConnection.h"
#include "platform/network/ReceiveQueue.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

class AcceptedConnection;

/// What a listener and its associations share: the socket, and who is there. On the listener's
/// queue only.
struct Associations : std::enable_shared_from_this<Associations> {
  /// The association of `client`, or nullptr.
  [[nodiscard]] AcceptedConnection* find(const SocketAddress& client) const;

  /// Runs `work` later on `queue`, before the next datagram is read.
  void runFirst(const DispatchQueue& queue, std::function<void()> work);

  UDPSocket socket;
  std::vector<AcceptedConnection*> open;  // each takes itself out at its end
  int workDue = 0;                        // pieces of work that have not run
};

/// One client of a listener, as a connection that shares the listener's socket.
///
/// It lives as long as its owner holds it and keeps nothing alive itself. Once it is let go of or
/// cancelled it is forgotten: the next datagram of its client is a new association. What arrives
/// while no receive is armed waits, up to `kMaxHeld` datagrams; what is lost leaves a log line.
///
/// A refusal (ICMP port unreachable) of something sent is the error of a receive. On the
/// listener's queue only.
class AcceptedConnection final : public NWConnection {
 public:
  /// Datagrams that wait for a receive. One costs its bytes, 64 KiB at most.
  static constexpr std::size_t kMaxHeld = 16;

  AcceptedConnection(std::shared_ptr<Associations> associations, const SocketAddress& client);
  ~AcceptedConnection() override;
  AcceptedConnection(const AcceptedConnection&) = delete;
  AcceptedConnection& operator=(const AcceptedConnection&) = delete;

  /// `queue` is the listener's.
  void start(DispatchQueue queue) override;
  void send(Data content, SendCompletion completion) override;
  void receiveMessage(ReceiveCompletion completion) override;
  void cancel() override;
  [[nodiscard]] std::optional<NWPath> currentPath() const override;
  [[nodiscard]] State state() const override { return state_; }
  /// `[C3 127.0.0.1:40123 udp]`, numbered through the process.
  void describe(std::string& out) const override;

  [[nodiscard]] const SocketAddress& client() const { return path_.client; }

  // What the listener's socket has for it.
  void arrived(const ReceivedDatagram& datagram);
  void refused(std::error_code error);

 private:
  std::optional<NWError> sendNow(DataView content);
  void forget();
  void onQueue(void (AcceptedConnection::*work)());
  void reportStart();
  void reportCancelled();
  void report(State::Kind kind);
  void deliver();

  const std::shared_ptr<Associations> associations_;
  DatagramPath path_;  // its destination is the one that the client has sent to last
  const std::uint64_t number_;
  std::optional<DispatchQueue> queue_;  // present once started
  State state_;
  bool isCancelled_ = false;
  bool isDelivering_ = false;
  ReceiveQueue receives_;
};

}  // namespace platform
