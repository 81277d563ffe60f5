#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/network/NWConnection.h"
#include "platform/network/ReceiveQueue.h"
#include "platform/udp/SendBacklog.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

/// The sends of one connected socket: those that wait for room, and those that have come to their
/// end and are not reported yet. Not thread-safe.
///
/// A refusal (ICMP port unreachable) is the answer to a datagram sent earlier, and the kernel hands
/// it out with the next call on the socket, whichever it is. One refusal fails one receive.
///
/// To send to a port of this machine that nobody has costs 5 microseconds, more than all the rest
/// of a log line, so a link whose datagram is refused sends no more until its sends are reported.
/// Of what it sends until then, only the first goes out at once; the others are collected and go
/// together.
class SendQueue {
 public:
  using Completion = NWConnection::SendCompletion;

  SendQueue(UDPSocket& socket, ReceiveQueue& receives) : socket_(socket), receives_(receives) {}

  /// As `NWConnection::isLink`; set before the first send.
  bool isLink = false;

  /// Sends, or holds the datagram for `sendCollected`, which is due when `hasEnded`.
  void send(Data content, Completion completion);
  /// Sends what is collected, before the sends are reported or the socket is closed.
  void sendCollected();
  /// Ends a send that is not attempted.
  void end(Completion completion, std::optional<NWError> error);

  [[nodiscard]] bool isWaiting() const { return !waiting_.isEmpty(); }
  /// Sends what there is room for.
  void flush() { waiting_.flush(); }
  void failWaiting(std::error_code error) { waiting_.fail(error); }
  /// Takes all that wait out, unsent.
  SendBacklog takeWaiting() { return std::exchange(waiting_, {}); }

  [[nodiscard]] bool hasEnded() const { return !ended_.empty(); }
  /// Runs the completions of those that have ended.
  void report();

 private:
  struct Collected {
    Data content;
    Completion completion;
  };
  struct Ended {
    Completion completion;
    std::optional<NWError> error;
  };

  void sendAlone(Data content, Completion completion);
  UDPSocket::Sent sendTogether(std::span<const Collected> collected);
  std::error_code attempt(DataView content);
  void holdForReceive(std::error_code error);

  UDPSocket& socket_;
  ReceiveQueue& receives_;
  SendBacklog waiting_;
  std::vector<Collected> collected_;  // after one of `ended_`
  std::vector<Ended> ended_;
  bool isPeerGone_ = false;  // of a link: one of `ended_` was refused
};

}  // namespace platform
