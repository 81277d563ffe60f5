#include <gtest/gtest.h>

#include "platform/foundation/Description.h"
#include "platform/network/NWPath.h"

namespace platform {
namespace {

const Data kAddress4{10, 0, 0, 1};
const Data kLinkLocal4{169, 254, 7, 7};
const Data kAddress6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const Data kLinkLocal6{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

NetworkInterface interface(const char* name, unsigned index, std::vector<Data> addresses,
                           bool isRunning = true, bool isLoopback = false) {
  return {name, index, isLoopback, isRunning, std::move(addresses)};
}

Route route(unsigned index, std::size_t addressLength, bool isDefault = false,
            std::uint32_t metric = 0) {
  return {addressLength, index, isDefault, metric};
}

TEST(NWPath, NeedsAnInterfaceThatRunsWithAnAddressAndARoute) {
  const auto loopback = interface("lo", 1, {{127, 0, 0, 1}}, true, true);
  const auto eth0 = interface("eth0", 2, {kAddress4, kAddress6});
  const auto eth1 = interface("eth1", 3, {kAddress4, kLinkLocal6});
  const std::string none = "unsatisfied (No network route)";
  const std::string found = "satisfied (Path is satisfied), interface: ";
  const struct {
    const char* what;
    std::vector<NetworkInterface> interfaces;
    std::vector<Route> routes;
    std::string path;
  } rows[] = {
      {"loopback only", {loopback}, {route(1, 4)}, none},
      {"not running", {interface("eth0", 2, {kAddress4}, false)}, {route(2, 4)}, none},
      {"of the link only",
       {interface("eth0", 2, {kLinkLocal4, kLinkLocal6})},
       {route(2, 4), route(2, 16)},
       none},
      {"a route elsewhere", {eth0}, {route(4, 4)}, none},
      {"of the other family", {interface("eth0", 2, {kAddress4})}, {route(2, 16, true)}, none},
      {"IPv4", {loopback, eth1}, {route(3, 4), route(3, 16)}, found + "eth1, ipv4"},
      {"both", {eth0}, {route(2, 4), route(2, 16)}, found + "eth0, ipv4, ipv6"},
      {"a default route first",
       {eth0, eth1},
       {route(2, 4), route(3, 4, true, 900)},
       found + "eth1, ipv4"},
      {"the best default route",
       {eth0, eth1},
       {route(2, 4, true, 600), route(3, 4, true, 100)},
       found + "eth1, ipv4"},
      {"a mobile modem",
       {interface("wwan0", 2, {kAddress4})},
       {route(2, 4)},
       found + "wwan0, ipv4, expensive"},
  };
  for (const auto& row : rows) {
    const auto path = NWPath::best(row.interfaces, row.routes);
    EXPECT_EQ(description(path), row.path) << row.what;
    EXPECT_EQ(path.status() == NWPath::Status::satisfied, row.path != none) << row.what;
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
