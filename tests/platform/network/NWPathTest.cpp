#include "platform/network/NWPath.h"
#include "tests/platform/Test.h"

namespace platform::test {

constexpr char kNone[] = "unsatisfied (No network route)";
constexpr char kSatisfied[] = "satisfied (Path is satisfied), interface: ";

TEST(NWPath, NeedsAnInterfaceThatRunsWithAnAddressAndARoute) {
  const Data address4{10, 0, 0, 1};
  const Data address6{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const Data local4{169, 254, 7, 7};
  const Data local6{0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const std::vector<NetworkInterface> interfaces{{"lo", 1, true, true, {address4}},
                                                 {"down", 2, false, false, {address4}},
                                                 {"eth3", 3, false, true, {local4}},
                                                 {"eth4", 4, false, true, {address4, local6}},
                                                 {"eth5", 5, false, true, {address4, address6}},
                                                 {"wwan6", 6, false, true, {address4}},
                                                 {"ppp0", 7, false, true, {{169, 253, 0, 1}}}};
  const std::pair<std::vector<Route>, std::string> rows[] = {
      {{}, ""},
      {{{4, 1}, {4, 2}, {4, 3}, {16, 4}, {4, 8}}, ""},
      {{{4, 1}, {4, 4}, {16, 4}}, "eth4, ipv4"},
      {{{16, 5}}, "eth5, ipv6"},
      {{{4, 5}, {16, 5}}, "eth5, ipv4, ipv6"},
      {{{4, 4}, {16, 5}}, "eth4, ipv4"},
      {{{4, 5}, {4, 4}}, "eth4, ipv4"},
      {{{4, 4}, {4, 5, true, 900}}, "eth5, ipv4"},
      {{{4, 4, true, 600}, {4, 5, true, 100}}, "eth5, ipv4"},
      {{{4, 6}}, "wwan6, ipv4, expensive"},
      {{{4, 7}}, "ppp0, ipv4, expensive"}};
  for (const auto& [routes, path] : rows) {
    EXPECT_EQ(description(NWPath::best(interfaces, routes)),
              path.empty() ? kNone : kSatisfied + path);
  }
}

TEST(NWPath, FollowsASocketToItsInterface) {
  const auto path = [](const char* host) { return description(NWPath::from(address(host))); };
  EXPECT_EQ(path("127.0.0.1"), std::string(kSatisfied) + "lo, ipv4");
  EXPECT_EQ(path("192.0.2.77"), kNone);
}

}  // namespace platform::test
