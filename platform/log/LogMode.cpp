#include "platform/log/LogMode.h"

#include <atomic>

namespace platform {

namespace {

constexpr std::string_view kFull = "full";
constexpr std::string_view kBrief = "brief";

std::atomic<LogMode> modeInUse{LogMode::full};

}  // namespace

std::optional<LogMode> logModeNamed(std::string_view name) {
  if (name == kFull) {
    return LogMode::full;
  }
  return name == kBrief ? std::optional(LogMode::brief) : std::nullopt;
}

std::string_view nameOf(LogMode mode) { return mode == LogMode::full ? kFull : kBrief; }

LogMode logMode() { return modeInUse.load(std::memory_order_relaxed); }

void setLogMode(LogMode newMode) { modeInUse.store(newMode, std::memory_order_relaxed); }

}  // namespace platform
