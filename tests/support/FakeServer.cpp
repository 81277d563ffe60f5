#include "tests/support/FakeServer.h"

#include <poll.h>

#include "platform/dispatch/DispatchQueue.h"

namespace quillet::test {

using platform::test::bytes;

FakeServer::FakeServer(Answer answer, const char* address, std::int64_t port)
    : address_(address),
      socket_(address_, static_cast<std::uint16_t>(port)),
      answer_(std::move(answer)),
      thread_([this] { serve(); }) {}

FakeServer::~FakeServer() {
  isStopping_ = true;
  ::shutdown(socket_.descriptor(), SHUT_RD);  // wakes the thread
  thread_.join();
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
  pollfd readable{socket_.descriptor(), POLLIN, 0};
  while (::poll(&readable, 1, -1) >= 0 && !isStopping_) {
    const auto datagram = socket_.receive();
    if (!datagram) {
      continue;
    }
    Answer answer;
    {
      const std::lock_guard lock(mutex_);
      received_.push_back(bytes(datagram->text));
      answer = answer_;
    }
    platform::DispatchQueue::global().async([] {});  // whoever waits for it looks again
    for (const auto& reply : answer(bytes(datagram->text))) {
      socket_.send(std::string(platform::textOf(reply)), datagram->from);
    }
  }
}

std::vector<platform::Data> stayQuiet(const platform::Data& /*received*/) { return {}; }

std::int64_t closedPort() { return platform::test::unusedPort(); }

}  // namespace quillet::test
