#include "platform/flowhost/ListenSocket.h"

#include <utility>

#include "platform/dispatch/MainLoop.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

// What the kernel holds for us while an iteration of the loop runs: some thousand queries. It may
// give less.
constexpr int kReceiveBufferSize = 4 * 1024 * 1024;

}  // namespace

tl::expected<std::shared_ptr<ListenSocket>, std::error_code> ListenSocket::bind(
    const SocketAddress& address, bool tellsInterface) {
  auto listen = std::make_shared<ListenSocket>();
  const UDPSocket::Binding binding{.receiveBuffer = kReceiveBufferSize,
                                   .tellsInterface = tellsInterface};
  if (const auto error = listen->socket_.bind(address, binding)) {
    return tl::unexpected(error);
  }
  return listen;
}

std::error_code ListenSocket::listen(std::weak_ptr<Reader> reader) {
  reader_ = std::move(reader);
  return watchAsNeeded();
}

void ListenSocket::close() {
  sendCollected();
  socket_.close();
  waiting_.fail(std::make_error_code(std::errc::operation_canceled));
}

std::error_code ListenSocket::watchAsNeeded() {
  return socket_.watch(*this, {true, !waiting_.isEmpty()});
}

void ListenSocket::socketIsReady(bool canRead, bool canWrite) {
  const auto alive = shared_from_this();
  if (canWrite && !waiting_.isEmpty()) {
    waiting_.flush();
    watchAsNeeded();
  }
  if (const auto reader = reader_.lock(); reader && canRead && isOpen()) {
    reader->datagramsArrived(*this);
  }
}

std::span<const ReceivedDatagram> ListenSocket::receive(DatagramSlots& slots) {
  const auto received = socket_.receive(slots);
  logNewError(received ? std::error_code() : received.error());
  return received.value_or(std::span<const ReceivedDatagram>());
}

void ListenSocket::logNewError(std::error_code error) {
  if (std::exchange(readError_, error) != error && error) {
    NSLog("FlowHost: cannot receive on ", address(), ": ", NWError::from(error));
  }
}

void ListenSocket::send(const DatagramPath& path, Data datagram,
                        const std::shared_ptr<PendingWrite>& write) {
  const auto iteration = MainLoop::shared().iteration();
  if (std::exchange(lastIteration_, iteration) != iteration || !waiting_.isEmpty()) {
    sendAlone({path, std::move(datagram)}, write);
    return;
  }
  collected_.push_back({path, std::move(datagram)});
  writes_.push_back(write);
  DispatchQueue::global().async([self = shared_from_this(), write] {
    self->sendCollected();
    write->report();
  });
  if (collected_.size() == UDPSocket::kMaxTogether) {
    sendCollected();
  }
}

void ListenSocket::sendAlone(UDPSocket::Answer answer, const std::shared_ptr<PendingWrite>& write) {
  const auto noRoom = std::make_error_code(std::errc::no_buffer_space);
  if (waiting_.size() >= kMaxWaiting) {
    write->datagramDone(noRoom);
    return;
  }
  waiting_.send(
      [this, answer = std::move(answer)] { return socket_.send(answer.path, answer.bytes); },
      [write](std::error_code error) { write->datagramDone(error); });
  if (!waiting_.isEmpty() && watchAsNeeded()) {
    waiting_.fail(noRoom);
  }
}

/// One that ends the sending of many is sent alone, which tells its error, or waits with those
/// after it.
void ListenSocket::sendCollected() {
  auto collected = std::exchange(collected_, {});
  const auto writes = std::exchange(writes_, {});
  for (std::size_t next = 0; next < collected.size(); ++next) {
    for (auto sent = sendTogether(std::span(collected).subspan(next)).count; sent > 0; --sent) {
      writes[next++]->count({});
    }
    if (next < collected.size()) {
      sendAlone(std::move(collected[next]), writes[next]);
    }
  }
}

UDPSocket::Sent ListenSocket::sendTogether(std::span<const UDPSocket::Answer> answers) {
  return waiting_.isEmpty() && answers.size() > 1 ? socket_.sendTogether(answers)
                                                  : UDPSocket::Sent{};
}

}  // namespace platform
