#pragma once

#include <cstddef>
#include <memory>
#include <system_error>

#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// The write of datagrams, one at least, into a flow: its completion runs once, later, when all of
/// them are done with.
class PendingWrite : public std::enable_shared_from_this<PendingWrite> {
 public:
  PendingWrite(std::size_t datagrams, NEAppProxyUDPFlow::WriteCompletion completion);

  /// One datagram is sent, or not for the reason `error`.
  void datagramDone(std::error_code error);
  /// The same, before the queue comes to a `report`.
  void count(std::error_code error);
  /// Runs the completion now if all are done with.
  void report();

 private:
  std::size_t remaining_;
  std::error_code error_;  // the first one
  NEAppProxyUDPFlow::WriteCompletion completion_;
};

}  // namespace platform
