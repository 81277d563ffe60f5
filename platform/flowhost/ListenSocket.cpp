#include "platform/flowhost/ListenSocket.h"

#include <utility>

#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

// What the kernel holds for us while an iteration of the loop runs: some thousand queries. It may
// give less.
constexpr int kReceiveBufferSize = 4 * 1024 * 1024;

}  // namespace

NWHostEndpoint endpointFrom(const SocketAddress& address) {
  return {address.host(), std::to_string(address.port())};
}

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
  socket_.close();
  for (const auto& answer : std::exchange(waiting_, {})) {
    answer.write->datagramDone(std::make_error_code(std::errc::operation_canceled));
  }
}

std::error_code ListenSocket::watchAsNeeded() {
  return socket_.watch(*this, {true, !waiting_.empty()});
}

void ListenSocket::socketIsReady(bool canRead, bool canWrite) {
  const auto alive = shared_from_this();
  if (canWrite && !waiting_.empty()) {
    sendWaiting();
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
  const auto error = waiting_.empty() ? socket_.send(path, datagram) : std::error_code();
  if (waiting_.empty() && !UDPSocket::wouldBlock(error)) {
    write->datagramDone(error);
  } else if (!wait({path, std::move(datagram), write})) {
    write->datagramDone(std::make_error_code(std::errc::no_buffer_space));
  }
}

bool ListenSocket::wait(Waiting answer) {
  if (!isOpen() || waiting_.size() >= kMaxWaiting) {
    return false;
  }
  waiting_.push_back(std::move(answer));
  if (watchAsNeeded()) {
    waiting_.pop_back();
    return false;
  }
  return true;
}

void ListenSocket::sendWaiting() {
  while (!waiting_.empty()) {
    const auto error = socket_.send(waiting_.front().path, waiting_.front().datagram);
    if (UDPSocket::wouldBlock(error)) {
      return;
    }
    const auto write = std::move(waiting_.front().write);
    waiting_.pop_front();
    write->datagramDone(error);
  }
  watchAsNeeded();
}

}  // namespace platform
