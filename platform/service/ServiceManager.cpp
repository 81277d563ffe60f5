#include "platform/service/ServiceManager.h"

#include <systemd/sd-daemon.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace platform {

namespace {

constexpr int kKeepEnvironment = 0;

void tell(const std::string& state) { ::sd_notify(kKeepEnvironment, state.c_str()); }

/// By the clock that the manager compares with: CLOCK_MONOTONIC, not one that a test may set.
std::int64_t monotonicMicroseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

}  // namespace

void ServiceManager::ready(std::string_view status) {
  tell(std::string("READY=1\nSTATUS=").append(status));
  if (!watchdog_.isValid()) {
    startWatchdog();
  }
}

void ServiceManager::reloading() {
  tell("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(monotonicMicroseconds()) +
       "\nSTATUS=Reading the settings again");
}

void ServiceManager::stopping() { tell("STOPPING=1\nSTATUS=Stopping"); }

void ServiceManager::startWatchdog() {
  std::uint64_t microseconds = 0;
  if (::sd_watchdog_enabled(kKeepEnvironment, &microseconds) > 0) {
    const double half = static_cast<double>(microseconds) / 2e6;
    watchdog_ = Timer::scheduled(half, true, [] { tell("WATCHDOG=1"); });
  }
}

}  // namespace platform
