#include <gtest/gtest.h>

#include "DnsProxyExt/CommaDelimited.h"
#include "DnsProxyExt/Utils.h"
#include "platform/foundation/Description.h"

namespace quillet {
namespace {

TEST(DNSHost, ReadsAddressAndPort) {
  const struct {
    const char* text;
    const char* address;
    std::int64_t port;
  } rows[] = {
      {"10.0.0.1:5353", "10.0.0.1", 5353},
      {"10.0.0.1", "10.0.0.1", 53},
      {"10.0.0.1:", "10.0.0.1", 53},
      {"10.0.0.1:abc", "10.0.0.1", 53},
      {"10.0.0.1:53x", "10.0.0.1", 53},
      {"10.0.0.1: 53", "10.0.0.1", 53},
      {"10.0.0.1:+99", "10.0.0.1", 99},
      {"10.0.0.1:-1", "10.0.0.1", -1},
      {"10.0.0.1:+-1", "10.0.0.1", 53},
      {"10.0.0.1:+", "10.0.0.1", 53},
      {"10.0.0.1:70000", "10.0.0.1", 70000},
      {"10.0.0.1:99999999999999999999", "10.0.0.1", 53},
      {"10.0.0.1:54:99", "10.0.0.1", 54},
      {"10.0.0.1::99", "10.0.0.1", 53},
      {"fe80::1", "fe80", 53},
      {"", "", 53},
      {":5", "", 5},
  };
  for (const auto& row : rows) {
    const Utils::DNSHost host(row.text);
    EXPECT_EQ(host.address, row.address) << row.text;
    EXPECT_EQ(host.port, row.port) << row.text;
  }
  EXPECT_EQ(platform::description(Utils::DNSHost("10.0.0.1")), "10.0.0.1:53");
}

TEST(CommaDelimited, KeepsEveryPieceAsItIs) {
  using List = std::vector<std::string>;
  const struct {
    const char* text;
    List pieces;
  } rows[] = {
      {"", {}},
      {"a", {"a"}},
      {"a,b", {"a", "b"}},
      {"a, b", {"a", " b"}},
      {"a,,b", {"a", "", "b"}},
      {"a,", {"a", ""}},
      {",", {"", ""}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(parseCommaDelimitedArr(row.text), row.pieces) << row.text;
  }
}

}  // namespace
}  // namespace quillet
