#pragma once

#include <cstddef>
#include <optional>
#include <system_error>

#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace platform {

/// The write of some datagrams into a flow: its completion runs once, later, when all of them are
/// done with.
class PendingWrite {
 public:
  PendingWrite(std::size_t datagrams, NEAppProxyUDPFlow::WriteCompletion completion);

  /// Ends the write before any datagram is sent.
  void end(std::optional<Error> error);
  /// One datagram is sent, or not for the reason `error`.
  void datagramDone(std::error_code error);

 private:
  void complete();

  std::size_t remaining_;
  std::optional<Error> error_;
  NEAppProxyUDPFlow::WriteCompletion completion_;
};

}  // namespace platform
