#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/Transport.h"

namespace quillet {

/// What became of one query: it was answered, or it was given up.
struct QueryOutcome {
  /// Of a flow that the provider declined, which the system's own server answers.
  static constexpr int kDeclined = 0;

  /// The name and type of the question; absent where none can be read.
  std::optional<std::string> name;
  std::optional<std::uint16_t> type;
  /// The signing identifier of the application.
  std::string application;
  platform::Transport transport = platform::Transport::udp;
  /// The routing rule that chose the server, from 1 in the order of `Route::Rule`, or `kDeclined`.
  int rule = kDeclined;
  /// `ADDR:PORT`, or `system` for a declined flow.
  std::string server;
  /// The answer's RCODE; absent for a query that was given up.
  std::optional<std::uint16_t> rcode;
  /// From the arrival of the query until its answer was sent, or until it was given up.
  double milliseconds = 0;
};

}  // namespace quillet
