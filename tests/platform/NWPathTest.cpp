#include <gtest/gtest.h>

#include "platform/foundation/Description.h"
#include "platform/network/NWPath.h"

namespace platform {
namespace {

const Data kAddress4{10, 0, 0, 1};
const Data kLinkLocal4{169, 254, 7, 7};
const Data kAddress6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const Data kLinkLocal6{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

NetworkInterface interface(const char* name, unsigned index, std::vector<Data> addresses) {
  return {.name = name,
          .index = index,
          .isLoopback = false,
          .isRunning = true,
          .addresses = std::move(addresses)};
}

Route route(unsigned index, bool isDefault = false, std::uint32_t metric = 0,
            std::size_t addressLength = 4) {
  return {.addressLength = addressLength,
          .interfaceIndex = index,
          .isDefault = isDefault,
          .metric = metric};
}

TEST(NWPath, NeedsAnInterfaceThatRunsWithAnAddressAndARoute) {
  auto loopback = interface("lo", 1, {{127, 0, 0, 1}});
  loopback.isLoopback = true;
  auto stopped = interface("eth0", 2, {kAddress4});
  stopped.isRunning = false;
  const struct {
    const char* what;
    std::vector<NetworkInterface> interfaces;
    std::vector<Route> routes;
    const char* path;
  } rows[] = {
      {"nothing", {}, {}, "unsatisfied (No network route)"},
      {"loopback only", {loopback}, {route(1)}, "unsatisfied (No network route)"},
      {"not running", {stopped}, {route(2)}, "unsatisfied (No network route)"},
      {"no address", {interface("eth0", 2, {})}, {route(2)}, "unsatisfied (No network route)"},
      {"addresses of the link only",
       {interface("eth0", 2, {kLinkLocal4, kLinkLocal6})},
       {route(2), route(2, false, 0, 16)},
       "unsatisfied (No network route)"},
      {"no route", {interface("eth0", 2, {kAddress4})}, {}, "unsatisfied (No network route)"},
      {"a route elsewhere",
       {interface("eth0", 2, {kAddress4})},
       {route(3)},
       "unsatisfied (No network route)"},
      {"a route of the other family",
       {interface("eth0", 2, {kAddress4})},
       {route(2, true, 0, 16)},
       "unsatisfied (No network route)"},
      {"IPv4",
       {loopback, interface("eth0", 2, {kAddress4, kLinkLocal6})},
       {route(2), route(2, false, 0, 16)},
       "satisfied (Path is satisfied), interface: eth0, ipv4"},
      {"IPv6",
       {interface("eth0", 2, {kAddress6})},
       {route(2, false, 0, 16)},
       "satisfied (Path is satisfied), interface: eth0, ipv6"},
      {"both",
       {interface("eth0", 2, {kAddress4, kAddress6})},
       {route(2), route(2, false, 0, 16)},
       "satisfied (Path is satisfied), interface: eth0, ipv4, ipv6"},
      {"a default route before others",
       {interface("eth0", 2, {kAddress4}), interface("eth1", 3, {kAddress4})},
       {route(2, false, 0), route(3, true, 900)},
       "satisfied (Path is satisfied), interface: eth1, ipv4"},
      {"the best default route",
       {interface("eth0", 2, {kAddress4}), interface("wlan0", 3, {kAddress4})},
       {route(2, true, 600), route(3, true, 100)},
       "satisfied (Path is satisfied), interface: wlan0, ipv4"},
      {"a mobile modem",
       {interface("wwan0", 2, {kAddress4})},
       {route(2)},
       "satisfied (Path is satisfied), interface: wwan0, ipv4, expensive"},
  };
  for (const auto& row : rows) {
    const auto path = NWPath::best(row.interfaces, row.routes);
    EXPECT_EQ(description(path), row.path) << row.what;
    const bool isSatisfied = std::string_view(row.path).starts_with("satisfied");
    EXPECT_EQ(description(path.status()), isSatisfied ? "satisfied" : "unsatisfied") << row.what;
  }
}

TEST(NWPath, FollowsASocketToItsInterface) {
  const auto from = [](const char* address) {
    return description(NWPath::from(SocketAddress::parse(address, 0).value()));
  };
  EXPECT_EQ(from("127.0.0.1"), "satisfied (Path is satisfied), interface: lo, ipv4");
  EXPECT_EQ(from("192.0.2.77"), "unsatisfied (No network route)");
}

}  // namespace
}  // namespace platform
