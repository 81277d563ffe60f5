#pragma once

#include "platform/flowhost/ResolverExchange.h"
#include "platform/network/NWConnection.h"

namespace platform {

/// An exchange by UDP. The handlers of its connection keep it alive.
class DatagramExchange final : public ResolverExchange {
 public:
  DatagramExchange(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server);

 private:
  void send(std::vector<Data> queries) override;
  void disconnect() override { connection_->cancel(); }

  void stateChanged(const NWConnection::State& state);
  void sendAll();
  void sent(const std::optional<NWError>& error);
  void received(std::optional<Data> answer, const std::optional<NWError>& error);
  std::shared_ptr<DatagramExchange> self();

  const std::shared_ptr<NWConnection> connection_;
  std::vector<Data> queries_;
};

}  // namespace platform
