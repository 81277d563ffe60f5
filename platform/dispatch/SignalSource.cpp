#include "platform/dispatch/SignalSource.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

#include "platform/dispatch/MainLoop.h"

namespace platform {

struct SignalSource::State : std::enable_shared_from_this<State> {
  explicit State(std::function<void(int)> signalHandler)
      : signals(MainLoop::shared().context()), handler(std::move(signalHandler)) {}

  void wait() {
    signals.async_wait([self = shared_from_this()](const asio::error_code& error, int signal) {
      if (!error && !self->isOver) {
        self->wait();
        self->handler(signal);
      }
    });
  }

  asio::signal_set signals;
  const std::function<void(int)> handler;
  bool isOver = false;  // a signal may be on its way to us still
};

SignalSource::SignalSource(std::initializer_list<int> signals, std::function<void(int)> handler)
    : state_(std::make_shared<State>(std::move(handler))) {
  for (const int signal : signals) {
    state_->signals.add(signal);
  }
  state_->wait();
}

SignalSource::~SignalSource() {
  state_->isOver = true;
  asio::error_code ignored;
  state_->signals.cancel(ignored);
}

}  // namespace platform
