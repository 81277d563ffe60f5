#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"

namespace platform {

/// A completion that runs once: with the result, or with an empty one when that is late. What it
/// holds is let go of then, whoever still knows of it. Inside the event loop only.
template <class Result>
class TimedCompletion {
 public:
  using Completion = std::function<void(const Result& result)>;

  static std::shared_ptr<TimedCompletion> within(double seconds, Completion completion) {
    std::shared_ptr<TimedCompletion> timed(new TimedCompletion(std::move(completion)));
    DispatchQueue::global().asyncAfter(seconds, [timed] { timed->complete(Result()); });
    return timed;
  }

  void complete(const Result& result) {
    if (const auto completion = std::exchange(completion_, nullptr)) {
      completion(result);
    }
  }

  /// Whether nobody waits for the result any more.
  [[nodiscard]] bool isDone() const { return !completion_; }

 private:
  explicit TimedCompletion(Completion completion) : completion_(std::move(completion)) {}

  Completion completion_;
};

}  // namespace platform
