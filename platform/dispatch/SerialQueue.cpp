#include "platform/dispatch/SerialQueue.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <utility>

#include "platform/dispatch/RunGuarded.h"

namespace platform {

struct SerialQueue::State {
  asio::io_context context{1};
  asio::executor_work_guard<asio::io_context::executor_type> staysOpen{context.get_executor()};

  void run() {
    while (!context.stopped()) {
      runGuarded([this] { context.run(); });
    }
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

void SerialQueue::async(std::function<void()> work) {
  asio::post(state_->context, std::move(work));
}

void SerialQueue::stop() {
  state_->context.stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

asio::io_context& SerialQueue::context() { return state_->context; }

}  // namespace platform
