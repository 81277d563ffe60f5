#pragma once

#include <sys/socket.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/FileDescriptor.h"
#include "platform/udp/SocketAddress.h"

namespace platform::test {

inline SocketAddress address(const std::string& host, std::uint16_t port = 0) {
  return SocketAddress::parse(host, port).value();
}

inline Data bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}
/// `message` after its length in two octets.
inline std::string framed(const std::string& message) {
  return std::string{static_cast<char>(message.size() >> 8), static_cast<char>(message.size())} +
         message;
}

/// The other side of what a test tests: a socket driven by hand. What it cannot do throws.
class Socket {
 public:
  Socket(sa_family_t family, int kind)
      : Socket(FileDescriptor(::socket(family, kind | SOCK_CLOEXEC, 0))) {}
  explicit Socket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

  [[nodiscard]] int descriptor() const { return descriptor_.get(); }
  [[nodiscard]] SocketAddress address() const { return side(::getsockname); }
  [[nodiscard]] SocketAddress peer() const { return side(::getpeername); }
  [[nodiscard]] std::uint16_t port() const { return address().port(); }
  void close() { descriptor_ = FileDescriptor(); }

  void bind(const SocketAddress& to) const { require(::bind(descriptor(), to.data(), to.size())); }
  void connect(const SocketAddress& to) const {
    require(::connect(descriptor(), to.data(), to.size()));
  }
  void set(int level, int option, const auto& value) const {
    require(::setsockopt(descriptor(), level, option, &value, sizeof value));
  }
  void send(const std::string& octets, const SocketAddress& to) const {
    send(octets, to.data(), to.size());
  }
  void send(const std::string& octets, const sockaddr* to = nullptr, socklen_t size = 0) const {
    require(::sendto(descriptor(), octets.data(), octets.size(), MSG_NOSIGNAL, to, size),
            static_cast<ssize_t>(octets.size()));
  }

 protected:
  static void require(ssize_t result, ssize_t expected = 0) {
    if (result != expected) {
      throw std::runtime_error("a test socket cannot be used");
    }
  }

 private:
  template <class Call>
  SocketAddress side(const Call& call) const {
    SocketAddress address;
    socklen_t size = SocketAddress::kMaxSize;
    require(call(descriptor(), address.data(), &size));
    return address;
  }

  FileDescriptor descriptor_;
};

/// A UDP socket on a port of the system's choice. On loopback a datagram has arrived when the call
/// that sends it returns. Once connected, only what comes from that address is received.
class UDPSocket : public Socket {
 public:
  struct Received {
    std::string text;
    SocketAddress from;
  };

  explicit UDPSocket(const std::string& host = "127.0.0.1", std::uint16_t port = 0)
      : Socket(test::address(host).family(), SOCK_DGRAM | SOCK_NONBLOCK) {
    set(SOL_SOCKET, SO_BROADCAST, 1);
    bind(test::address(host, port));
  }

  /// The next datagram, if there is one.
  [[nodiscard]] std::optional<Received> receive() const {
    Received received{std::string(65536, 0), {}};
    auto& [text, from] = received;
    socklen_t size = SocketAddress::kMaxSize;
    const auto length = ::recvfrom(descriptor(), text.data(), text.size(), 0, from.data(), &size);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return length < 0 ? std::nullopt : std::optional(received);
  }

  /// The texts of all datagrams that are there.
  [[nodiscard]] std::vector<std::string> receiveAll() const {
    std::vector<std::string> texts;
    while (const auto received = receive()) {
      texts.push_back(received->text);
    }
    return texts;
  }
};

/// A UDP port on loopback that nobody listens on.
inline std::uint16_t unusedPort(const std::string& host = "127.0.0.1") {
  return UDPSocket(host).port();
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
  void endSending() const { require(::shutdown(descriptor(), SHUT_WR)); }

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
    require(::listen(descriptor(), SOMAXCONN));
  }
  [[nodiscard]] TCPClient accept() const {
    return TCPClient(FileDescriptor(::accept(descriptor(), nullptr, nullptr)));
  }
};

}  // namespace platform::test
