#include "platform/network/UDPConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/dispatch/RunGuarded.h"

namespace platform {

namespace {

using Kind = NWConnection::State::Kind;

// Larger than any datagram; one for all connections of the loop.
constexpr std::size_t kBufferSize = 64UL * 1024;

// Refusals that no receive has asked for yet; more of them tell nothing new.
constexpr std::size_t kMaxReceiveErrors = 64;

std::optional<SocketAddress> addressOf(const NWEndpoint::Host& host, NWEndpoint::Port port) {
  const bool isLoopbackName = host.text() == "localhost";
  return SocketAddress::parse(isLoopbackName ? "127.0.0.1" : host.text(), port.rawValue);
}

bool isRefusal(std::error_code error) { return error == std::errc::connection_refused; }

std::optional<NWError> errorFrom(std::error_code error) {
  return error ? std::optional(NWError::from(error)) : std::nullopt;
}

}  // namespace

UDPConnection::UDPConnection(NWEndpoint::Host host, NWEndpoint::Port port)
    : host_(std::move(host)), port_(port) {}

std::shared_ptr<UDPConnection> UDPConnection::self() {
  return std::static_pointer_cast<UDPConnection>(shared_from_this());
}

void UDPConnection::start(DispatchQueue queue) {
  if (isStarted_ || isCancelled_) {
    return;
  }
  isStarted_ = true;
  const State outcome = open();
  if (!isLink && outcome.kind != Kind::failed) {
    OpenConnections::shared().makeRoom();
    place_ = OpenConnections::shared().add(self());
  }
  queue.async([self = self(), outcome] { self->reportStart(outcome); });
}

UDPConnection::State UDPConnection::open() {
  const auto address = addressOf(host_, port_);
  if (!address) {
    return {Kind::waiting, NWError::noSuchRecord()};
  }
  if (OwnSockets::shared().servesAt(*address)) {
    return {Kind::failed, NWError::ownAddress()};
  }
  if (const auto error = openMakingRoom(address->family())) {
    return {Kind::failed, NWError::from(error)};
  }
  if (const auto error = socket_.connect(*address)) {
    socket_.close();
    return {Kind::waiting, NWError::from(error)};
  }
  return {Kind::ready, std::nullopt};
}

/// Opens the socket, if need be at the cost of the connection that has been idle longest.
std::error_code UDPConnection::openMakingRoom(sa_family_t family) {
  const auto error = socket_.open(family);
  const bool lacksDescriptors =
      error == std::errc::too_many_files_open || error == std::errc::too_many_files_open_in_system;
  const bool hasRoom = lacksDescriptors && OpenConnections::shared().cancelIdleLongest();
  return hasRoom ? socket_.open(family) : error;
}

void UDPConnection::reportStart(const State& outcome) {
  report({Kind::setup, std::nullopt});
  report({Kind::preparing, std::nullopt});
  report(outcome);
  deliverReceiveErrors();
  if (outcome.kind == Kind::failed) {
    const auto letGoOf = std::exchange(stateUpdateHandler, nullptr);
  }
}

void UDPConnection::report(const State& state) {
  if (isCancelled_) {
    return;
  }
  state_ = state;
  if (stateUpdateHandler) {
    runGuarded([this, &state] { stateUpdateHandler(state); });
  }
}

void UDPConnection::cancel() {
  if (isCancelled_) {
    return;
  }
  isCancelled_ = true;
  DispatchQueue::global().async([self = self()] { self->reportCancelled(); });
  socket_.close();
  if (const auto place = std::exchange(place_, std::nullopt)) {
    OpenConnections::shared().remove(*place);
  }
  // Let go of only now, with everything in its final state: they may own whoever calls here again.
  const auto waiting = std::exchange(waiting_, {});
  const auto receives = std::exchange(receives_, {});
}

void UDPConnection::reportCancelled() {
  state_ = {Kind::cancelled, std::nullopt};
  const auto handler = std::exchange(stateUpdateHandler, nullptr);
  if (handler) {
    runGuarded([this, &handler] { handler(state_); });
  }
}

void UDPConnection::send(Data content, SendCompletion completion) {
  if (isCancelled_) {
    finish(std::move(completion), NWError::posix(ECANCELED));
    return;
  }
  if (!socket_.isOpen()) {
    finish(std::move(completion), state_.error.value_or(NWError::posix(ENOTCONN)));
    return;
  }
  touch();
  const auto error = waiting_.empty() ? trySend(content) : std::error_code();
  if (!waiting_.empty() || UDPSocket::wouldBlock(error)) {
    waiting_.push_back({std::move(content), std::move(completion)});
    watchAsNeeded();
  } else {
    finish(std::move(completion), errorFrom(error));
  }
}

std::optional<NWPath> UDPConnection::currentPath() const {
  return socket_.isOpen() ? std::optional(NWPath::from(socket_.address())) : std::nullopt;
}

void UDPConnection::describe(std::string& out) const {
  out.append("[").append(host_.text()).append(":");
  port_.describe(out);
  out.append(" udp]");
}

/// The error of a send may be of an earlier datagram: the kernel hands out what the network has
/// answered with the next call, which then has sent nothing. A refusal is always of an earlier one;
/// another error is, unless a second attempt fails in the same way. What is of an earlier one is
/// kept for a receive, and the second attempt decides about this datagram. When that is refused
/// too, some more of the earlier ones were, and this one is lost as they are.
///
/// On a link, a refusal that comes while sends are unreported is of one of those. Their like would
/// be refused as well, so the rest of them is counted as lost without an attempt.
std::error_code UDPConnection::trySend(const Data& content) {
  if (isPeerGone_) {
    return {};
  }
  const auto error = socket_.send(content);
  if (!error || UDPSocket::wouldBlock(error)) {
    return error;
  }
  isPeerGone_ = isLink && isRefusal(error) && !sent_.empty();
  if (isPeerGone_) {
    return {};
  }
  const auto again = socket_.send(content);
  if (isRefusal(error) || error != again) {
    keepReceiveError(error);
  }
  return isRefusal(again) ? std::error_code() : again;
}

void UDPConnection::keepReceiveError(std::error_code error) {
  if (isLink || receiveErrors_.size() >= kMaxReceiveErrors) {
    return;
  }
  receiveErrors_.push_back(NWError::from(error));
  if (!receives_.empty()) {
    deliverLater();
  }
}

void UDPConnection::touch() {
  if (place_) {
    OpenConnections::shared().touch(*place_);
  }
}

void UDPConnection::sendWaiting() {
  while (!waiting_.empty()) {
    const auto error = trySend(waiting_.front().content);
    if (UDPSocket::wouldBlock(error)) {
      break;
    }
    finish(std::move(waiting_.front().completion), errorFrom(error));
    waiting_.pop_front();
  }
  watchAsNeeded();
}

void UDPConnection::finish(SendCompletion completion, std::optional<NWError> error) {
  sent_.push_back({std::move(completion), error});
  deliverLater();
}

void UDPConnection::receiveMessage(ReceiveCompletion completion) {
  if (isCancelled_) {
    return;
  }
  receives_.push_back(std::move(completion));
  if (state_.error || !receiveErrors_.empty()) {
    deliverLater();
  } else {
    watchAsNeeded();
  }
}

void UDPConnection::socketIsReady(bool canRead, bool canWrite) {
  const auto alive = self();
  if (canWrite && !waiting_.empty()) {
    sendWaiting();
  }
  if (canRead && !receives_.empty()) {
    receiveOne();
  } else if (canRead) {
    watchAsNeeded();  // nobody has asked for what has come
  }
}

/// Watching is ended late, by an event that nobody wants: the usual connection is cancelled before
/// that.
void UDPConnection::watchAsNeeded() {
  if (state_.kind != Kind::ready || isCancelled_) {
    return;
  }
  if (const auto error = socket_.watch(*this, {!receives_.empty(), !waiting_.empty()})) {
    const auto failure = NWError::from(error);
    receiveErrors_.insert(receiveErrors_.end(), receives_.size(), failure);
    for (auto& send : std::exchange(waiting_, {})) {
      finish(std::move(send.completion), failure);
    }
    deliverLater();
  }
}

void UDPConnection::receiveOne() {
  static std::array<std::uint8_t, kBufferSize> buffer;
  const auto length = socket_.receive(buffer);
  if (length) {
    touch();
    const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(std::min(*length, buffer.size()));
    completeOldestReceive(Data(buffer.begin(), end), *length <= buffer.size(), std::nullopt);
  } else if (!isLink && !UDPSocket::wouldBlock(length.error())) {
    touch();
    completeOldestReceive(std::nullopt, false, NWError::from(length.error()));
  }
}

void UDPConnection::completeOldestReceive(std::optional<Data> content, bool isComplete,
                                          std::optional<NWError> error) {
  const auto completion = std::move(receives_.front());
  receives_.pop_front();
  if (completion) {
    runGuarded([&] { completion(std::move(content), isComplete, error); });
  }
}

void UDPConnection::deliverLater() {
  if (!std::exchange(isDeliveryDue_, true)) {
    DispatchQueue::global().async([self = self()] { self->deliver(); });
  }
}

void UDPConnection::deliver() {
  isDeliveryDue_ = false;
  isPeerGone_ = false;
  if (isLink && socket_.isOpen()) {
    socket_.dropRefusal();
  }
  for (const auto& [completion, error] : std::exchange(sent_, {})) {
    if (completion) {
      runGuarded([&send = completion, &outcome = error] { send(outcome); });
    }
  }
  deliverReceiveErrors();
}

/// Those armed meanwhile have to wait for their turn.
void UDPConnection::deliverReceiveErrors() {
  for (auto armed = receives_.size(); armed > 0 && !receives_.empty(); --armed) {
    const auto error = takeReceiveError();
    if (!error) {
      watchAsNeeded();
      return;
    }
    completeOldestReceive(std::nullopt, false, error);
  }
}

std::optional<NWError> UDPConnection::takeReceiveError() {
  if (state_.error || receiveErrors_.empty()) {
    return state_.error;
  }
  const auto error = receiveErrors_.front();
  receiveErrors_.erase(receiveErrors_.begin());
  return error;
}

}  // namespace platform
