#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/base/Data.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// One network interface of this machine, as the kernel shows it.
struct NetworkInterface {
  /// All of them, those without an address included; none when the system does not tell.
  static std::vector<NetworkInterface> readAll();

  /// The one that has this address; absent for none.
  static std::optional<NetworkInterface> holding(const SocketAddress& address);

  /// Whether what is sent to `address` stays on this machine.
  static bool isOfThisMachine(const SocketAddress& address);
  /// The same by a list that was read before; no socket is bound to find out.
  static bool isListed(const SocketAddress& address, const std::vector<NetworkInterface>& all);

  /// Whether it has an address of that length (4 or 16 octets) that reaches beyond its own link.
  [[nodiscard]] bool hasAddress(std::size_t length) const;

  std::string name;
  unsigned index = 0;
  bool isLoopback = false;
  /// Switched on and, as far as the driver knows, with a carrier.
  bool isRunning = false;
  /// In network byte order, 4 octets or 16.
  std::vector<Data> addresses;
};

}  // namespace platform
