#include "platform/dispatch/SignalSource.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "platform/dispatch/WatchedSocket.h"

namespace platform {

namespace {

FileDescriptor descriptorOf(std::initializer_list<int> signals) {
  sigset_t set;
  ::sigemptyset(&set);
  for (const int signal : signals) {
    ::sigaddset(&set, signal);
  }
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
  FileDescriptor descriptor(::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!descriptor.isOpen()) {
    throw std::system_error(errno, std::generic_category(), "signalfd");
  }
  return descriptor;
}

}  // namespace

class SignalSource::Descriptor final : public SocketWatcher,
                                       public std::enable_shared_from_this<Descriptor> {
 public:
  Descriptor(FileDescriptor descriptor, std::function<void(int)> handler)
      : handler_(std::move(handler)) {
    socket_.open(std::move(descriptor));
  }
  virtual ~Descriptor() = default;

  void watch() {
    if (const auto error = socket_.watch(*this, {true, false})) {
      throw std::system_error(error, "signalfd");
    }
  }
  void close() { socket_.close(); }

  void socketIsReady(bool /*canRead*/, bool /*canWrite*/) override {
    const auto self = shared_from_this();
    signalfd_siginfo info{};
    if (::read(socket_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
      handler_(static_cast<int>(info.ssi_signo));
    }
  }

 private:
  WatchedSocket socket_;
  const std::function<void(int)> handler_;
};

SignalSource::SignalSource(std::initializer_list<int> signals, std::function<void(int)> handler)
    : descriptor_(std::make_shared<Descriptor>(descriptorOf(signals), std::move(handler))) {
  descriptor_->watch();
}

SignalSource::~SignalSource() { descriptor_->close(); }

}  // namespace platform
