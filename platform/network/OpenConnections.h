#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "platform/network/NWConnection.h"

namespace platform {

/// Keeps the started connections of this process alive until they are cancelled, in the order of
/// their last activity. Inside the event loop only.
class OpenConnections {
 public:
  using Place = std::list<std::shared_ptr<NWConnection>>::iterator;

  static OpenConnections& shared();

  /// Cancels those idle longest until there is room for one more.
  void makeRoom();
  /// Takes in a connection as the last one active. It takes itself out again when it is cancelled.
  Place add(std::shared_ptr<NWConnection> connection);
  void remove(Place place) { open_.erase(place); }
  /// Makes it the last one active.
  void touch(Place place) { open_.splice(open_.end(), open_, place); }

  /// False when none is open.
  bool cancelIdleLongest();

  [[nodiscard]] std::size_t count() const { return open_.size(); }
  [[nodiscard]] std::size_t limit() const { return limit_; }
  /// For tests.
  void setLimit(std::size_t limit) { limit_ = limit; }

  /// `NWConnection::kMaxConnections`, or as many as the limit on open descriptors has room for.
  static std::size_t usualLimit();

 private:
  OpenConnections() = default;

  std::list<std::shared_ptr<NWConnection>> open_;  // the one idle longest first
  std::size_t limit_ = usualLimit();
};

}  // namespace platform
