#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/dispatch/Timer.h"
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
  ///
  /// A further one waits in the kernel's queue until another has gone. One that has been served and
  /// has nothing unread goes at once, the one silent longest first. So that nobody can hold all
  /// places for ever, `kPatienceSeconds` later others go too: first those silent since then, which
  /// have sent no whole line or do not take their answers, then the one connected longest. What
  /// they have sent by then is served before, unless they do not take their answers.
  static constexpr std::size_t kMaxConnections = 64;
  /// How long a client keeps its place whatever it does, while others wait for it.
  static constexpr double kPatienceSeconds = 2;

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
  void ended(Connections::iterator place);
  void makeRoom();
  void pause(double seconds);

  const std::string machServiceName_;
  std::optional<ServiceSocket> file_;
  WatchedSocket socket_;
  Timer pausing_;  // valid while nobody is accepted
  Connections connections_;
  const std::shared_ptr<NSXPCListener*> self_;  // what ended connections find us by
};

}  // namespace platform
