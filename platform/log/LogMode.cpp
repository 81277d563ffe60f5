#include "platform/log/LogMode.h"

#include <atomic>

namespace platform {

namespace {

std::atomic<LogMode> mode{LogMode::full};

}  // namespace

LogMode logMode() { return mode.load(std::memory_order_relaxed); }

void setLogMode(LogMode newMode) { mode.store(newMode, std::memory_order_relaxed); }

}  // namespace platform
