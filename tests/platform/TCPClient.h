#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>

#include "platform/base/FileDescriptor.h"
#include "platform/udp/SocketAddress.h"

namespace platform::test {

/// `message` after its length in two octets.
inline std::string framed(const std::string& message) {
  return std::string{static_cast<char>(message.size() >> 8), static_cast<char>(message.size())} +
         message;
}

/// The address of a socket's one side.
template <class Call>
SocketAddress sideOf(const FileDescriptor& socket, const Call& call) {
  SocketAddress address;
  socklen_t size = SocketAddress::kMaxSize;
  call(socket.get(), address.data(), &size);
  return address;
}

/// A TCP connection driven by hand, from either side.
class TCPClient {
 public:
  explicit TCPClient(const SocketAddress& to)
      : socket_(::socket(to.family(), SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    require(::connect(socket_.get(), to.data(), to.size()) == 0);
  }
  explicit TCPClient(FileDescriptor accepted) : socket_(std::move(accepted)) {}

  [[nodiscard]] SocketAddress address() const { return sideOf(socket_, ::getsockname); }
  [[nodiscard]] SocketAddress peer() const { return sideOf(socket_, ::getpeername); }

  void send(const std::string& octets) const {
    const auto size = ::sendto(socket_.get(), octets.data(), octets.size(), MSG_NOSIGNAL, {}, 0);
    require(size == static_cast<ssize_t>(octets.size()));
  }
  void query(const std::string& text) const { send(framed(text)); }
  void endSending() const { require(::shutdown(socket_.get(), SHUT_WR) == 0); }

  /// All octets so far.
  const std::string& received() {
    std::string room(1 << 16, 0);
    for (ssize_t size = 1; size > 0;) {
      size = ::recv(socket_.get(), room.data(), room.size(), MSG_DONTWAIT);
      received_.append(room, 0, size > 0 ? static_cast<std::size_t>(size) : 0);
      isClosed_ = isClosed_ || size == 0 || (size < 0 && errno == ECONNRESET);
    }
    return received_;
  }
  /// Whether the other side has closed the connection.
  bool isClosed() {
    received();
    return isClosed_;
  }

 private:
  static void require(bool isDone) {
    if (!isDone) {
      throw std::runtime_error("a test socket cannot be used");
    }
  }

  FileDescriptor socket_;
  std::string received_;
  bool isClosed_ = false;
};

/// A TCP socket on loopback, at a port of the system's choice, that clients connect to.
struct TCPServer {
  TCPServer() : socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    ::listen(socket.get(), SOMAXCONN);
  }
  [[nodiscard]] std::uint16_t port() const { return sideOf(socket, ::getsockname).port(); }
  [[nodiscard]] TCPClient accept() const {
    return TCPClient(FileDescriptor(::accept(socket.get(), nullptr, nullptr)));
  }

  FileDescriptor socket;
};

}  // namespace platform::test
