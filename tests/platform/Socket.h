#pragma once

#include <sys/socket.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/base/FileDescriptor.h"
#include "platform/udp/SocketAddress.h"

namespace platform::test {

inline SocketAddress address(const std::string& host, std::uint16_t port = 0) {
  return SocketAddress::parse(host, port).value();
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

  void bind(const SocketAddress& to) const {
    require(::bind(descriptor(), to.data(), to.size()) == 0);
  }
  void connect(const SocketAddress& to) const {
    require(::connect(descriptor(), to.data(), to.size()) == 0);
  }
  void set(int level, int option, int value) const {
    require(::setsockopt(descriptor(), level, option, &value, sizeof value) == 0);
  }
  void bindToDevice(const std::string& name) const {
    const auto size = static_cast<socklen_t>(name.size());
    require(::setsockopt(descriptor(), SOL_SOCKET, SO_BINDTODEVICE, name.data(), size) == 0);
  }
  void send(const std::string& octets, const SocketAddress& to) const {
    send(octets, to.data(), to.size());
  }
  void send(const std::string& octets, const sockaddr* to = nullptr, socklen_t size = 0) const {
    const auto sent = ::sendto(descriptor(), octets.data(), octets.size(), MSG_NOSIGNAL, to, size);
    require(sent == static_cast<ssize_t>(octets.size()));
  }

 protected:
  static void require(bool isDone) {
    if (!isDone) {
      throw std::runtime_error("a test socket cannot be used");
    }
  }

 private:
  template <class Call>
  SocketAddress side(const Call& call) const {
    SocketAddress address;
    socklen_t size = SocketAddress::kMaxSize;
    require(call(descriptor(), address.data(), &size) == 0);
    return address;
  }

  FileDescriptor descriptor_;
};

}  // namespace platform::test
