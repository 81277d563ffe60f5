#include "platform/flowhost/ListenSocket.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/base/WholeNumber.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

// What the kernel holds for us while a turn of the loop runs: some thousand queries. It may give
// less.
constexpr int kReceiveBufferSize = 4 * 1024 * 1024;

tl::unexpected<Error> failure(const NWHostEndpoint& endpoint, const std::string& reason) {
  return tl::unexpected(Error("cannot listen on " + description(endpoint) + ": " + reason));
}

tl::unexpected<Error> failure(const NWHostEndpoint& endpoint, std::error_code error) {
  return failure(endpoint, NWError::from(error).text());
}

std::optional<SocketAddress> parse(const NWHostEndpoint& endpoint) {
  const auto port = wholeNumber<std::uint16_t>(endpoint.port);
  return port ? SocketAddress::parse(endpoint.hostname, *port) : std::nullopt;
}

}  // namespace

NWHostEndpoint endpointFrom(const SocketAddress& address) {
  return {address.host(), std::to_string(address.port())};
}

tl::expected<std::shared_ptr<ListenSocket>, Error> ListenSocket::bind(
    const NWHostEndpoint& endpoint) {
  const auto address = parse(endpoint);
  if (!address) {
    return failure(endpoint, "not an IP address and a port");
  }
  auto listen = std::make_shared<ListenSocket>();
  if (const auto error = listen->socket_.bind(*address, {.receiveBuffer = kReceiveBufferSize})) {
    return failure(endpoint, error);
  }
  return listen;
}

std::optional<Error> ListenSocket::listen(std::weak_ptr<Reader> reader) {
  reader_ = std::move(reader);
  if (const auto error = watchAsNeeded()) {
    return failure(endpointFrom(address()), error).value();
  }
  return std::nullopt;
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
