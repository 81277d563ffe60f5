#include "platform/tcp/TCPListener.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

// How long nobody is accepted when the system has no room for a further connection.
constexpr double kPauseSeconds = 1;

/// The address can be bound again at once after a server that was there; the IPv6 wildcard address
/// leaves IPv4's to others.
std::error_code prepare(int socket, const SocketAddress& address) {
  const auto error = setOption(socket, SOL_SOCKET, SO_REUSEADDR, 1);
  return !error && address.isIPv6() ? setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 1) : error;
}

/// Others concern one connection that was gone before it was accepted (accept(2)).
bool isLackOfRoom(int code) {
  return code == EMFILE || code == ENFILE || code == ENOBUFS || code == ENOMEM;
}

}  // namespace

tl::expected<std::shared_ptr<TCPListener>, std::error_code> TCPListener::bind(
    const SocketAddress& address) {
  FileDescriptor socket(::socket(address.family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket.isOpen() || prepare(socket.get(), address) ||
      ::bind(socket.get(), address.data(), address.size()) != 0 ||
      ::listen(socket.get(), SOMAXCONN) != 0) {
    return tl::unexpected(lastError());
  }
  const auto listener = std::make_shared<TCPListener>();
  listener->socket_.open(std::move(socket));
  listener->address_ = address;
  listener->own_.emplace(address, OwnSockets::Use::serving, OwnSockets::tcp());
  return listener;
}

std::error_code TCPListener::listen(std::weak_ptr<Owner> owner) {
  owner_ = std::move(owner);
  return socket_.watch(*this, {true, false});
}

void TCPListener::close() {
  pausing_.invalidate();
  socket_.close();
  own_.reset();
}

void TCPListener::socketIsReady(bool /*canRead*/, bool /*canWrite*/) {
  const auto alive = shared_from_this();
  const auto owner = owner_.lock();
  SocketAddress client;
  socklen_t size = SocketAddress::kMaxSize;
  FileDescriptor socket(
      ::accept4(socket_.get(), client.data(), &size, SOCK_NONBLOCK | SOCK_CLOEXEC));
  const auto error = socket.isOpen() ? std::error_code() : lastError();
  if (isLackOfRoom(error.value())) {
    pause();
  }
  if (owner && socket.isOpen()) {
    owner->accepted(std::move(socket), client);
  } else if (owner && isLackOfRoom(error.value())) {
    owner->cannotAccept(*this, error);
  }
}

// Where it cannot be watched again it is tried again.
void TCPListener::pause() {
  socket_.watch(*this, {});
  pausing_ = Timer::scheduled(kPauseSeconds, false, [this] {
    if (socket_.watch(*this, {true, false})) {
      pause();
    }
  });
}

}  // namespace platform
