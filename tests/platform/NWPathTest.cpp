#include <gtest/gtest.h>

#include "platform/foundation/Description.h"
#include "platform/network/NWPath.h"

namespace platform {
namespace {

constexpr char kNone[] = "unsatisfied (No network route)";

NetworkInterface interface(const char* name, unsigned index, std::vector<Data> addresses) {
  return {name, index, name == std::string_view("lo"), name != std::string_view("down"),
          std::move(addresses)};
}

Route route(unsigned index, std::size_t addressLength, bool isDefault = false,
            std::uint32_t metric = 0) {
  return {addressLength, index, isDefault, metric};
}

TEST(NWPath, NeedsAnInterfaceThatRunsWithAnAddressAndARoute) {
  const Data address4{10, 0, 0, 1};
  const Data address6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const Data local4{169, 254, 7, 7};
  const Data local6{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const std::vector<NetworkInterface> interfaces{interface("lo", 1, {address4}),
                                                 interface("down", 2, {address4}),
                                                 interface("eth3", 3, {local4}),
                                                 interface("eth4", 4, {address4, local6}),
                                                 interface("eth5", 5, {address4, address6}),
                                                 interface("wwan6", 6, {address4})};
  const std::pair<std::vector<Route>, std::string> rows[] = {
      {{}, ""},
      {{route(1, 4)}, ""},
      {{route(2, 4)}, ""},
      {{route(3, 4), route(4, 16), route(7, 4)}, ""},
      {{route(1, 4), route(4, 4), route(4, 16)}, "eth4, ipv4"},
      {{route(5, 16)}, "eth5, ipv6"},
      {{route(5, 4), route(5, 16)}, "eth5, ipv4, ipv6"},
      {{route(4, 4), route(5, 4, true, 900)}, "eth5, ipv4"},
      {{route(4, 4, true, 600), route(5, 4, true, 100)}, "eth5, ipv4"},
      {{route(6, 4)}, "wwan6, ipv4, expensive"},
  };
  for (const auto& [routes, path] : rows) {
    EXPECT_EQ(description(NWPath::best(interfaces, routes)),
              path.empty() ? kNone : "satisfied (Path is satisfied), interface: " + path);
  }
}

TEST(NWPath, FollowsASocketToItsInterface) {
  const auto loopback = NWPath::from(SocketAddress::parse("127.0.0.1", 0).value());
  EXPECT_EQ(description(loopback), "satisfied (Path is satisfied), interface: lo, ipv4");
  EXPECT_EQ(description(NWPath::from(SocketAddress::parse("192.0.2.77", 0).value())), kNone);
}

}  // namespace
}  // namespace platform
