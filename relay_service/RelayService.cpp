#include "relay_service/RelayService.h"

#include <csignal>

#include "platform/dispatch/MainLoop.h"
#include "platform/log/NSLog.h"
#include "platform/process/ChildProcesses.h"

namespace QuilletXPCservice {

using platform::MainLoop;
using platform::NSLog;

namespace {

constexpr std::uint16_t kPortA = 9898;
constexpr std::uint16_t kPortB = 9899;
constexpr char kGroupId[] = "group.com.quillet.filteringosx";

}  // namespace

RelayService::RelayService()
    : signals_({SIGTERM, SIGINT, SIGHUP}, [](int signal) {
        if (signal != SIGHUP) {
          MainLoop::shared().stop();
        }
      }) {}

int RelayService::run() {
  start();
  MainLoop::shared().run();
  stop();
  return 0;
}

void RelayService::start() {
  listenerA_->start(kPortA);
  listenerB_->start(kPortB);
  NSLog("*** XPC and UDP started_ ***");
  xpcListener_.emplace(kGroupId);
  xpcListener_->delegate = delegate_;
  xpcListener_->resume();
  NSLog("*** XPC listener resumed ***");
}

void RelayService::stop() {
  platform::ChildProcesses::shared().end();
  listenerA_->stop();
  listenerB_->stop();
  xpcListener_.reset();
}

}  // namespace QuilletXPCservice
