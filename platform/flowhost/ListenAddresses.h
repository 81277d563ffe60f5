#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/base/Error.h"
#include "platform/flowhost/ClientConnections.h"
#include "platform/flowhost/ListenSocket.h"

namespace platform {

/// The sockets that serve the listen addresses, each address by UDP and by TCP. Errors name the
/// address: `cannot listen on 127.0.0.1:5300: Address already in use`. Inside the event loop only.
class ListenAddresses {
 public:
  /// What comes by UDP tells its interface if `tellsInterface`.
  explicit ListenAddresses(bool tellsInterface) : tellsInterface_(tellsInterface) {}

  /// Binds a further address; what comes there waits.
  std::optional<Error> bind(const NWHostEndpoint& endpoint);
  /// Tells `reader` of datagrams, and offers queries by TCP, from now on.
  std::optional<Error> listen(const std::weak_ptr<ListenSocket::Reader>& reader,
                              ClientConnection::Offer offer);
  void close();

  /// What is bound, in the order in which it was, with the ports that the system has chosen.
  [[nodiscard]] std::vector<NWHostEndpoint> endpoints() const;

 private:
  std::optional<Error> bind(const NWHostEndpoint& endpoint, const SocketAddress& address,
                            int tries);

  bool tellsInterface_;
  std::vector<std::shared_ptr<ListenSocket>> udp_;
  std::shared_ptr<ClientConnections> tcp_ = std::make_shared<ClientConnections>();
};

}  // namespace platform
