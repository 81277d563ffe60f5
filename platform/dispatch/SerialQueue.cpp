#include "platform/dispatch/SerialQueue.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/dispatch/RunGuarded.h"

namespace platform {

struct SerialQueue::State {
  asio::io_context context{1};
  asio::executor_work_guard<asio::io_context::executor_type> staysOpen{context.get_executor()};

  // What the thread itself posts, the context may run after what others post later; so the work
  // waits here in its order, and the context is told only that there is one piece more.
  std::mutex mutex;
  std::deque<std::function<void()>> works;

  void run() {
    while (!context.stopped()) {
      runGuarded([this] { context.run(); });
    }
  }

  void add(std::function<void()> work) {
    if (context.stopped()) {
      return;
    }
    {
      const std::lock_guard lock(mutex);
      works.push_back(std::move(work));
    }
    asio::post(context, [this] { takeNext()(); });
  }

  std::function<void()> takeNext() {
    const std::lock_guard lock(mutex);
    auto next = std::move(works.front());
    works.pop_front();
    return next;
  }
};

SerialQueue::SerialQueue()
    : state_(std::make_shared<State>()), thread_([state = state_] { state->run(); }) {}

SerialQueue::~SerialQueue() {
  state_->context.stop();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else if (thread_.joinable()) {
    thread_.join();
  }
}

void SerialQueue::async(std::function<void()> work) { state_->add(std::move(work)); }

void SerialQueue::stop() {
  state_->context.stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

asio::io_context& SerialQueue::context() { return state_->context; }

}  // namespace platform
