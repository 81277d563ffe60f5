#include "platform/flowhost/FlowHost.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/base/WholeNumber.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/flowhost/ApplicationMetaData.h"
#include "platform/flowhost/ClientConnections.h"
#include "platform/flowhost/ClientFlow.h"
#include "platform/flowhost/ListenSocket.h"
#include "platform/flowhost/SystemResolver.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"
#include "platform/senders/OriginalDestination.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

namespace {

// Reads of one socket in one turn of the loop, so that a flood of queries leaves time for their
// answers.
constexpr int kMaxReadsPerTurn = 2;

// Ports that the system chooses for UDP before one is free for TCP too; nearly always the first is.
constexpr int kMaxPortsTried = 32;

Error failure(const NWHostEndpoint& endpoint, const std::string& reason) {
  return Error("cannot listen on " + description(endpoint) + reason);
}

std::string text(std::error_code error) { return NWError::from(error).text(); }

/// What serves the listen addresses.
struct Sockets {
  bool tellsInterface = false;  // of those that are bound
  std::vector<std::shared_ptr<ListenSocket>> udp{};
  std::shared_ptr<ClientConnections> tcp = std::make_shared<ClientConnections>();

  std::optional<Error> bind(const NWHostEndpoint& endpoint);
  std::optional<Error> bind(const NWHostEndpoint& endpoint, const SocketAddress& address,
                            int tries = kMaxPortsTried);
  void close();
};

std::optional<Error> Sockets::bind(const NWHostEndpoint& endpoint) {
  const auto port = wholeNumber<std::uint16_t>(endpoint.port);
  const auto address = port ? SocketAddress::parse(endpoint.hostname, *port) : std::nullopt;
  return address ? bind(endpoint, *address) : failure(endpoint, ": not an IP address and a port");
}

std::optional<Error> Sockets::bind(const NWHostEndpoint& endpoint, const SocketAddress& address,
                                   int tries) {
  auto socket = ListenSocket::bind(address, tellsInterface);
  if (!socket) {
    return failure(endpoint, ": " + text(socket.error()));
  }
  const auto error = tcp->bind((*socket)->address());
  if (!error) {
    udp.push_back(*std::move(socket));
    return std::nullopt;
  }
  if (address.port() == 0 && error == std::errc::address_in_use && tries > 1) {
    return bind(endpoint, address, tries - 1);  // while the port is held: another is chosen
  }
  return failure(endpoint, " by TCP: " + text(error));
}

void Sockets::close() {
  for (const auto& socket : std::exchange(udp, {})) {
    socket->close();
  }
  tcp->close();
}

}  // namespace

struct FlowHost::State final : ListenSocket::Reader, std::enable_shared_from_this<State> {
  State(const FlowHostOptions& options, Sockets bound)
      : applications(options.sourceApp),
        senders(options.identify ? SenderLookup::start(*options.identify) : nullptr),
        sockets(std::move(bound)),
        resolver(options.resolvConf, options.resolverPort) {}

  std::optional<Error> listen();
  void datagramsArrived(ListenSocket& socket) override;
  void offerAll(ListenSocket& socket, std::span<const ReceivedDatagram> received);
  void identify(std::shared_ptr<AnswerPath> answers, ClientDatagrams received);
  void offer(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
             std::optional<std::string_view> application);

  NEDNSProxyProvider* provider = nullptr;  // set before anything is read
  ApplicationMetaData applications;
  const std::shared_ptr<SenderLookup> senders;  // absent: no application is known
  Sockets sockets;
  SystemResolver resolver;
  OriginalDestination originals;
  DatagramSlots slots;
};

std::optional<Error> FlowHost::State::listen() {
  for (const auto& socket : sockets.udp) {
    if (const auto error = socket->listen(weak_from_this())) {
      return failure(endpointFrom(socket->address()), ": " + text(error));
    }
  }
  const auto error = sockets.tcp->listen([weak = weak_from_this()](auto answers, auto received) {
    if (const auto self = weak.lock()) {
      self->identify(std::move(answers), std::move(received));
    }
  });
  return error ? std::optional(Error("cannot listen by TCP: " + text(error))) : std::nullopt;
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
    const auto original = originals.ofDatagram(group.path.client, group.path.destination);
    group.captured = original.path();
    group.mayBeCaptured = original.kind == OriginalDestination::Result::Kind::cannotTell;
    const auto& client = group.captured ? group.captured->client : group.path.client;
    if (OwnSockets::shared().hasSent(client)) {
      NSLog("FlowHost: dropped ", group.size, " bytes from our own socket ", client);
      continue;
    }
    identify(socket.shared_from_this(), std::move(group));
  }
}

void FlowHost::State::identify(std::shared_ptr<AnswerPath> answers, ClientDatagrams received) {
  if (!senders) {
    offer(std::move(answers), std::move(received), std::nullopt);
    return;
  }
  const auto& [client, destination] = received.path;
  const SenderQuery query{{answers->transport(), client, destination, received.interfaceIndex},
                          received.captured,
                          received.mayBeCaptured};
  const auto waiting = std::make_shared<ClientDatagrams>(std::move(received));
  senders->identify(
      query, [weak = weak_from_this(), answers = std::move(answers), waiting](auto application) {
        if (const auto self = weak.lock(); self && answers->isOpen()) {
          self->offer(answers, std::move(*waiting), application);
        }
      });
}

void FlowHost::State::offer(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
                            std::optional<std::string_view> application) {
  const auto transport = answers->transport();
  const auto asked = received.captured ? std::optional(received.server()) : std::nullopt;
  const auto flow = std::make_shared<ClientFlow>(std::move(answers), std::move(received),
                                                 applications.of(application));
  bool isDeclined = false;
  runGuarded([&] { isDeclined = !provider->handleNewUDPFlow(flow, flow->remoteEndpoint()); });
  if (isDeclined) {
    resolver.serve(flow, transport, asked);
  }
}

tl::expected<std::unique_ptr<FlowHost>, Error> FlowHost::bind(const FlowHostOptions& options) {
  Sockets sockets{.tellsInterface = options.identify.has_value()};
  for (const auto& endpoint : options.listen) {
    if (auto error = sockets.bind(endpoint)) {
      return tl::unexpected(*std::move(error));
    }
  }
  auto state = std::make_shared<State>(options, std::move(sockets));
  return std::unique_ptr<FlowHost>(new FlowHost(std::move(state)));
}

std::optional<Error> FlowHost::serve(NEDNSProxyProvider& provider) {
  state_->provider = &provider;
  return state_->listen();
}

FlowHost::FlowHost(std::shared_ptr<State> state) : state_(std::move(state)) {}

FlowHost::~FlowHost() { stop(); }

void FlowHost::stop() { state_->sockets.close(); }

std::vector<NWHostEndpoint> FlowHost::boundEndpoints() const {
  std::vector<NWHostEndpoint> endpoints;
  for (const auto& socket : state_->sockets.udp) {
    endpoints.push_back(endpointFrom(socket->address()));
  }
  return endpoints;
}

}  // namespace platform
