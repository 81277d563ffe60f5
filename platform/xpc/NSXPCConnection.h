#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <thread>

#include "platform/base/FileDescriptor.h"
#include "platform/xpc/LineBuffer.h"
#include "platform/xpc/NSXPCInterface.h"

namespace platform {

/// One client of a service, on a thread of its own: a call that takes its time delays only this
/// client's next one. Each line is one JSON-RPC 2.0 message (`JSONRPC.h`): `method` is a wire name,
/// `params` the arguments by position without the reply block, whose text is the `result` (null for
/// a method without one).
///
/// A line that cannot be read, or is longer than `LineBuffer::kMaxLine`, is answered with an error;
/// the connection goes on. What a client leaves unfinished when it goes is dropped.
class NSXPCConnection {
 public:
  /// `onEnd` runs on the connection's thread as the last thing there.
  NSXPCConnection(FileDescriptor socket, std::function<void()> onEnd);
  /// Invalidates, and waits for a call that is running.
  ~NSXPCConnection();
  NSXPCConnection(const NSXPCConnection&) = delete;
  NSXPCConnection& operator=(const NSXPCConnection&) = delete;

  // To be set before `resume`.
  NSXPCInterface exportedInterface;
  std::shared_ptr<NSObject> exportedObject;

  /// Begins to serve. Called once. Throws `std::system_error` when there is no thread to be had.
  void resume();
  /// Whether `resume` was called and has not thrown.
  [[nodiscard]] bool isResumed() const { return thread_.joinable(); }
  /// Ends the connection; a call that is running is not answered any more. Any thread may call it.
  void invalidate();
  /// Ends the connection once all that the client has sent is served; what it sends from now on
  /// fails there. Any thread may call it.
  void finish();

  /// When the client connected, in nanoseconds of the monotonic clock.
  [[nodiscard]] std::uint64_t start() const { return start_; }
  /// When the client last sent something or took an answer. Any thread.
  [[nodiscard]] std::uint64_t lastActivity() const { return lastActivity_; }
  /// Whether the client has been served and has sent nothing since, not even half a line. Any
  /// thread.
  [[nodiscard]] bool isIdle() const;
  /// Whether a call is running. Any thread.
  [[nodiscard]] bool isBusy() const { return stage_ == Stage::calling; }
  /// Whether an answer is on its way to the client. Any thread.
  [[nodiscard]] bool isSending() const { return stage_ == Stage::sending; }
  /// Whether the connection is to end (`finish`, `invalidate`). Any thread.
  [[nodiscard]] bool isEnding() const { return isFinishing_ || isInvalidated_; }

 private:
  enum class Stage { receiving, calling, sending };

  void serve();
  bool receive(LineBuffer& lines);
  bool serveLines(LineBuffer& lines);
  /// These give the answer's line; empty for none.
  std::string answer(const LineBuffer::Line& line);
  std::string call(const struct JSONRPCRequest& request);
  bool send(std::string_view line);

  const FileDescriptor socket_;
  const std::function<void()> onEnd_;
  const std::uint64_t start_;
  std::atomic<std::uint64_t> lastActivity_{start_};
  std::atomic<bool> hasServedAll_{false};  // at least one line, and nothing is left of it
  std::atomic<Stage> stage_{Stage::receiving};
  std::atomic<bool> isFinishing_{false};
  std::atomic<bool> isInvalidated_{false};
  std::thread thread_;
};

}  // namespace platform
