#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/Data.h"

namespace platform {

/// One route by which this machine reaches others.
struct Route {
  /// Routes looked at; a machine with more of them has a network. Bounds time and memory.
  static constexpr std::size_t kMaxRoutes = 4096;

  /// The kernel's routes (rtnetlink(7)); none when it does not tell.
  static std::vector<Route> readAll();

  /// Appends the routes in one piece of the kernel's answer to a request for all of them. False
  /// once the answer is complete or makes no sense. Routes to this machine itself, multicast and
  /// caches do not count.
  static bool append(std::vector<Route>& routes, DataView messages);

  bool operator==(const Route&) const = default;

  /// The length of the addresses that it is for, 4 or 16 octets.
  std::size_t addressLength = 0;
  /// The interface that it goes out on.
  unsigned interfaceIndex = 0;
  /// Whether it is for every address.
  bool isDefault = false;
  /// The smaller, the better.
  std::uint32_t metric = 0;
};

}  // namespace platform
