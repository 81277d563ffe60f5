#include "platform/dispatch/SerialQueue.h"

#include <utility>

namespace platform {

namespace {

void run(EventLoop& loop, const Activity::Ref& activity) {
  const ActivityScope scope(activity);
  while (!loop.isStopping()) {
    loop.runEvents(EventLoop::kForEver);
    loop.runGiven();
  }
}

}  // namespace

SerialQueue::SerialQueue(Activity::Ref activity)
    : loop_(std::make_shared<EventLoop>()),
      thread_([loop = loop_, activity = std::move(activity)] { run(*loop, activity); }) {}

SerialQueue::~SerialQueue() {
  loop_->stop();
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else if (thread_.joinable()) {
    thread_.join();
  }
}

void SerialQueue::async(std::function<void()> work) {
  if (!loop_->isStopping()) {
    loop_->add(std::move(work));
  }
}

void SerialQueue::stop() {
  loop_->stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

}  // namespace platform
