#pragma once

#include <string_view>

#include "platform/dispatch/Timer.h"

namespace platform {

/// Tells the service manager how this process is (sd_notify(3)). Where none wants to know, without
/// NOTIFY_SOCKET in the environment, nothing happens. Inside the event loop only, or before it
/// runs.
class ServiceManager {
 public:
  ServiceManager() = default;
  ~ServiceManager() = default;
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;

  /// It serves; `status` is one line for people. From the first time on the event loop tells that
  /// it is alive, twice in the time that the manager sets (sd_watchdog_enabled(3)).
  void ready(std::string_view status);
  /// It reads its settings again; `ready` follows.
  void reloading();
  /// It ends.
  void stopping();

 private:
  void startWatchdog();

  Timer watchdog_;
};

}  // namespace platform
