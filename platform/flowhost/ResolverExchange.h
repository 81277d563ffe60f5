#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/network/NWConnection.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// One flow answered from one server, over a connection of its own, whose handlers keep it alive.
/// Answers are matched in the order in which they come. Ends, with both sides of the flow closed,
/// when there are as many answers as datagrams, and at the first error.
class ResolverExchange : public std::enable_shared_from_this<ResolverExchange> {
 public:
  static void begin(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server);

 private:
  ResolverExchange(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server);

  void read();
  void connect(std::vector<Data> datagrams, std::vector<NWHostEndpoint> endpoints);
  void stateChanged(const NWConnection::State& state);
  void sendAll();
  void sent(const std::optional<NWError>& error);
  void received(std::optional<Data> answer, const std::optional<NWError>& error);
  void end(const std::optional<Error>& error);

  const std::shared_ptr<NEAppProxyUDPFlow> flow_;
  const std::shared_ptr<NWConnection> connection_;
  std::vector<Data> datagrams_;
  std::vector<NWHostEndpoint> endpoints_;
  std::size_t answers_ = 0;
  bool isOver_ = false;
};

}  // namespace platform
