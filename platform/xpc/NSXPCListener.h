#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/dispatch/WatchedSocket.h"
#include "platform/xpc/NSXPCConnection.h"
#include "platform/xpc/ServiceSocket.h"

namespace platform {

class NSXPCListener;

/// Asked about each client that connects.
class NSXPCListenerDelegate {
 public:
  NSXPCListenerDelegate() = default;
  NSXPCListenerDelegate(const NSXPCListenerDelegate&) = delete;
  NSXPCListenerDelegate& operator=(const NSXPCListenerDelegate&) = delete;
  virtual ~NSXPCListenerDelegate() = default;

  /// Equips and resumes `shouldAcceptNewConnection`; false turns the client away.
  virtual bool listener(NSXPCListener& listener, NSXPCConnection& shouldAcceptNewConnection) = 0;
};

/// A service that local clients find under its name (`ServiceSocket`). Clients are accepted by the
/// main loop and served apart from it, each by a thread of its own. Inside the event loop only.
class NSXPCListener final : private SocketWatcher {
 public:
  /// Clients at one time. One costs a descriptor, a thread and up to `LineBuffer::kMaxLine` bytes.
  /// A further one takes the place of the client that has been silent longest; it is turned away
  /// when a call of every client is running.
  static constexpr std::size_t kMaxConnections = 64;

  explicit NSXPCListener(std::string machServiceName);
  /// Ends all connections; waits for calls that are running.
  ~NSXPCListener();
  NSXPCListener(const NSXPCListener&) = delete;
  NSXPCListener& operator=(const NSXPCListener&) = delete;

  /// Set before `resume`; borrowed weakly.
  std::weak_ptr<NSXPCListenerDelegate> delegate;

  /// Begins to accept. When the name cannot be had that is one log line.
  void resume();

 private:
  using Connections = std::list<std::unique_ptr<NSXPCConnection>>;

  void socketIsReady(bool canRead, bool canWrite) override;
  void watch();
  void accept(FileDescriptor client);
  bool makeRoom();
  void pause(int error);

  const std::string machServiceName_;
  std::optional<ServiceSocket> file_;
  WatchedSocket socket_;
  Connections connections_;
  const std::shared_ptr<NSXPCListener*> self_;  // what ended connections find us by
};

}  // namespace platform
