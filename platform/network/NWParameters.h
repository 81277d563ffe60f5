#pragma once

namespace platform {

/// How a listener talks.
struct NWParameters {
  /// Plain UDP.
  static NWParameters udp() { return {}; }

  /// Whether data may go with the first packet of a handshake. UDP has none: nothing changes.
  bool allowFastOpen = false;
};

}  // namespace platform
