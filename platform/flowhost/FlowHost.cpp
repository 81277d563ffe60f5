#include "platform/flowhost/FlowHost.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/base/WholeNumber.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/flowhost/ClientFlow.h"
#include "platform/flowhost/ListenSocket.h"
#include "platform/flowhost/SystemResolver.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

namespace {

// Reads of one socket in one turn of the loop, so that a flood of queries leaves time for their
// answers.
constexpr int kMaxReadsPerTurn = 2;

using Sockets = std::vector<std::shared_ptr<ListenSocket>>;

Error failure(const NWHostEndpoint& endpoint, const std::string& reason) {
  return Error("cannot listen on " + description(endpoint) + ": " + reason);
}

tl::expected<std::shared_ptr<ListenSocket>, Error> bind(const NWHostEndpoint& endpoint) {
  const auto port = wholeNumber<std::uint16_t>(endpoint.port);
  const auto address = port ? SocketAddress::parse(endpoint.hostname, *port) : std::nullopt;
  if (!address) {
    return tl::unexpected(failure(endpoint, "not an IP address and a port"));
  }
  return ListenSocket::bind(*address).map_error(
      [&](std::error_code error) { return failure(endpoint, NWError::from(error).text()); });
}

tl::expected<Sockets, Error> bindAll(const std::vector<NWHostEndpoint>& endpoints) {
  Sockets sockets;
  for (const auto& endpoint : endpoints) {
    auto socket = bind(endpoint);
    if (!socket) {
      return tl::unexpected(socket.error());
    }
    sockets.push_back(*std::move(socket));
  }
  return sockets;
}

}  // namespace

struct FlowHost::State final : ListenSocket::Reader, std::enable_shared_from_this<State> {
  State(const FlowHostOptions& options, Sockets bound)
      : metaData(std::make_shared<NEFlowMetaData>(NEFlowMetaData{options.sourceApp})),
        sockets(std::move(bound)),
        resolver(options.resolvConf, options.resolverPort) {}

  std::optional<Error> listen();
  void datagramsArrived(ListenSocket& socket) override;
  void offerAll(ListenSocket& socket, std::span<const ReceivedDatagram> received);
  void offer(const std::shared_ptr<ClientFlow>& flow);

  NEDNSProxyProvider* provider = nullptr;  // set before anything is read
  const std::shared_ptr<const NEFlowMetaData> metaData;
  Sockets sockets;
  SystemResolver resolver;
  DatagramSlots slots;
};

std::optional<Error> FlowHost::State::listen() {
  for (const auto& socket : sockets) {
    if (const auto error = socket->listen(weak_from_this())) {
      return failure(endpointFrom(socket->address()), NWError::from(error).text());
    }
  }
  return std::nullopt;
}

void FlowHost::State::datagramsArrived(ListenSocket& socket) {
  for (int reads = 0; reads < kMaxReadsPerTurn && socket.isOpen(); ++reads) {
    const auto received = socket.receive(slots);
    offerAll(socket, received);
    if (received.size() < DatagramSlots::kMany) {
      return;
    }
  }
}

void FlowHost::State::offerAll(ListenSocket& socket, std::span<const ReceivedDatagram> received) {
  for (auto& group : groupedByPath(received)) {
    if (!socket.isOpen()) {
      return;
    }
    if (OwnSockets::shared().hasSent(group.path.client)) {
      NSLog("FlowHost: dropped ", group.size, " bytes from our own socket ", group.path.client);
      continue;
    }
    offer(std::make_shared<ClientFlow>(socket.shared_from_this(), std::move(group), metaData));
  }
}

void FlowHost::State::offer(const std::shared_ptr<ClientFlow>& flow) {
  bool isDeclined = false;
  runGuarded([&] { isDeclined = !provider->handleNewUDPFlow(flow, flow->remoteEndpoint()); });
  if (isDeclined) {
    resolver.serve(flow);
  }
}

tl::expected<std::unique_ptr<FlowHost>, Error> FlowHost::bind(const FlowHostOptions& options) {
  auto sockets = bindAll(options.listen);
  if (!sockets) {
    return tl::unexpected(sockets.error());
  }
  auto state = std::make_shared<State>(options, *std::move(sockets));
  return std::unique_ptr<FlowHost>(new FlowHost(std::move(state)));
}

std::optional<Error> FlowHost::serve(NEDNSProxyProvider& provider) {
  state_->provider = &provider;
  return state_->listen();
}

FlowHost::FlowHost(std::shared_ptr<State> state) : state_(std::move(state)) {}

FlowHost::~FlowHost() { stop(); }

void FlowHost::stop() {
  for (const auto& socket : std::exchange(state_->sockets, {})) {
    socket->close();
  }
}

std::vector<NWHostEndpoint> FlowHost::boundEndpoints() const {
  std::vector<NWHostEndpoint> endpoints;
  for (const auto& socket : state_->sockets) {
    endpoints.push_back(endpointFrom(socket->address()));
  }
  return endpoints;
}

}  // namespace platform
