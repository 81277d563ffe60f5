#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "platform/log/LogSink.h"

namespace platform {

/// Hands records on to another sink from a thread of its own, in order, so that an event loop never
/// waits for a slow reader of its log. Where records were lost, a record says so.
class BackgroundLogSink final : public LogSink {
 public:
  /// Octets of records that may wait, at `kRecordCost` more for each; beyond that they are lost.
  static constexpr std::size_t kCapacity = 4UL * 1024 * 1024;
  /// What a record takes beside its text.
  static constexpr std::size_t kRecordCost = 64;
  /// How long the end of the process waits for what is not yet written, milliseconds.
  static constexpr int kPatience = 500;

  /// `sink` is used by the thread alone, and may wait as long as it likes.
  explicit BackgroundLogSink(std::unique_ptr<LogSink> sink);
  BackgroundLogSink(const BackgroundLogSink&) = delete;
  BackgroundLogSink& operator=(const BackgroundLogSink&) = delete;
  /// Like `finish`; what is not written then is left to the thread.
  ~BackgroundLogSink() override;

  void write(std::string_view text) override;
  void finish() override;
  void flushFromSignalHandler() noexcept override;

 private:
  struct State;

  static void run(State& state);
  void waitUntilWritten() const noexcept;

  const std::shared_ptr<State> state_;
};

}  // namespace platform
