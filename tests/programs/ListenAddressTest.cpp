#include <gtest/gtest.h>

#include <string_view>

#include "programs/ListenAddress.h"

namespace quillet {
namespace {

using namespace std::string_view_literals;

TEST(ListenAddressTest, ReadsAddressAndPort) {
  const std::pair<std::string_view, ListenAddress> rows[] = {
      {"0.0.0.0:0", {"0.0.0.0", 0, false}},
      {"127.0.0.1:65535", {"127.0.0.1", 65535, false}},
      {"[2001:DB8:0:0::1]:53", {"2001:db8::1", 53, true}}};
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(ListenAddress::parse(text), expected) << text;
  }
}

TEST(ListenAddressTest, RefusesEverythingElse) {
  for (const auto row : {""sv, "127.0.0.1"sv, "127.0.0.1:"sv, ":5300"sv, "127.0.0.1:65536"sv,
                         "127.0.0.1: 53"sv, "localhost:53"sv, "::1:53"sv, "[::1]"sv,
                         "[127.0.0.1]:53"sv, "[:53"sv, "]:53"sv, "::1]:53"sv, "127.0.0.1\0:53"sv}) {
    EXPECT_FALSE(ListenAddress::parse(row).has_value()) << row;
  }
}

}  // namespace
}  // namespace quillet
