#pragma once

#include <functional>
#include <memory>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/network/NWPath.h"

namespace platform {

/// Watches how this machine reaches others.
///
/// Once started it reports the path as it is, and then each that differs from the one before. The
/// kernel tells of changes in bursts (an address, its routes, a neighbour); what comes within
/// `kSettleSeconds` is looked at together. A monitor that goes away is cancelled. Inside the event
/// loop only.
class NWPathMonitor {
 public:
  static constexpr double kSettleSeconds = 0.1;

  using PathUpdateHandler = std::function<void(const NWPath&)>;

  NWPathMonitor() = default;
  ~NWPathMonitor() { cancel(); }
  NWPathMonitor(const NWPathMonitor&) = delete;
  NWPathMonitor& operator=(const NWPathMonitor&) = delete;

  /// To be set before `start`.
  PathUpdateHandler pathUpdateHandler;

  /// Begins to watch. A monitor that watches or was cancelled does not begin again. Without the
  /// kernel's help, which is one log line, the first path is the only one reported.
  void start(DispatchQueue queue);

  /// Reports nothing more.
  void cancel();

  /// The path now, whether the monitor watches or not.
  [[nodiscard]] NWPath currentPath() const { return NWPath::current(); }

 private:
  class Watch;

  std::shared_ptr<Watch> watch_;
  bool isCancelled_ = false;
};

}  // namespace platform
