#pragma once

#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/flowhost/AnswerPath.h"
#include "platform/flowhost/StreamExchange.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"
#include "platform/store/RegularFile.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// Answers flows from the DNS server that the system itself uses: the first `nameserver` of its
/// configuration that this process does not serve itself. Inside the event loop only.
class SystemResolver {
 public:
  /// Flows that are answered by TCP at once. One costs a descriptor and what a query and its answer
  /// hold; with one more the oldest is given up.
  static constexpr std::size_t kMaxStreams = 32;

  SystemResolver(std::filesystem::path resolvConf, std::uint16_t port);

  /// Passes the flow's datagrams to the server as they are, and its answers back, in the order in
  /// which they come; closes the flow after the last one, or with an error. A server that does not
  /// answer leaves it open until the bound on connections ends it; one by TCP, until
  /// `StreamExchange` gives up. The server is `destination`, which the client has sent to, where
  /// that is known and is not this process.
  void serve(std::shared_ptr<NEAppProxyUDPFlow> flow, Transport transport,
             const std::optional<SocketAddress>& destination = std::nullopt);

  /// The system's server in use. The configuration is read again when its file has changed.
  std::optional<SocketAddress> server();

 private:
  void serveByTCP(std::shared_ptr<NEAppProxyUDPFlow> flow, const SocketAddress& server);
  void readAgain(const std::optional<FileState>& state);
  [[nodiscard]] std::optional<SocketAddress> firstUsable(
      const std::vector<std::string>& servers) const;

  const std::filesystem::path resolvConf_;
  const std::uint16_t port_;
  std::deque<std::weak_ptr<StreamExchange>> streams_;  // the oldest first
  std::optional<SocketAddress> server_;
  std::optional<FileState> state_;  // of the file when it was read; absent for none
  bool isRead_ = false;
};

}  // namespace platform
