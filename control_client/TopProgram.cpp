#include "control_client/TopProgram.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <utility>

#include "control_client/DisplayText.h"
#include "control_client/JSONFields.h"
#include "control_client/TopLayout.h"
#include "control_client/TopModel.h"
#include "control_client/TopScreen.h"
#include "platform/base/FileDescriptor.h"

namespace quilletctl {

namespace {

using platform::FileDescriptor;
using platform::JSONValue;

// Between two pictures.
constexpr std::uint64_t kInterval = 1'000'000'000;
constexpr std::uint64_t kNanosecondsPerMillisecond = 1'000'000;
// Messages that are read before keys are looked at again.
constexpr int kMaxMessages = 4096;

/// Signals as something to wait for, from now to the end of the process.
FileDescriptor signalsAsEvents() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH}) {
    ::sigaddset(&signals, signal);
  }
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  return FileDescriptor(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
}

std::string titleOf(const JSONValue& status) {
  const bool isBypassed = flagOf(status, "bypass").value_or(false);
  return "quillet-dns-proxy " + cut(printable(textOf(status, "version").value_or("")), 20) +
         (isBypassed ? ", BYPASS ON" : "");
}

class TopProgram {
 public:
  TopProgram(ControlClient& client, TopScreen screen, FileDescriptor signals, std::string title)
      : client_(client),
        screen_(std::move(screen)),
        signals_(std::move(signals)),
        title_(std::move(title)) {}

  tl::expected<void, Failure> run() {
    draw();
    while (!isEnding_) {
      waitForEvents();
      readSignals();
      readKeys();
      if (auto read = readMessages(); !read) {
        return read;
      }
      if (isDrawingDue()) {
        draw();
      }
    }
    return {};
  }

 private:
  static std::uint64_t now() { return platform::DispatchTime::now().uptimeNanoseconds; }
  [[nodiscard]] bool isDrawingDue() const { return hasChanged_ || now() >= drawn_ + kInterval; }

  void draw() {
    screen_.draw(topLayout(model_, title_, screen_.size()));
    drawn_ = now();
    hasChanged_ = false;
  }

  void waitForEvents() {
    const auto passed = now() - drawn_;
    const auto left = (kInterval - std::min(passed, kInterval)) / kNanosecondsPerMillisecond + 1;
    pollfd events[] = {
        {client_.descriptor(), POLLIN, 0}, {signals_.get(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    const bool hasEvents = ::poll(events, std::size(events), static_cast<int>(left)) > 0;
    isEnding_ = hasEvents && (events[2].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
  }

  void readSignals() {
    signalfd_siginfo signal{};
    while (::read(signals_.get(), &signal, sizeof signal) == sizeof signal) {
      if (signal.ssi_signo == SIGWINCH) {
        screen_.followSize();
        hasChanged_ = true;
      } else {
        isEnding_ = true;
      }
    }
  }

  void readKeys() {
    while (const auto key = screen_.key()) {
      isEnding_ = isEnding_ || key == 'q' || key == 'Q';
    }
  }

  tl::expected<void, Failure> readMessages() {
    for (int i = 0; i < kMaxMessages && !isEnding_; ++i) {
      const auto message = client_.notificationIfThere();
      if (!message) {
        return tl::unexpected(message.error());
      }
      if (!*message) {
        return {};
      }
      count(**message);
    }
    return {};
  }

  void count(const Notification& message) {
    if (message.method == "query") {
      model_.add(QueryEvent::from(message.params));
    } else if (message.method == "lost") {
      model_.addLost(countOf(message.params, "lost").value_or(0));
    }
  }

  ControlClient& client_;
  TopScreen screen_;
  FileDescriptor signals_;
  std::string title_;
  TopModel model_;
  std::uint64_t drawn_ = 0;
  bool hasChanged_ = false;
  bool isEnding_ = false;
};

}  // namespace

tl::expected<void, Failure> runTop(ControlClient& client) {
  const auto status = client.call("status", JSONValue::object());
  if (!status) {
    return tl::unexpected(status.error());
  }
  if (const auto watching = client.call("watch", JSONValue::object()); !watching) {
    return tl::unexpected(watching.error());
  }
  auto signals = signalsAsEvents();
  auto screen = TopScreen::open(isOutputColoured());
  if (!screen) {
    return tl::unexpected(screen.error());
  }
  return TopProgram(client, std::move(*screen), std::move(signals), titleOf(*status)).run();
}

}  // namespace quilletctl
