#include "platform/network/UDPConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/dispatch/RunGuarded.h"
#include "platform/network/ConnectSocket.h"

namespace platform {

namespace {

using Kind = NWConnection::State::Kind;

// Larger than any datagram; one for all connections of the loop.
constexpr std::size_t kBufferSize = 64UL * 1024;

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
  sends_.isLink = isLink;
  const State outcome = connectSocket(socket_, host_, port_);
  if (!isLink && outcome.kind != Kind::failed) {
    OpenConnections::shared().makeRoom();
    place_ = OpenConnections::shared().add(self());
  }
  queue.async([self = self(), outcome] { self->reportStart(outcome); });
}

void UDPConnection::reportStart(const State& outcome) {
  const ActivityScope scope(activity_);
  report({Kind::setup, std::nullopt});
  report({Kind::preparing, std::nullopt});
  report(outcome);
  deliverErrors();
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
  sends_.sendCollected();
  socket_.close();
  if (const auto place = std::exchange(place_, std::nullopt)) {
    OpenConnections::shared().remove(*place);
  }
  // Let go of only now, with everything in its final state: they may own whoever calls here again.
  const auto waiting = sends_.takeWaiting();
  const auto receives = receives_.disarm();
}

void UDPConnection::reportCancelled() {
  const ActivityScope scope(activity_);
  state_ = {Kind::cancelled, std::nullopt};
  const auto handler = std::exchange(stateUpdateHandler, nullptr);
  if (handler) {
    runGuarded([this, &handler] { handler(state_); });
  }
}

void UDPConnection::send(Data content, SendCompletion completion) {
  if (isCancelled_) {
    sends_.end(std::move(completion), NWError::posix(ECANCELED));
  } else if (!socket_.isOpen()) {
    sends_.end(std::move(completion), state_.error.value_or(NWError::posix(ENOTCONN)));
  } else {
    touch();
    sends_.send(std::move(content), std::move(completion));
  }
  afterSending();
}

void UDPConnection::afterSending() {
  if (sends_.isWaiting()) {
    watchAsNeeded();
  }
  if (sends_.hasEnded() || receives_.canComplete()) {
    deliverLater();
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

void UDPConnection::touch() {
  if (place_) {
    OpenConnections::shared().touch(*place_);
  }
}

void UDPConnection::receiveMessage(ReceiveCompletion completion) {
  if (isCancelled_) {
    return;
  }
  receives_.arm(std::move(completion));
  if (state_.error || receives_.canComplete()) {
    deliverLater();
  } else {
    watchAsNeeded();
  }
}

void UDPConnection::socketIsReady(bool canRead, bool canWrite) {
  const auto alive = self();
  const ActivityScope scope(activity_);
  if (canWrite && sends_.isWaiting()) {
    sends_.flush();
    watchAsNeeded();
    afterSending();
  }
  if (canRead && receives_.isArmed()) {
    receiveOne();
  } else if (canRead) {
    watchAsNeeded();  // no receive is armed for what has come
  }
}

/// Watching is ended late, by an event that nobody wants: the usual connection is cancelled before
/// that.
void UDPConnection::watchAsNeeded() {
  if (state_.kind != Kind::ready || isCancelled_) {
    return;
  }
  if (const auto error = socket_.watch(*this, {receives_.isArmed(), sends_.isWaiting()})) {
    for (auto count = receives_.armedCount(); count > 0; --count) {
      receives_.hold({std::nullopt, NWError::from(error)});
    }
    sends_.failWaiting(error);
    deliverLater();
  }
}

void UDPConnection::receiveOne() {
  static std::array<std::uint8_t, kBufferSize> buffer;
  const auto length = socket_.receive(buffer);
  if (length) {
    touch();
    const auto content = DataView(buffer).first(std::min(*length, buffer.size()));
    receives_.complete({Data(content.begin(), content.end()), std::nullopt});
  } else if (!isLink && !UDPSocket::wouldBlock(length.error())) {
    touch();
    receives_.complete({std::nullopt, NWError::from(length.error())});
  }
}

void UDPConnection::deliverLater() {
  if (!std::exchange(isDeliveryDue_, true)) {
    DispatchQueue::global().async([self = self()] { self->deliver(); });
  }
}

void UDPConnection::deliver() {
  const ActivityScope scope(activity_);
  isDeliveryDue_ = false;
  sends_.sendCollected();
  if (sends_.isWaiting()) {
    watchAsNeeded();
  }
  sends_.report();
  deliverErrors();
}

/// Those armed meanwhile wait for the next delivery.
void UDPConnection::deliverErrors() {
  for (auto armed = receives_.armedCount(); armed > 0 && receives_.isArmed(); --armed) {
    if (state_.error) {
      receives_.complete({std::nullopt, state_.error});
    } else if (receives_.canComplete()) {
      receives_.completeWithHeld();
    } else {
      watchAsNeeded();
      return;
    }
  }
}

}  // namespace platform
