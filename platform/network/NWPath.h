#pragma once

#include <string>
#include <vector>

#include "platform/base/Description.h"
#include "platform/network/Route.h"
#include "platform/udp/NetworkInterface.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// How this machine reaches others at one moment: by which interface, if any.
///
/// Printed as the framework prints it: `satisfied (Path is satisfied), interface: eth0, ipv4, ipv6`
/// or `unsatisfied (No network route)`.
class NWPath {
 public:
  enum class Status { satisfied, unsatisfied };

  /// No way out.
  NWPath() = default;

  /// The path as it is now: satisfied when an interface other than loopback runs with an address,
  /// one that reaches beyond its own link, and a route. Of several the one with the best default
  /// route.
  static NWPath current();
  /// The same of interfaces and routes at hand.
  static NWPath best(const std::vector<NetworkInterface>& interfaces,
                     const std::vector<Route>& routes);
  /// The path of a socket that has this address on its own side: the interface that holds it.
  static NWPath from(const SocketAddress& local);

  [[nodiscard]] Status status() const {
    return interface_.empty() ? Status::unsatisfied : Status::satisfied;
  }
  /// Whether what is sent costs money: by a mobile modem, which the interface's name tells
  /// (`wwan0`, `ppp0`).
  [[nodiscard]] bool isExpensive() const;

  void describe(std::string& out) const;
  bool operator==(const NWPath&) const = default;

 private:
  NWPath(std::string interface, bool hasIPv4, bool hasIPv6);

  std::string interface_;  // empty: unsatisfied
  bool hasIPv4_ = false;
  bool hasIPv6_ = false;
};

}  // namespace platform

/// Printed as the case's name.
template <>
struct platform::Describer<platform::NWPath::Status> {
  static void describe(std::string& out, platform::NWPath::Status status);
  static void debugDescribe(std::string& out, platform::NWPath::Status status) {
    describe(out, status);
  }
};
