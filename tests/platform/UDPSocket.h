#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/base/Data.h"
#include "tests/platform/Socket.h"

namespace platform::test {

inline Data bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

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

}  // namespace platform::test
