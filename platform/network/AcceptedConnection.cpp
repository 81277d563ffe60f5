#include "platform/network/AcceptedConnection.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <utility>

#include "platform/dispatch/RunGuarded.h"
#include "platform/log/NSLog.h"

namespace platform {

namespace {

using Kind = NWConnection::State::Kind;

std::uint64_t nextNumber() {
  static std::atomic<std::uint64_t> count{0};
  return ++count;
}

}  // namespace

AcceptedConnection* Associations::find(const SocketAddress& client) const {
  const auto found = std::find_if(open.begin(), open.end(), [&](const AcceptedConnection* one) {
    return one->client() == client;
  });
  return found == open.end() ? nullptr : *found;
}

void Associations::runFirst(const DispatchQueue& queue, std::function<void()> work) {
  ++workDue;
  queue.async([self = shared_from_this(), work = std::move(work)] {
    --self->workDue;
    work();
  });
}

AcceptedConnection::AcceptedConnection(std::shared_ptr<Associations> associations,
                                       const SocketAddress& client)
    : associations_(std::move(associations)), path_{client, {}}, number_(nextNumber()) {
  associations_->open.push_back(this);
}

AcceptedConnection::~AcceptedConnection() {
  forget();
  for (const auto& received : receives_.held()) {
    if (received.content) {
      NSLog("NWListener: ", *this, " is let go of, dropped ", *received.content);
    }
  }
}

void AcceptedConnection::forget() { std::erase(associations_->open, this); }

/// The same, unless this is gone by then.
void AcceptedConnection::onQueue(void (AcceptedConnection::*work)()) {
  associations_->runFirst(*queue_, [weak = weak_from_this(), work] {
    if (const auto self = std::static_pointer_cast<AcceptedConnection>(weak.lock())) {
      (self.get()->*work)();
    }
  });
}

void AcceptedConnection::start(DispatchQueue queue) {
  if (queue_ || isCancelled_) {
    return;
  }
  queue_ = std::move(queue);
  onQueue(&AcceptedConnection::reportStart);
}

void AcceptedConnection::reportStart() {
  for (const auto kind : {Kind::setup, Kind::preparing, Kind::ready}) {
    if (!isCancelled_) {
      report(kind);
    }
  }
  deliver();
}

void AcceptedConnection::report(Kind kind) {
  state_ = {kind, std::nullopt};
  if (const auto handler = stateUpdateHandler) {
    runGuarded([&] { handler(state_); });
  }
}

void AcceptedConnection::cancel() {
  if (std::exchange(isCancelled_, true)) {
    return;
  }
  forget();
  if (queue_) {
    onQueue(&AcceptedConnection::reportCancelled);
  }
  const auto receives = receives_.disarm();  // let go of last
}

void AcceptedConnection::reportCancelled() { report(Kind::cancelled); }

/// What the network answered to an earlier datagram is no error of this one.
std::optional<NWError> AcceptedConnection::sendNow(DataView content) {
  if (isCancelled_ || !queue_) {
    return NWError::posix(isCancelled_ ? ECANCELED : ENOTCONN);
  }
  auto& socket = associations_->socket;
  auto error = socket.send(path_, content);
  if (error && !UDPSocket::wouldBlock(error)) {
    error = socket.send(path_, content);
  }
  return NWError::ifAny(error);
}

void AcceptedConnection::send(Data content, SendCompletion completion) {
  const auto error = sendNow(content);
  if (completion && queue_) {
    associations_->runFirst(*queue_,
                            [completion = std::move(completion), error] { completion(error); });
  } else if (completion) {
    completion(error);
  }
}

void AcceptedConnection::receiveMessage(ReceiveCompletion completion) {
  if (isCancelled_) {
    return;
  }
  receives_.arm(std::move(completion));
  if (receives_.canComplete() && !isDelivering_ && state_.kind == Kind::ready) {
    onQueue(&AcceptedConnection::deliver);
  }
}

void AcceptedConnection::arrived(const ReceivedDatagram& datagram) {
  const auto& bytes = datagram.bytes;
  path_ = datagram.path;
  if (receives_.held().size() >= kMaxHeld) {
    NSLog("NWListener: ", *this, " is not read, dropped ", bytes);
    return;
  }
  receives_.hold({Data(bytes.begin(), bytes.end()), std::nullopt});
  deliver();
}

void AcceptedConnection::refused(std::error_code error) {
  if (receives_.held().size() < kMaxHeld) {
    receives_.hold({std::nullopt, NWError::from(error)});
    deliver();
  }
}

/// Completes what is armed with what is there. A completion may arm the next receive.
void AcceptedConnection::deliver() {
  if (isDelivering_ || state_.kind != Kind::ready) {
    return;
  }
  const auto alive = shared_from_this();
  isDelivering_ = true;
  while (receives_.canComplete()) {
    receives_.completeWithHeld();
  }
  isDelivering_ = false;
}

std::optional<NWPath> AcceptedConnection::currentPath() const {
  return NWPath::from(path_.destination);
}

/// An IPv6 address and its port are parted by a full stop, as the framework prints them.
void AcceptedConnection::describe(std::string& out) const {
  const auto plain = path_.client.unmapped();
  out.append("[C").append(std::to_string(number_)).append(" ").append(plain.host());
  out.append(plain.isIPv6() ? "." : ":").append(std::to_string(plain.port())).append(" udp]");
}

}  // namespace platform
