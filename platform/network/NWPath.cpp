#include "platform/network/NWPath.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t kIPv4Length = 4;
constexpr std::size_t kIPv6Length = 16;

const NetworkInterface* interfaceOf(const std::vector<NetworkInterface>& interfaces,
                                    const Route& route) {
  const auto found =
      std::find_if(interfaces.begin(), interfaces.end(), [&](const NetworkInterface& interface) {
        return interface.index == route.interfaceIndex && interface.isRunning &&
               !interface.isLoopback && interface.hasAddress(route.addressLength);
      });
  return found == interfaces.end() ? nullptr : &*found;
}

bool isBetter(const Route& left, const Route& right) {
  const auto rank = [](const Route& route) {
    return std::tuple(!route.isDefault, route.metric, route.interfaceIndex);
  };
  return rank(left) < rank(right);
}

}  // namespace

NWPath::NWPath(std::string interface, bool hasIPv4, bool hasIPv6)
    : interface_(std::move(interface)), hasIPv4_(hasIPv4), hasIPv6_(hasIPv6) {}

NWPath NWPath::current() { return best(NetworkInterface::readAll(), Route::readAll()); }

NWPath NWPath::best(const std::vector<NetworkInterface>& interfaces,
                    const std::vector<Route>& routes) {
  std::vector<Route> usable;
  std::copy_if(routes.begin(), routes.end(), std::back_inserter(usable),
               [&](const Route& route) { return interfaceOf(interfaces, route) != nullptr; });
  const auto chosen = std::min_element(usable.begin(), usable.end(), isBetter);
  if (chosen == usable.end()) {
    return {};
  }
  const auto reaches = [&](std::size_t addressLength) {
    return std::any_of(usable.begin(), usable.end(), [&](const Route& route) {
      return route.interfaceIndex == chosen->interfaceIndex && route.addressLength == addressLength;
    });
  };
  return {interfaceOf(interfaces, *chosen)->name, reaches(kIPv4Length), reaches(kIPv6Length)};
}

NWPath NWPath::from(const SocketAddress& local) {
  const auto interface = NetworkInterface::holding(local);
  return interface ? NWPath(interface->name, !local.isIPv6(), local.isIPv6()) : NWPath();
}

// The names that the system gives to mobile modems begin so (systemd.net-naming-scheme(7),
// pppd(8)).
bool NWPath::isExpensive() const {
  return interface_.starts_with("ww") || interface_.starts_with("ppp");
}

void NWPath::describe(std::string& out) const {
  if (status() == Status::unsatisfied) {
    out.append("unsatisfied (No network route)");
    return;
  }
  out.append("satisfied (Path is satisfied), interface: ").append(interface_);
  out.append(hasIPv4_ ? ", ipv4" : "");
  out.append(hasIPv6_ ? ", ipv6" : "");
  out.append(isExpensive() ? ", expensive" : "");
}

void Describer<NWPath::Status>::describe(std::string& out, NWPath::Status status) {
  out.append(status == NWPath::Status::satisfied ? "satisfied" : "unsatisfied");
}

}  // namespace platform
