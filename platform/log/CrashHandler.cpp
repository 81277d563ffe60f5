#include "platform/log/CrashHandler.h"

#include <array>
#include <csignal>

#include "platform/log/LogSink.h"

namespace platform {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) ||
                              __has_feature(memory_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

// The default action is in force again already (SA_RESETHAND). The raised signal waits until the
// handler returns; an error of the processor strikes again there as well.
void onCrash(int signal) {
  LogSink::flushSharedFromSignalHandler();
  ::raise(signal);
}

// Without a stack of its own the handler could not run after a stack overflow.
void installHandlerStack() {
  static std::array<char, 64UL * 1024> memory;
  stack_t stack{};
  stack.ss_sp = memory.data();
  stack.ss_size = memory.size();
  ::sigaltstack(&stack, nullptr);
}

}  // namespace

void writeLogOnCrash() {
  if (kIsSanitized) {
    return;
  }
  installHandlerStack();
  struct sigaction action {};
  action.sa_handler = onCrash;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_ONSTACK);
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace platform
