#include "platform/network/NWListener.h"

#include <utility>

#include "platform/dispatch/RunGuarded.h"
#include "platform/log/NSLog.h"
#include "platform/network/AcceptedConnection.h"

namespace platform {

namespace {

using Kind = NWListener::State::Kind;

// What the kernel holds while the queue is busy: some hundred datagrams, so that what waits is
// dealt with in seconds.
constexpr int kReceiveBufferSize = 256 * 1024;

// Refusals that one read may find before it: one for each earlier datagram.
constexpr int kMaxAttempts = 64;

// Datagrams read in one iteration, so that other work of the queue runs too.
constexpr int kMaxReadsPerIteration = 64;

/// Binds a port of every local address; of every IPv4 address on a machine without IPv6.
std::error_code bindEveryAddress(UDPSocket& socket, std::uint16_t port) {
  constexpr UDPSocket::Binding kBinding{
      .receiveBuffer = kReceiveBufferSize, .takesIPv4 = true, .keepsRefusals = true};
  std::error_code error;
  for (const char* const any : {"::", "0.0.0.0"}) {
    error = socket.bind(SocketAddress::parse(any, port).value(), kBinding);
    if (error != std::errc::address_family_not_supported) {
      break;
    }
  }
  return error;
}

}  // namespace

tl::expected<std::shared_ptr<NWListener>, NWError> NWListener::create(
    const NWParameters& /*parameters*/, NWEndpoint::Port port) {
  const std::shared_ptr<NWListener> listener(new NWListener);
  if (const auto error = bindEveryAddress(listener->associations_->socket, port.rawValue)) {
    return tl::unexpected(NWError::from(error));
  }
  return listener;
}

NWListener::NWListener() : associations_(std::make_shared<Associations>()) {}
NWListener::~NWListener() { associations_->socket.close(); }

NWEndpoint::Port NWListener::port() const {
  return NWEndpoint::Port(associations_->socket.address().port());
}

void NWListener::onQueue(void (NWListener::*work)()) {
  queue_->async([weak = weak_from_this(), work] {
    if (const auto self = weak.lock()) {
      (self.get()->*work)();
    }
  });
}

void NWListener::start(DispatchQueue queue) {
  if (!queue_) {
    queue_ = std::move(queue);
    onQueue(&NWListener::begin);
  }
}

void NWListener::begin() {
  report({Kind::setup, std::nullopt});
  if (isCancelled_) {
    return;
  }
  auto& socket = associations_->socket;
  if (const auto error = socket.watch(*this, {true, false}, *queue_)) {
    associations_->socket.close();
    report({Kind::failed, NWError::from(error)});
    return;
  }
  report({Kind::ready, std::nullopt});
}

void NWListener::report(const State& state) {
  if (const auto handler = stateUpdateHandler) {
    runGuarded([&] { handler(state); });
  }
}

void NWListener::cancel() {
  if (std::exchange(isCancelled_, true)) {
    return;
  }
  associations_->socket.close();
  if (queue_) {
    onQueue(&NWListener::reportCancelled);
  }
}

void NWListener::reportCancelled() { report({Kind::cancelled, std::nullopt}); }

/// Work that is due comes first, and what that gives to the queue; what has come is told of again.
void NWListener::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  const auto alive = shared_from_this();
  const auto& workDue = associations_->workDue;
  if (workDue > 0) {
    return;
  }
  for (int count = 0;
       count < kMaxReadsPerIteration && workDue == 0 && associations_->socket.isOpen(); ++count) {
    if (!readOne()) {
      break;
    }
  }
  tellLost();
}

void NWListener::tellLost() {
  if (!associations_->socket.isOpen()) {
    return;
  }
  if (const auto lost = associations_->socket.takeLost(); lost > 0) {
    NSLog("NWListener: ", lost, " datagrams to port ", port().rawValue,
          " were lost, the queue was busy");
  }
}

std::optional<ReceivedDatagram> NWListener::next() {
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    if (const auto received = associations_->socket.receive(slot_)) {
      return received->empty() ? std::nullopt : std::optional(received->front());
    }
  }
  return std::nullopt;
}

/// False when there is nothing to be read.
bool NWListener::readOne() {
  const auto arrival = next();
  if (!arrival) {
    readRefusals();
    return false;
  }
  const auto& client = arrival->path.client;
  if (OwnSockets::shared().hasSent(client)) {
    NSLog("NWListener: dropped ", arrival->bytes, " from our own socket ", client.unmapped());
    return true;
  }
  if (auto* const known = associations_->find(client)) {
    known->arrived(*arrival);
    return true;
  }
  const auto fresh = std::make_shared<AcceptedConnection>(associations_, client);
  if (associations_->open.size() > kMaxConnections) {
    NSLog("NWListener: no room for ", *fresh, ", dropped ", arrival->bytes);
    return true;
  }
  fresh->arrived(*arrival);
  if (const auto handler = newConnectionHandler) {
    runGuarded([&] { handler(fresh); });
  }
  return true;
}

void NWListener::readRefusals() {
  while (const auto refusal = associations_->socket.takeRefusal()) {
    if (auto* const known = associations_->find(refusal->client)) {
      known->refused(refusal->error);
    }
  }
}

}  // namespace platform
