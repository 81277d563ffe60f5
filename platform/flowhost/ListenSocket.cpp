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
  const auto noRoom = std::make_error_code(std::errc::no_buffer_space);
  if (waiting_.size() >= kMaxWaiting) {
    write->datagramDone(noRoom);
    return;
  }
  waiting_.send(
      [this, path, datagram = std::move(datagram)] { return socket_.send(path, datagram); },
      [write](std::error_code error) { write->datagramDone(error); });
  if (!waiting_.isEmpty() && watchAsNeeded()) {
    waiting_.fail(noRoom);
  }
}

}  // namespace platform
