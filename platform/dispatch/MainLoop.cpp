#include "platform/dispatch/MainLoop.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/Deadlines.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/dispatch/SocketEvents.h"
#include "platform/log/LogSink.h"

namespace platform {

namespace {

using Work = std::function<void()>;
using Nanoseconds = std::chrono::nanoseconds;

// How often one turn runs what its own work has given in turn. The stages of a query take six; work
// that gives itself again and again must not keep the sockets waiting.
constexpr int kMaxRoundsPerTurn = 16;

// How long a turn goes on with work that was given, nanoseconds. Signals are seen between turns.
constexpr std::uint64_t kMaxTurn = 10'000'000;

std::uint64_t uptime() { return Clock::system().uptimeNanoseconds(); }

}  // namespace

// Work given with `DispatchQueue::async` has a queue of its own: asio would ask the system for
// events between any two generations of it.
struct MainLoop::State {
  asio::io_context context{1};
  asio::executor_work_guard<asio::io_context::executor_type> staysOpen{context.get_executor()};
  std::atomic<bool> isStopping{false};
  SocketEvents socketEvents{context, isStopping};
  Deadlines deadlines{context};

  std::mutex mutex;
  std::deque<Work> given;  // guarded by mutex
  bool isWaiting = false;  // guarded by mutex: the loop's thread may be asleep

  /// Whether the loop has to be woken for it.
  bool add(Work work) {
    const std::lock_guard lock(mutex);
    given.push_back(std::move(work));
    return isWaiting && !context.get_executor().running_in_this_thread() &&
           std::exchange(isWaiting, false);
  }
  void wake() {
    asio::post(context, [] {});
  }

  /// False when there is work already.
  bool beginWaiting() {
    const std::lock_guard lock(mutex);
    isWaiting = given.empty();
    return isWaiting;
  }
  void endWaiting() {
    const std::lock_guard lock(mutex);
    isWaiting = false;
  }

  std::size_t givenCount() {
    const std::lock_guard lock(mutex);
    return given.size();
  }
  std::optional<Work> takeGiven() {
    const std::lock_guard lock(mutex);
    if (given.empty()) {
      return std::nullopt;
    }
    std::optional<Work> work = std::move(given.front());
    given.pop_front();
    return work;
  }

  bool runOneGiven();
  void runGiven();
  bool runReadyEvent();
  void runEvent();
  void runEventWithin(Nanoseconds longest);
};

bool MainLoop::State::runOneGiven() {
  const auto work = takeGiven();
  if (work) {
    runGuarded(*work);
  }
  return work.has_value();
}

void MainLoop::State::runGiven() {
  const auto end = uptime() + kMaxTurn;
  for (int round = 0; round < kMaxRoundsPerTurn; ++round) {
    for (auto count = givenCount(); count > 0; --count) {
      if (isStopping || uptime() > end) {
        return;
      }
      runOneGiven();
    }
  }
}

/// Runs one handler of asio's when one is ready.
bool MainLoop::State::runReadyEvent() {
  std::size_t count = 1;  // also when the handler has thrown
  runGuarded([&] { count = context.poll_one(); });
  return count > 0;
}

/// The same, and waits for one when there is nothing else to do.
void MainLoop::State::runEvent() {
  if (beginWaiting()) {
    runGuarded([this] { context.run_one(); });
    endWaiting();
  } else {
    runReadyEvent();
  }
}

void MainLoop::State::runEventWithin(Nanoseconds longest) {
  if (beginWaiting()) {
    runGuarded([this, longest] { context.run_one_for(longest); });
    endWaiting();
  } else {
    runReadyEvent();
  }
}

// Never destroyed: sockets and timers may outlive every other static object.
MainLoop& MainLoop::shared() {
  static auto& loop = *new MainLoop;
  return loop;
}

MainLoop::MainLoop() : state_(std::make_unique<State>()) {}
MainLoop::~MainLoop() = default;

void MainLoop::run() {
  while (!state_->isStopping) {
    const LogBatch batch;  // holds nothing yet when the loop waits
    state_->runEvent();
    state_->runGiven();
  }
  state_->isStopping = false;
}

void MainLoop::stop() {
  state_->isStopping = true;
  state_->wake();
}

void MainLoop::give(Work work) {
  if (state_->add(std::move(work))) {
    state_->wake();
  }
}

bool MainLoop::runUntil(const std::function<bool()>& done, double seconds) {
  const auto deadline = uptime() + static_cast<std::uint64_t>(seconds * 1e9);
  while (!done()) {
    const auto time = uptime();
    if (time >= deadline) {
      return false;
    }
    const LogBatch batch;
    if (!state_->runOneGiven() && !state_->deadlines.runDue()) {
      state_->runEventWithin(Nanoseconds(deadline - time));
    }
  }
  return true;
}

void MainLoop::runReady() {
  const LogBatch batch;
  while (state_->runOneGiven() || state_->runReadyEvent() || state_->deadlines.runDue()) {
  }
}

asio::io_context& MainLoop::context() { return state_->context; }

Deadlines& MainLoop::deadlines() { return state_->deadlines; }

SocketEvents& MainLoop::socketEvents() { return state_->socketEvents; }

}  // namespace platform
