#include "platform/flowhost/ListenSocket.h"

#include <array>
#include <cerrno>
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

tl::unexpected<Error> failure(const NWHostEndpoint& endpoint, int error) {
  return failure(endpoint, NWError::posix(error).text());
}

std::optional<SocketAddress> parse(const NWHostEndpoint& endpoint) {
  const auto port = wholeNumber<std::uint16_t>(endpoint.port);
  return port ? SocketAddress::parse(endpoint.hostname, *port) : std::nullopt;
}

void enlargeReceiveBuffer(int socket) {
  const int size = kReceiveBufferSize;
  // The first is for privileged processes and goes beyond the system's limit.
  if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0) {
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  }
}

// So that the IPv4 and the IPv6 wildcard address can be bound to one port, side by side.
bool limitToIPv6(int socket) {
  const int on = 1;
  return ::setsockopt(socket, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on) == 0;
}

bool prepare(int socket, const SocketAddress& address) {
  enlargeReceiveBuffer(socket);
  return (!address.isIPv6() || limitToIPv6(socket)) &&
         (!address.isWildcard() || PacketInfo::request(socket, address.isIPv6())) &&
         ::bind(socket, address.data(), address.size()) == 0;
}

SocketAddress boundAddress(int socket, SocketAddress address) {
  socklen_t size = SocketAddress::kMaxSize;
  ::getsockname(socket, address.data(), &size);
  return address;
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
  FileDescriptor socket(::socket(address->family(), SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket.isOpen() || !prepare(socket.get(), *address)) {
    return failure(endpoint, errno);
  }
  const auto bound = boundAddress(socket.get(), *address);
  return std::make_shared<ListenSocket>(std::move(socket), bound);
}

ListenSocket::ListenSocket(FileDescriptor socket, const SocketAddress& address)
    : socket_(std::move(socket)), address_(address), served_(OwnSockets::shared().serve(address)) {}

std::optional<Error> ListenSocket::listen(std::weak_ptr<Reader> reader) {
  reader_ = std::move(reader);
  if (const auto error = watchAsNeeded()) {
    return failure(endpointFrom(address_), error.value()).value();
  }
  return std::nullopt;
}

void ListenSocket::close() {
  socket_.close();
  served_.reset();
  for (const auto& answer : std::exchange(waiting_, {})) {
    answer.completion(ECANCELED);
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
  const auto received = slots.receive(socket_.get(), address_);
  logNewError(received ? std::error_code() : received.error());
  return received.value_or(std::span<const ReceivedDatagram>());
}

void ListenSocket::logNewError(std::error_code error) {
  if (std::exchange(readError_, error) != error && error) {
    NSLog("FlowHost: cannot receive on ", address_, ": ", NWError::posix(error.value()));
  }
}

int ListenSocket::sendNow(const FlowPath& path, DataView datagram) {
  auto client = path.client;
  iovec range{const_cast<std::uint8_t*>(datagram.data()), datagram.size()};
  msghdr message{};
  message.msg_name = client.data();
  message.msg_namelen = client.size();
  message.msg_iov = &range;
  message.msg_iovlen = 1;
  PacketInfo source;
  if (address_.isWildcard()) {
    source.sendFrom(message, path.asked);
  }
  while (::sendmsg(socket_.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int ListenSocket::send(const FlowPath& path, DataView datagram) {
  return waiting_.empty() ? sendNow(path, datagram) : EAGAIN;
}

bool ListenSocket::sendLater(const FlowPath& path, Data datagram, SendCompletion completion) {
  if (!isOpen() || waiting_.size() >= kMaxWaiting) {
    return false;
  }
  waiting_.push_back({path, std::move(datagram), std::move(completion)});
  if (watchAsNeeded()) {
    waiting_.pop_back();
    return false;
  }
  return true;
}

void ListenSocket::sendWaiting() {
  while (!waiting_.empty()) {
    const int error = sendNow(waiting_.front().path, waiting_.front().datagram);
    if (error == EAGAIN) {
      return;
    }
    const auto completion = std::move(waiting_.front().completion);
    waiting_.pop_front();
    completion(error);
  }
  watchAsNeeded();
}

}  // namespace platform
