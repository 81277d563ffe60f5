#pragma once

#include <memory>

#include "platform/base/Transport.h"
#include "platform/flowhost/PendingWrite.h"
#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// Where the answers of a flow leave: the UDP socket, or the TCP connection, that its queries came
/// by. The flow holds it until it is closed. Inside the event loop only.
class AnswerPath {
 public:
  AnswerPath() = default;
  AnswerPath(const AnswerPath&) = delete;
  AnswerPath& operator=(const AnswerPath&) = delete;
  virtual ~AnswerPath() = default;

  [[nodiscard]] virtual Transport transport() const = 0;
  [[nodiscard]] virtual bool isOpen() const = 0;
  /// Sends from the destination of `path` back to its client, when there is room and after what
  /// waits already; tells `write`. ENOBUFS when too much waits.
  virtual void send(const DatagramPath& path, Data datagram,
                    const std::shared_ptr<PendingWrite>& write) = 0;
};

}  // namespace platform
