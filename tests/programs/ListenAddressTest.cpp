#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <cstring>

#include "programs/ListenAddress.h"

namespace quillet {
namespace {

TEST(ListenAddressTest, ReadsAddressAndPort) {
  struct Row {
    std::string_view text;
    ListenAddress expected;
  };
  const Row rows[] = {
      {"127.0.0.1:5300", {"127.0.0.1", 5300, false}},
      {"0.0.0.0:0", {"0.0.0.0", 0, false}},
      {"127.0.0.1:65535", {"127.0.0.1", 65535, false}},
      {"[::1]:5300", {"::1", 5300, true}},
      {"[0:0:0:0:0:0:0:1]:53", {"::1", 53, true}},
      {"[2001:DB8::1]:53", {"2001:db8::1", 53, true}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ListenAddress::parse(row.text), row.expected) << row.text;
  }
}

TEST(ListenAddressTest, RefusesEverythingElse) {
  const std::string_view rows[] = {
      "",
      ":",
      "127.0.0.1",
      "127.0.0.1:",
      ":5300",
      "127.0.0.1:65536",
      "127.0.0.1:-1",
      "127.0.0.1:+53",
      "127.0.0.1: 53",
      "127.0.0.1:53x",
      "127.0.0:53",
      "127.0.0.1.1:53",
      "localhost:53",
      "::1:53",
      "[::1]",
      "[::1]53",
      "[127.0.0.1]:53",
      "[]:53",
      "[:53",
      "]:53",
      std::string_view("127.0.0.1\0:53", 13),
  };
  for (const std::string_view row : rows) {
    EXPECT_FALSE(ListenAddress::parse(row).has_value()) << row;
  }
}

}  // namespace
}  // namespace quillet
