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

// Datagrams read before other work of the queue has its turn.
constexpr int kMaxReadsPerTurn = 64;

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

struct NWListener::Reading {
  Reading() = default;
  ~Reading() { close(); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  [[nodiscard]] bool isOpen() const { return associations->socket.isOpen(); }
  void close() const { associations->socket.close(); }

  std::optional<ReceivedDatagram> next() {
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
      if (const auto received = associations->socket.receive(slot)) {
        return received->empty() ? std::nullopt : std::optional(received->front());
      }
    }
    return std::nullopt;
  }

  DatagramSlots slot{1};
  const std::shared_ptr<Associations> associations = std::make_shared<Associations>();
  std::optional<DispatchQueue> queue;  // present once started
};

tl::expected<std::shared_ptr<NWListener>, NWError> NWListener::create(
    const NWParameters& /*parameters*/, NWEndpoint::Port port) {
  auto reading = std::make_unique<Reading>();
  if (const auto error = bindEveryAddress(reading->associations->socket, port.rawValue)) {
    return tl::unexpected(NWError::from(error));
  }
  return std::shared_ptr<NWListener>(new NWListener(std::move(reading)));
}

NWListener::NWListener(std::unique_ptr<Reading> reading) : reading_(std::move(reading)) {}
NWListener::~NWListener() = default;

NWEndpoint::Port NWListener::port() const {
  return NWEndpoint::Port(reading_->associations->socket.address().port());
}

void NWListener::onQueue(void (NWListener::*work)()) {
  reading_->queue->async([weak = weak_from_this(), work] {
    if (const auto self = weak.lock()) {
      (self.get()->*work)();
    }
  });
}

void NWListener::start(DispatchQueue queue) {
  if (!reading_->queue) {
    reading_->queue = std::move(queue);
    onQueue(&NWListener::begin);
  }
}

void NWListener::begin() {
  report({Kind::setup, std::nullopt});
  if (isCancelled_) {
    return;
  }
  auto& socket = reading_->associations->socket;
  if (const auto error = socket.watch(*this, {true, false}, *reading_->queue)) {
    reading_->close();
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
  reading_->close();
  if (reading_->queue) {
    onQueue(&NWListener::reportCancelled);
  }
}

void NWListener::reportCancelled() { report({Kind::cancelled, std::nullopt}); }

/// Work that is due comes first, and what it gives in turn; what has come is told of again.
void NWListener::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  const auto alive = shared_from_this();
  const auto& workDue = reading_->associations->workDue;
  if (workDue > 0) {
    return;
  }
  for (int count = 0; count < kMaxReadsPerTurn && workDue == 0 && reading_->isOpen(); ++count) {
    if (!readOne()) {
      break;
    }
  }
  tellLost();
}

void NWListener::tellLost() {
  if (!reading_->isOpen()) {
    return;
  }
  if (const auto lost = reading_->associations->socket.takeLost(); lost > 0) {
    NSLog("NWListener: ", lost, " datagrams to port ", port().rawValue,
          " were lost, the queue was busy");
  }
}

/// False when there is nothing to be read.
bool NWListener::readOne() {
  auto& associations = *reading_->associations;
  const auto arrival = reading_->next();
  if (!arrival) {
    readRefusals();
    return false;
  }
  const auto& client = arrival->path.client;
  if (OwnSockets::shared().hasSent(client)) {
    NSLog("NWListener: dropped ", arrival->bytes, " from our own socket ", client.unmapped());
    return true;
  }
  if (auto* const known = associations.find(client)) {
    known->arrived(*arrival);
    return true;
  }
  const auto fresh = std::make_shared<AcceptedConnection>(reading_->associations, client);
  if (associations.open.size() > kMaxConnections) {
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
  while (const auto refusal = reading_->associations->socket.takeRefusal()) {
    if (auto* const known = reading_->associations->find(refusal->client)) {
      known->refused(refusal->error);
    }
  }
}

}  // namespace platform
