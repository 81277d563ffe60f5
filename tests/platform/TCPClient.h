#pragma once

#include <cerrno>
#include <string>

#include "tests/platform/Socket.h"

namespace platform::test {

/// `message` after its length in two octets.
inline std::string framed(const std::string& message) {
  return std::string{static_cast<char>(message.size() >> 8), static_cast<char>(message.size())} +
         message;
}

/// A TCP connection, from either side.
class TCPClient : public Socket {
 public:
  using Socket::Socket;
  explicit TCPClient(const SocketAddress& to) : Socket(to.family(), SOCK_STREAM) { connect(to); }

  void query(const std::string& text, std::size_t times = 1) const {
    while (times-- > 0) {
      send(framed(text));
    }
  }
  void endSending() const { require(::shutdown(descriptor(), SHUT_WR) == 0); }

  /// All octets so far.
  const std::string& received() {
    std::string room(1 << 16, 0);
    for (ssize_t size = 1; size > 0;) {
      size = ::recv(descriptor(), room.data(), room.size(), MSG_DONTWAIT);
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
  std::string received_;
  bool isClosed_ = false;
};

/// A TCP socket that clients connect to, on loopback unless it is told otherwise.
struct TCPServer : Socket {
  explicit TCPServer(const SocketAddress& at = test::address("127.0.0.1"))
      : Socket(at.family(), SOCK_STREAM | SOCK_NONBLOCK) {
    bind(at);
    require(::listen(descriptor(), SOMAXCONN) == 0);
  }
  [[nodiscard]] TCPClient accept() const {
    return TCPClient(FileDescriptor(::accept(descriptor(), nullptr, nullptr)));
  }
};

}  // namespace platform::test
