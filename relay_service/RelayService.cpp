#include "relay_service/RelayService.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

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

RelayService::RelayService(RelaySettings settings)
    : signals_({SIGTERM, SIGINT, SIGHUP},
               [](int signal) {
                 if (signal != SIGHUP) {
                   MainLoop::shared().stop();
                 }
               }),
      settings_(std::move(settings)) {}

int RelayService::run() {
  start();
  MainLoop::shared().run();
  stop();
  return 0;
}

void RelayService::start() {
  tellMissingShell();
  listenerA_->start(kPortA);
  listenerB_->start(kPortB);
  NSLog("*** XPC and UDP started_ ***");
  xpcListener_.emplace(kGroupId);
  xpcListener_->delegate = delegate_;
  xpcListener_->resume();
  NSLog("*** XPC listener resumed ***");
  serviceManager_.ready("Serving UDP ports 9898 and 9899");
}

void RelayService::tellMissingShell() const {
  const auto& [shell, command] = settings_.flush;
  if (!command.empty() && ::access(shell.c_str(), X_OK) != 0) {
    NSLog("the DNS cache will not be flushed: ", shell, ": ",
          std::generic_category().message(errno));
  }
}

void RelayService::stop() {
  serviceManager_.stopping();
  platform::ChildProcesses::shared().end();
  listenerA_->stop();
  listenerB_->stop();
  xpcListener_.reset();
}

}  // namespace QuilletXPCservice
