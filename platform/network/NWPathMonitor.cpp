#include "platform/network/NWPathMonitor.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/dispatch/WatchedSocket.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

/// A socket that the kernel tells of every change of interfaces, addresses and routes.
FileDescriptor openRouteSocket() {
  FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl name{};
  name.nl_family = AF_NETLINK;
  name.nl_groups =
      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (!socket.isOpen() ||
      ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) {
    NSLog("NWPathMonitor: changes of the network are not seen: ", NWError::posix(errno));
  }
  return socket;
}

}  // namespace

/// The socket and what was reported last. What waits for the socket or the time holds it weakly, so
/// that it goes away with its monitor.
class NWPathMonitor::Watch final : public std::enable_shared_from_this<Watch>,
                                   public SocketWatcher {
 public:
  Watch(DispatchQueue queue, PathUpdateHandler handler)
      : queue_(std::move(queue)), handler_(std::move(handler)) {}
  virtual ~Watch() = default;

  void start() {
    socket_.open(openRouteSocket());
    wait();
    queue_.async([weak = weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->report();
      }
    });
  }

 private:
  void wait() { socket_.watch(*this, {true, false}); }

  void socketIsReady(bool /*canRead*/, bool /*canWrite*/) override {
    socket_.watch(*this, {});
    queue_.asyncAfter(kSettleSeconds, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->drain();
        self->report();
        self->wait();
      }
    });
  }

  /// What the messages say is of no interest, the path is looked at as it is now; nor is it lost
  /// when there were too many of them for the socket.
  void drain() {
    constexpr int kMaxReads = 1000;
    std::array<char, 8192> message;
    for (int i = 0; i < kMaxReads; ++i) {
      const auto size = ::recv(socket_.get(), message.data(), message.size(), 0);
      if (size < 0 && errno != ENOBUFS) {
        return;
      }
    }
  }

  void report() {
    auto path = NWPath::current();
    if (path != reported_) {
      reported_ = std::move(path);
      if (handler_) {
        handler_(NWPath(*reported_));
      }
    }
  }

  const DispatchQueue queue_;
  const PathUpdateHandler handler_;
  WatchedSocket socket_;
  std::optional<NWPath> reported_;
};

void NWPathMonitor::start(DispatchQueue queue) {
  if (watch_ || isCancelled_) {
    return;
  }
  watch_ = std::make_shared<Watch>(std::move(queue), pathUpdateHandler);
  watch_->start();
}

void NWPathMonitor::cancel() {
  isCancelled_ = true;
  watch_.reset();
}

}  // namespace platform
