#pragma once

#include <memory>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/base/FileDescriptor.h"
#include "platform/dispatch/Timer.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/udp/OwnSockets.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// A TCP socket that clients connect to. It is one of `OwnSockets`. Inside the event loop only.
class TCPListener final : public std::enable_shared_from_this<TCPListener>, private SocketWatcher {
 public:
  /// Told on the event loop; may close the listener.
  class Owner {
   public:
    /// `socket` does not block.
    virtual void accepted(FileDescriptor socket, const SocketAddress& client) = 0;
    /// The system has no room for a further connection. Nobody is accepted for a second; who waits
    /// is then.
    virtual void cannotAccept(const TCPListener& listener, std::error_code error) = 0;

   protected:
    ~Owner() = default;
  };

  /// Binds `address`, port and all; connections wait from then on.
  static tl::expected<std::shared_ptr<TCPListener>, std::error_code> bind(
      const SocketAddress& address);

  /// Begins to tell `owner`, for as long as it lives.
  std::error_code listen(std::weak_ptr<Owner> owner);
  void close();

  [[nodiscard]] const SocketAddress& address() const { return address_; }

 private:
  void socketIsReady(bool canRead, bool canWrite) override;
  void pause();

  WatchedSocket socket_;
  SocketAddress address_;
  std::optional<OwnSockets::Entry> own_;
  std::weak_ptr<Owner> owner_;
  Timer pausing_;
};

}  // namespace platform
