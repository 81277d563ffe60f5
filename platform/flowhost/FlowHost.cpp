#include "platform/flowhost/FlowHost.h"

#include <utility>

#include "platform/dispatch/RunGuarded.h"
#include "platform/flowhost/ApplicationMetaData.h"
#include "platform/flowhost/ClientFlow.h"
#include "platform/flowhost/ListenAddresses.h"
#include "platform/flowhost/SystemResolver.h"
#include "platform/log/NSLog.h"
#include "platform/senders/OriginalDestination.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

namespace {

// Reads of one socket in one iteration of the loop, so that a flood of queries leaves time for
// their answers.
constexpr int kMaxReadsPerIteration = 2;

SenderQuery senderQuery(Transport transport, const ClientDatagrams& received) {
  const auto& [client, destination] = received.path;
  return {{transport, client, destination, received.interfaceIndex},
          received.captured,
          received.mayBeCaptured};
}

}  // namespace

struct FlowHost::State final : ListenSocket::Reader, std::enable_shared_from_this<State> {
  State(const FlowHostOptions& options, ListenAddresses bound)
      : applications(options.sourceApp),
        senders(options.identify ? SenderLookup::start(*options.identify) : nullptr),
        addresses(std::move(bound)),
        resolver(options.resolvConf, options.resolverPort),
        observer(options.observer) {}

  std::optional<Error> listen();
  void datagramsArrived(ListenSocket& socket) override;
  void offerAll(ListenSocket& socket, std::span<const ReceivedDatagram> received);
  void findOriginal(ClientDatagrams& group);
  std::vector<SenderLookup::Owner> findSenders(Transport transport,
                                               std::span<const ClientDatagrams> groups);
  void identify(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
                const SenderLookup::Owner& sender);
  void offer(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
             std::optional<std::string_view> application);

  NEDNSProxyProvider* provider = nullptr;  // set before anything is read
  ApplicationMetaData applications;
  const std::shared_ptr<SenderLookup> senders;  // absent: no application is known
  ListenAddresses addresses;
  SystemResolver resolver;
  const std::shared_ptr<FlowObserver> observer;  // may be nullptr
  OriginalDestination originals;
  DatagramSlots slots;
};

std::optional<Error> FlowHost::State::listen() {
  return addresses.listen(weak_from_this(), [weak = weak_from_this()](auto answers, auto received) {
    if (const auto self = weak.lock()) {
      const auto sender = self->findSenders(answers->transport(), {&received, 1}).front();
      self->identify(std::move(answers), std::move(received), sender);
    }
  });
}

void FlowHost::State::datagramsArrived(ListenSocket& socket) {
  for (int reads = 0; reads < kMaxReadsPerIteration && socket.isOpen(); ++reads) {
    const auto received = socket.receive(slots);
    offerAll(socket, received);
    if (received.size() < DatagramSlots::kMany) {
      return;
    }
  }
}

void FlowHost::State::offerAll(ListenSocket& socket, std::span<const ReceivedDatagram> received) {
  auto groups = groupedByPath(received);
  for (auto& group : groups) {
    findOriginal(group);
  }
  const auto senderOf = findSenders(socket.transport(), groups);
  for (std::size_t i = 0; i < groups.size() && socket.isOpen(); ++i) {
    auto& group = groups[i];
    if (OwnSockets::shared().hasSent(group.client())) {
      NSLog("FlowHost: dropped ", group.size, " bytes from our own socket ", group.client());
    } else {
      identify(socket.shared_from_this(), std::move(group), senderOf[i]);
    }
  }
}

void FlowHost::State::findOriginal(ClientDatagrams& group) {
  const auto original = originals.ofDatagram(group.path.client, group.path.destination);
  group.captured = original.path();
  group.mayBeCaptured = original.kind == OriginalDestination::Result::Kind::cannotTell;
}

std::vector<SenderLookup::Owner> FlowHost::State::findSenders(
    Transport transport, std::span<const ClientDatagrams> groups) {
  if (!senders) {
    return std::vector<SenderLookup::Owner>(groups.size());
  }
  std::vector<SenderQuery> queries;
  queries.reserve(groups.size());
  for (const auto& group : groups) {
    queries.push_back(senderQuery(transport, group));
  }
  return senders->find(queries);
}

void FlowHost::State::identify(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
                               const SenderLookup::Owner& sender) {
  if (observer) {
    received.activity = observer->began(answers->transport(), received.datagrams);
  }
  if (!senders) {
    offer(std::move(answers), std::move(received), std::nullopt);
    return;
  }
  const auto query = senderQuery(answers->transport(), received);
  const auto waiting = std::make_shared<ClientDatagrams>(std::move(received));
  senders->identify(
      query, sender,
      [weak = weak_from_this(), answers = std::move(answers), waiting](auto application) {
        if (const auto self = weak.lock(); self && answers->isOpen()) {
          self->offer(answers, std::move(*waiting), application);
        }
      });
}

void FlowHost::State::offer(std::shared_ptr<AnswerPath> answers, ClientDatagrams received,
                            std::optional<std::string_view> application) {
  const auto activity = std::exchange(received.activity, nullptr);
  const ActivityScope scope(activity);
  const auto transport = answers->transport();
  const auto destination = received.captured ? std::optional(received.server()) : std::nullopt;
  const auto flow = std::make_shared<ClientFlow>(std::move(answers), std::move(received),
                                                 applications.of(application));
  flow->observe(activity);
  bool isDeclined = false;
  runGuarded([&] { isDeclined = !provider->handleNewUDPFlow(flow, flow->remoteEndpoint()); });
  if (isDeclined) {
    if (activity) {
      activity->declined();
    }
    resolver.serve(flow, transport, destination);
  }
}

tl::expected<std::unique_ptr<FlowHost>, Error> FlowHost::bind(const FlowHostOptions& options) {
  ListenAddresses addresses(options.identify.has_value());
  for (const auto& endpoint : options.listen) {
    if (auto error = addresses.bind(endpoint)) {
      return tl::unexpected(*std::move(error));
    }
  }
  auto state = std::make_shared<State>(options, std::move(addresses));
  return std::unique_ptr<FlowHost>(new FlowHost(std::move(state)));
}

std::optional<Error> FlowHost::serve(NEDNSProxyProvider& provider) {
  state_->provider = &provider;
  return state_->listen();
}

FlowHost::FlowHost(std::shared_ptr<State> state) : state_(std::move(state)) {}

FlowHost::~FlowHost() { stop(); }

void FlowHost::stop() { state_->addresses.close(); }

std::vector<NWHostEndpoint> FlowHost::boundEndpoints() const {
  return state_->addresses.endpoints();
}

}  // namespace platform
