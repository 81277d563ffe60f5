#include "platform/flowhost/SystemResolver.h"

#include <utility>

#include "platform/flowhost/DatagramExchange.h"
#include "platform/flowhost/ResolvConf.h"
#include "platform/log/NSLog.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

namespace {

std::optional<FileState> stateOf(const std::filesystem::path& file) {
  const auto state = regularFileState(file);
  return state ? std::optional(*state) : std::nullopt;
}

// The wildcard address stands for this machine: it counts as our own whatever we serve.
bool isOwn(const SocketAddress& server) {
  return server.isWildcard() || OwnSockets::shared().servesAt(server);
}

}  // namespace

SystemResolver::SystemResolver(std::filesystem::path resolvConf, std::uint16_t port)
    : resolvConf_(std::move(resolvConf)), port_(port) {}

void SystemResolver::serve(std::shared_ptr<NEAppProxyUDPFlow> flow, Transport transport,
                           const std::optional<SocketAddress>& destination) {
  if (const auto address = destination && !isOwn(*destination) ? destination : server()) {
    if (transport == Transport::tcp) {
      serveByTCP(std::move(flow), *address);
    } else {
      std::make_shared<DatagramExchange>(std::move(flow), *address)->begin();
    }
    return;
  }
  const Error error("no DNS server of the system's own");
  flow->closeReadWithError(error);
  flow->closeWriteWithError(error);
}

void SystemResolver::serveByTCP(std::shared_ptr<NEAppProxyUDPFlow> flow,
                                const SocketAddress& server) {
  std::erase_if(streams_, [](const auto& stream) { return stream.expired(); });
  if (streams_.size() >= kMaxStreams) {
    if (const auto oldest = streams_.front().lock()) {
      oldest->end(Error("given up to make room"));
    }
    streams_.pop_front();
  }
  const auto stream = std::make_shared<StreamExchange>(std::move(flow), server);
  streams_.push_back(stream);
  stream->begin();
}

std::optional<SocketAddress> SystemResolver::server() {
  const auto state = stateOf(resolvConf_);
  if (!isRead_ || state != state_) {
    readAgain(state);
  }
  return server_;
}

void SystemResolver::readAgain(const std::optional<FileState>& state) {
  isRead_ = true;
  state_ = state;
  const auto settings = readResolvConf(resolvConf_);
  server_ = settings ? firstUsable(settings->servers) : std::nullopt;
  if (!server_) {
    NSLog("SystemResolver: no usable DNS server in ", resolvConf_.native(),
          settings ? "" : ": " + settings.error().message());
  }
}

std::optional<SocketAddress> SystemResolver::firstUsable(
    const std::vector<std::string>& servers) const {
  for (const auto& text : servers) {
    const auto server = SocketAddress::parse(text, port_);
    if (server && !isOwn(*server)) {
      return server;
    }
  }
  return std::nullopt;
}

}  // namespace platform
