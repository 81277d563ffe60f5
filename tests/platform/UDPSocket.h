#pragma once

#include <sys/socket.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/FileDescriptor.h"
#include "platform/udp/SocketAddress.h"

namespace platform::test {

inline Data bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

/// The other side of what a test tests: a UDP socket driven by hand, on a port of the system's
/// choice. On loopback a datagram has arrived when the call that sends it returns.
class UDPSocket {
 public:
  struct Received {
    std::string text;
    SocketAddress from;
  };

  explicit UDPSocket(const std::string& host = "127.0.0.1", std::uint16_t port = 0)
      : address_(SocketAddress::parse(host, port).value()),
        socket_(::socket(address_.family(), SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    socklen_t size = SocketAddress::kMaxSize;
    const int on = 1;
    require(::setsockopt(socket_.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0);
    require(::bind(socket_.get(), address_.data(), address_.size()) == 0);
    require(::getsockname(socket_.get(), address_.data(), &size) == 0);
  }

  [[nodiscard]] std::uint16_t port() const { return address_.port(); }
  [[nodiscard]] int descriptor() const { return socket_.get(); }

  /// From now on only what comes from `peer` is received.
  void connect(const SocketAddress& peer) const {
    require(::connect(socket_.get(), peer.data(), peer.size()) == 0);
  }

  void send(const std::string& text, const SocketAddress& to) const {
    const auto size = ::sendto(socket_.get(), text.data(), text.size(), 0, to.data(), to.size());
    require(size == static_cast<ssize_t>(text.size()));
  }

  /// The next datagram, if there is one.
  [[nodiscard]] std::optional<Received> receive() const {
    Received received{std::string(65536, 0), address_};
    auto& [text, from] = received;
    socklen_t size = SocketAddress::kMaxSize;
    const auto length = ::recvfrom(socket_.get(), text.data(), text.size(), 0, from.data(), &size);
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

 private:
  static void require(bool isDone) {
    if (!isDone) {
      throw std::runtime_error("a test socket cannot be used");
    }
  }

  SocketAddress address_;
  FileDescriptor socket_;
};

/// A UDP port on loopback that nobody listens on.
inline std::uint16_t unusedPort(const std::string& host = "127.0.0.1") {
  return UDPSocket(host).port();
}

}  // namespace platform::test
