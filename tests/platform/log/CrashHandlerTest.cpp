#include <dlfcn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstdlib>

#include "platform/log/CrashHandler.h"
#include "platform/log/NSLog.h"
#include "platform/log/StreamLogSink.h"
#include "tests/platform/Test.h"

namespace platform::test {

int overflowStack(int depth) {
  volatile char block[4096];
  block[0] = static_cast<char>(depth);
  return depth < INT_MAX ? overflowStack(depth + 1) + block[0] : 0;
}

TEST(CrashHandlerTest, WritesRecordsHeldBackOnceHoweverTheProcessEnds) {
  constexpr char kLastLine[] = "doomed\\[[0-9]+\\] the last words\n$";
  const auto end = [](auto how) {  // in the process that is to end
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    LogSink::setShared(std::make_unique<StreamLogSink>(STDERR_FILENO, "doomed"));
    writeLogOnCrash();
    const LogBatch batch;
    NSLog("the last words");
    how();
  };
  EXPECT_EXIT(end([] { std::exit(3); }), testing::ExitedWithCode(3), kLastLine);
  if (::dlsym(RTLD_DEFAULT, "__sanitizer_set_death_callback") != nullptr) {
    GTEST_SKIP() << "a sanitizer has handlers of its own";
  }
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    EXPECT_EXIT(end([signal] { ::raise(signal); }), testing::KilledBySignal(signal), kLastLine);
  }
  EXPECT_EXIT(end([] { overflowStack(0); }), testing::KilledBySignal(SIGSEGV), kLastLine);
}

}  // namespace platform::test
