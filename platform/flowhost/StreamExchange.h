#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/dispatch/Timer.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"
#include "platform/tcp/MessageStream.h"

namespace platform {

/// One flow answered from one server, over a TCP connection of its own. Its timer keeps it alive.
/// Answers are matched in the order in which they come. Ends, with both sides of the flow closed,
/// when there are as many answers as datagrams, at the first error, and when time is up.
class StreamExchange final : public std::enable_shared_from_this<StreamExchange>,
                             public MessageStream::Owner {
 public:
  /// How long a server may take for all of it.
  static constexpr double kSeconds = 10;

  explicit StreamExchange(std::shared_ptr<NEAppProxyUDPFlow> flow) : flow_(std::move(flow)) {}

  void begin(const SocketAddress& server);
  void end(const std::optional<Error>& error);

 private:
  void ask(const SocketAddress& server, const std::vector<Data>& queries,
           std::vector<NWHostEndpoint> endpoints);
  void streamChanged() override;
  void received(Data answer);

  const std::shared_ptr<NEAppProxyUDPFlow> flow_;
  MessageStream stream_;
  std::vector<NWHostEndpoint> endpoints_;
  std::size_t answers_ = 0;
  bool isOver_ = false;
  Timer timer_;
};

}  // namespace platform
