#pragma once

#include <list>
#include <optional>

#include "platform/network/NWConnection.h"

namespace platform {

/// The receives of one connection that are armed, and what has come before a receive for it. Both
/// the oldest first. Its owner bounds what is held, and keeps itself alive during `complete`.
class ReceiveQueue {
 public:
  using Completion = NWConnection::ReceiveCompletion;

  /// One datagram, or the error that takes its place.
  struct Received {
    std::optional<Data> content;
    std::optional<NWError> error;
  };

  void arm(Completion completion) { armed_.push_back(std::move(completion)); }
  [[nodiscard]] std::size_t armedCount() const { return armed_.size(); }
  [[nodiscard]] bool isArmed() const { return !armed_.empty(); }
  /// Takes all that are armed out, uncompleted.
  std::list<Completion> disarm() { return std::exchange(armed_, {}); }

  void hold(Received received) { held_.push_back(std::move(received)); }
  [[nodiscard]] const std::list<Received>& held() const { return held_; }
  [[nodiscard]] bool canComplete() const { return isArmed() && !held_.empty(); }

  /// Completes the oldest receive; it may arm the next one.
  void complete(Received received);
  /// The same with the oldest that is held.
  void completeWithHeld();

 private:
  std::list<Completion> armed_;
  std::list<Received> held_;
};

}  // namespace platform
