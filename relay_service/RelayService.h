#pragma once

#include <memory>
#include <optional>

#include "platform/dispatch/SignalSource.h"
#include "platform/service/ServiceManager.h"
#include "platform/xpc/NSXPCListener.h"
#include "relay_service/RelaySettings.h"
#include "relay_service/ServiceDelegate.h"
#include "relay_service/UDPListener.h"

namespace QuilletXPCservice {

/// The relay service as a process: its two ports, its XPC service, and the run loop.
class RelayService {
 public:
  explicit RelayService(RelaySettings settings);

  /// Serves until SIGTERM or SIGINT. SIGHUP does nothing: there are no settings to read again, and
  /// whoever sends it to all of the product's processes keeps the relay. Returns the process' exit
  /// status. At the end nothing is waited for: child processes that run are killed.
  int run();

 private:
  void start();
  void stop();
  void tellMissingShell() const;

  const platform::SignalSource signals_;  // before any thread begins
  const RelaySettings settings_;
  const std::shared_ptr<UDPListener> listenerA_ = std::make_shared<UDPListener>(settings_.flush);
  const std::shared_ptr<UDPListener> listenerB_ = std::make_shared<UDPListener>(settings_.flush);
  const std::shared_ptr<ServiceDelegate> delegate_ =
      std::make_shared<ServiceDelegate>(settings_.lookup);
  std::optional<platform::NSXPCListener> xpcListener_;
  platform::ServiceManager serviceManager_;
};

}  // namespace QuilletXPCservice
