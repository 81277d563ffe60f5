#include "platform/dispatch/MainLoop.h"

#include <algorithm>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/Deadlines.h"
#include "platform/dispatch/EventLoop.h"
#include "platform/log/LogSink.h"

namespace platform {

namespace {

using Nanoseconds = std::chrono::nanoseconds;

std::uint64_t uptime() { return Clock::system().uptimeNanoseconds(); }

}  // namespace

struct MainLoop::State {
  EventLoop loop;
  Deadlines deadlines;
};

// Never destroyed: sockets and timers may outlive every other static object.
MainLoop& MainLoop::shared() {
  static auto& loop = *new MainLoop;
  return loop;
}

MainLoop::MainLoop() : state_(std::make_unique<State>()) {}
MainLoop::~MainLoop() = default;

void MainLoop::run() {
  auto& [loop, deadlines] = *state_;
  while (!loop.isStopping()) {
    const LogBatch batch;  // holds nothing yet when the loop waits
    loop.runEvents(deadlines.untilNext());
    if (!loop.isStopping()) {
      deadlines.runDue();
    }
    loop.runGiven();
  }
  loop.resume();
}

void MainLoop::stop() { state_->loop.stop(); }

void MainLoop::give(std::function<void()> work) {
  state_->loop.add(std::move(work), Activity::current());
}

bool MainLoop::runUntil(const std::function<bool()>& done, double seconds) {
  auto& [loop, deadlines] = *state_;
  const auto deadline = uptime() + static_cast<std::uint64_t>(seconds * 1e9);
  while (!done()) {
    const auto time = uptime();
    if (time >= deadline) {
      return false;
    }
    const LogBatch batch;
    if (!loop.runOneGiven() && !deadlines.runDue()) {
      loop.runEvents(std::min(deadlines.untilNext(), Nanoseconds(deadline - time)));
    }
  }
  return true;
}

void MainLoop::runReady() {
  auto& [loop, deadlines] = *state_;
  const LogBatch batch;
  while (loop.runOneGiven() || loop.runEvents(Nanoseconds(0)) || deadlines.runDue()) {
  }
}

std::uint64_t MainLoop::iteration() const { return state_->loop.iteration(); }

Deadlines& MainLoop::deadlines() { return state_->deadlines; }

SocketEvents& MainLoop::socketEvents() { return state_->loop.socketEvents(); }

}  // namespace platform
