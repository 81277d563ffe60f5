#pragma once

#include <sys/socket.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/Data.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/network/SocketAddress.h"

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

  explicit UDPSocket(const std::string& host = "127.0.0.1", std::uint16_t port = 0) {
    const auto wanted = SocketAddress::parse(host, port).value();
    socket_ =
        FileDescriptor(::socket(wanted.family(), SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    address_ = wanted;
    socklen_t size = SocketAddress::kMaxSize;
    if (::bind(socket_.get(), wanted.data(), wanted.size()) != 0 ||
        ::getsockname(socket_.get(), address_.data(), &size) != 0) {
      throw std::runtime_error("cannot bind a test socket");
    }
  }

  [[nodiscard]] const SocketAddress& address() const { return address_; }
  [[nodiscard]] std::uint16_t port() const { return address_.port(); }

  /// From now on only what comes from `peer` is received.
  void connect(const SocketAddress& peer) const {
    if (::connect(socket_.get(), peer.data(), peer.size()) != 0) {
      throw std::runtime_error("cannot connect a test socket");
    }
  }

  void send(const std::string& text, const SocketAddress& to) const {
    const auto size = ::sendto(socket_.get(), text.data(), text.size(), 0, to.data(), to.size());
    if (size != static_cast<ssize_t>(text.size())) {
      throw std::runtime_error("cannot send from a test socket");
    }
  }

  /// The next datagram, if there is one.
  [[nodiscard]] std::optional<Received> receive() const {
    std::string text(65536, 0);
    Received received;
    received.from = address_;
    socklen_t size = SocketAddress::kMaxSize;
    const auto length =
        ::recvfrom(socket_.get(), text.data(), text.size(), 0, received.from.data(), &size);
    if (length < 0) {
      return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(length));
    received.text = std::move(text);
    return received;
  }

  /// The texts of all datagrams that are there.
  [[nodiscard]] std::vector<std::string> receiveAll() const {
    std::vector<std::string> texts;
    while (auto received = receive()) {
      texts.push_back(std::move(received->text));
    }
    return texts;
  }

 private:
  FileDescriptor socket_;
  SocketAddress address_;
};

/// A UDP port on loopback that nobody listens on.
inline std::uint16_t unusedPort(const std::string& host = "127.0.0.1") {
  return UDPSocket(host).port();
}

}  // namespace platform::test
