#pragma once

#include "platform/dispatch/Timer.h"
#include "platform/flowhost/ResolverExchange.h"
#include "platform/tcp/MessageStream.h"

namespace platform {

/// An exchange by TCP. Its timer keeps it alive, and ends it when time is up.
class StreamExchange final : public ResolverExchange, public MessageStream::Owner {
 public:
  /// How long a server may take for all of it.
  static constexpr double kSeconds = 10;

  StreamExchange(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server)
      : ResolverExchange(std::move(flow)), server_(server) {}

  void begin() override;

 private:
  void send(std::vector<Data> queries) override;
  void disconnect() override;
  void streamChanged() override;
  void received(Data answer);
  std::shared_ptr<StreamExchange> self();

  const SocketAddress server_;
  MessageStream stream_;
  Timer timer_;
};

}  // namespace platform
