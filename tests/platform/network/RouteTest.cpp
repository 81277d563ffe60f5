#include "platform/network/Route.h"
#include "tests/platform/Test.h"

namespace platform::test {

// The kernel's numbers stand in the order of this machine's octets; the bytes below are
// little-endian. Each message is a header, an rtmsg and its attributes.

/// `default via 10.0.0.254 dev 2 metric 100`: RTA_GATEWAY, RTA_OIF, RTA_PRIORITY.
const std::string kDefault4 =
    "34000000 1800 0200 01000000 02000000  02000000 fe030001 00000000"
    "0800 0500 0a0000fe  0800 0400 02000000  0800 0600 64000000";
/// `2001:db8::/32 dev 3`: RTA_DST of 16 octets, RTA_OIF.
const std::string kPrefix6 =
    "38000000 1800 0200 01000000 02000000  0a200000 fe020001 00000000"
    "1400 0100 20010db8 00000000 00000000 00000000  0800 0400 03000000";
/// A default route with two next hops, on 4 and on 5: RTA_NH_ID of an odd length, RTA_MULTIPATH.
const std::string kTwoHops =
    "38000000 1800 0200 01000000 02000000  02000000 fe030001 00000000"
    "0500 1e00 01000000  1400 0900 0800 0000 04000000 0800 0000 05000000";
/// `local 10.0.0.1 dev 2`, of type RTN_LOCAL.
const std::string kLocal =
    "24000000 1800 0200 01000000 02000000  02200000 ff02fe02 00000000  0800 0400 02000000";
const std::string kDone = "14000000 0300 0200 01000000 02000000 00000000";

TEST(Route, ReadsTheKernelsAnswer) {
  auto cloned = hex(kDefault4);
  cloned[16 + 9] = 2;  // RTM_F_CLONED
  auto bridge = hex(kDefault4);
  bridge[16] = 7;  // AF_BRIDGE
  std::vector<Route> routes;
  EXPECT_TRUE(Route::append(routes, cloned));
  EXPECT_TRUE(Route::append(routes, bridge));
  EXPECT_TRUE(Route::append(routes, hex(kDefault4 + kLocal + kPrefix6)));
  EXPECT_TRUE(Route::append(routes, hex(kTwoHops)));
  EXPECT_FALSE(Route::append(routes, hex(kDone + kDefault4)));
  EXPECT_THAT(routes, ElementsAre(Route{4, 2, true, 100}, Route{16, 3, false, 0},
                                  Route{4, 4, true, 0}, Route{4, 5, true, 0}));
}

TEST(Route, BearsAnAnswerCutAnywhereAndLengthsThatLie) {
  const auto whole = hex(kDefault4 + kPrefix6 + kTwoHops);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int change : {1, -whole[at], 255 - whole[at]}) {
      auto garbled = whole;
      garbled[at] = static_cast<std::uint8_t>(whole[at] + change);
      std::vector<Route> routes;
      Route::append(routes, garbled);
      Route::append(routes, Data(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at)));
      EXPECT_LE(routes.size(), 9U) << at;
    }
  }
}

}  // namespace platform::test
