#include "tests/support/FakeServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "platform/dispatch/DispatchQueue.h"

namespace quillet::test {

namespace {

struct BoundSocket {
  int descriptor;
  std::uint16_t port;
};

BoundSocket bindSocket(const char* address, std::int64_t port = 0) {
  const int descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in name{};
  name.sin_family = AF_INET;
  name.sin_port = htons(static_cast<std::uint16_t>(port));
  ::inet_pton(AF_INET, address, &name.sin_addr);
  socklen_t length = sizeof name;
  auto* generic = reinterpret_cast<sockaddr*>(&name);
  if (descriptor < 0 || ::bind(descriptor, generic, length) != 0 ||
      ::getsockname(descriptor, generic, &length) != 0) {
    throw std::runtime_error("cannot bind a test server");
  }
  return {descriptor, ntohs(name.sin_port)};
}

}  // namespace

FakeServer::FakeServer(Answer answer, const char* address, std::int64_t port)
    : address_(address), answer_(std::move(answer)) {
  const auto bound = bindSocket(address, port);
  socket_ = bound.descriptor;
  port_ = bound.port;
  thread_ = std::thread([this] { serve(); });
}

FakeServer::~FakeServer() {
  ::shutdown(socket_, SHUT_RDWR);  // wakes the thread out of recvfrom
  thread_.join();
  ::close(socket_);
}

std::vector<platform::Data> FakeServer::received() const {
  const std::lock_guard lock(mutex_);
  return received_;
}

void FakeServer::setAnswer(Answer answer) {
  const std::lock_guard lock(mutex_);
  answer_ = std::move(answer);
}

void FakeServer::serve() {
  std::vector<std::uint8_t> buffer(65536);
  while (true) {
    sockaddr_in client{};
    socklen_t length = sizeof client;
    const auto size = ::recvfrom(socket_, buffer.data(), buffer.size(), 0,
                                 reinterpret_cast<sockaddr*>(&client), &length);
    if (size < 0 || length == 0) {
      return;
    }
    const platform::Data datagram(buffer.begin(), buffer.begin() + size);
    Answer answer;
    {
      const std::lock_guard lock(mutex_);
      received_.push_back(datagram);
      answer = answer_;
    }
    platform::DispatchQueue::global().async([] {});  // whoever waits for it looks again
    for (const auto& bytes : answer(datagram)) {
      ::sendto(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&client),
               length);
    }
  }
}

std::vector<platform::Data> stayQuiet(const platform::Data& /*received*/) { return {}; }

std::int64_t closedPort() {
  const auto bound = bindSocket("127.0.0.1");
  ::close(bound.descriptor);
  return bound.port;
}

}  // namespace quillet::test
