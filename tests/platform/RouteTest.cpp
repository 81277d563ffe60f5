#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/network/Route.h"
#include "tests/support/Wire.h"

namespace platform {
namespace {

using quillet::test::hex;
using testing::ElementsAre;

// The kernel's numbers stand in the order of this machine's octets; the bytes below are
// little-endian.

/// `default via 10.0.0.254 dev 2 metric 100`: header, rtmsg, RTA_GATEWAY, RTA_OIF, RTA_PRIORITY.
const std::string kDefault4 =
    "34 00 00 00 18 00 02 00 01 00 00 00 02 00 00 00"
    "02 00 00 00 fe 03 00 01 00 00 00 00"
    "08 00 05 00 0a 00 00 fe  08 00 04 00 02 00 00 00  08 00 06 00 64 00 00 00";
/// `2001:db8::/32 dev 3`: RTA_DST of 16 octets, RTA_OIF.
const std::string kPrefix6 =
    "38 00 00 00 18 00 02 00 01 00 00 00 02 00 00 00"
    "0a 20 00 00 fe 02 00 01 00 00 00 00"
    "14 00 01 00 20 01 0d b8 00 00 00 00 00 00 00 00 00 00 00 00  08 00 04 00 03 00 00 00";
/// A default route with two next hops, on 4 and on 5: RTA_MULTIPATH.
const std::string kTwoHops =
    "30 00 00 00 18 00 02 00 01 00 00 00 02 00 00 00"
    "02 00 00 00 fe 03 00 01 00 00 00 00"
    "14 00 09 00 08 00 00 00 04 00 00 00 08 00 00 00 05 00 00 00";
/// `local 10.0.0.1 dev 2`, of type RTN_LOCAL.
const std::string kLocal =
    "24 00 00 00 18 00 02 00 01 00 00 00 02 00 00 00"
    "02 20 00 00 ff 02 fe 02 00 00 00 00"
    "08 00 04 00 02 00 00 00";
const std::string kDone = "14 00 00 00 03 00 02 00 01 00 00 00 02 00 00 00 00 00 00 00";

TEST(Route, ReadsTheKernelsAnswer) {
  std::vector<Route> routes;
  EXPECT_TRUE(Route::append(routes, hex(kDefault4 + kLocal + kPrefix6)));
  EXPECT_TRUE(Route::append(routes, hex(kTwoHops)));
  EXPECT_FALSE(Route::append(routes, hex(kDone + kDefault4)));
  EXPECT_THAT(routes, ElementsAre(Route{4, 2, true, 100}, Route{16, 3, false, 0},
                                  Route{4, 4, true, 0}, Route{4, 5, true, 0}));
}

TEST(Route, BearsAnAnswerCutAnywhereAndLengthsThatLie) {
  const auto whole = hex(kDefault4 + kPrefix6 + kTwoHops);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    std::vector<Route> routes;
    Route::append(routes, DataView(whole).first(length));
    EXPECT_LE(routes.size(), 3U);
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int change : {1, -whole[at], 255 - whole[at]}) {
      auto garbled = whole;
      garbled[at] = static_cast<std::uint8_t>(whole[at] + change);
      std::vector<Route> routes;
      Route::append(routes, garbled);
      EXPECT_LE(routes.size(), 6U) << at;
    }
  }
}

}  // namespace
}  // namespace platform
