#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <memory>

#include "platform/foundation/CrashHandler.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/StreamLogSink.h"

namespace platform {
namespace {

constexpr char kLastLine[] = "doomed\\[[0-9]+\\] the last words\n$";

// Runs in the process that is to end.
void holdBackOneRecord() {
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  LogSink::setShared(std::make_unique<StreamLogSink>(STDERR_FILENO, "doomed"));
  writeLogOnCrash();
  static const LogBatch batch;
  NSLog("the last words");
}

void crash(int signal) {
  holdBackOneRecord();
  ::raise(signal);
}

int overflowStack(int depth) {
  volatile char block[4096];
  block[0] = static_cast<char>(depth);
  return depth < INT_MAX ? overflowStack(depth + 1) + block[0] : 0;
}

TEST(CrashHandlerTest, heldBackRecordsComeOutOnceAndTheSignalEndsTheProcess) {
  if (::dlsym(RTLD_DEFAULT, "__sanitizer_set_death_callback") != nullptr) {
    GTEST_SKIP() << "a sanitizer has handlers of its own";
  }
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    EXPECT_EXIT(crash(signal), testing::KilledBySignal(signal), kLastLine) << signal;
  }
  const auto overflow = [] {
    holdBackOneRecord();
    overflowStack(0);
  };
  EXPECT_EXIT(overflow(), testing::KilledBySignal(SIGSEGV), kLastLine);
}

TEST(CrashHandlerTest, aNormalExitWritesWhatIsHeldBack) {
  const auto leave = [] {
    holdBackOneRecord();
    std::exit(3);
  };
  EXPECT_EXIT(leave(), testing::ExitedWithCode(3), kLastLine);
}

}  // namespace
}  // namespace platform
