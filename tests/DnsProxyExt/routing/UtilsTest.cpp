#include <gtest/gtest.h>

#include "DnsProxyExt/routing/Utils.h"
#include "platform/base/CommaDelimited.h"
#include "platform/base/Description.h"

namespace quillet {
namespace {

TEST(DNSHost, ReadsAddressAndPort) {
  const std::pair<const char*, const char*> rows[] = {
      {"10.0.0.1:5353", "10.0.0.1:5353"},
      {"10.0.0.1", "10.0.0.1:53"},
      {"10.0.0.1:", "10.0.0.1:53"},
      {"10.0.0.1:53x", "10.0.0.1:53"},
      {"10.0.0.1: 53", "10.0.0.1:53"},
      {"10.0.0.1:+99", "10.0.0.1:99"},
      {"10.0.0.1:-1", "10.0.0.1:-1"},
      {"10.0.0.1:+-1", "10.0.0.1:53"},
      {"10.0.0.1:70000", "10.0.0.1:70000"},
      {"10.0.0.1:99999999999999999999", "10.0.0.1:53"},
      {"10.0.0.1:54:99", "10.0.0.1:54"},
      {"fe80::1", "fe80:53"},
      {"", ":53"},
  };
  for (const auto& [text, printed] : rows) {
    EXPECT_EQ(platform::description(Utils::DNSHost(text)), printed) << text;
  }
}

TEST(CommaDelimited, KeepsEveryPieceAsItIs) {
  const std::pair<const char*, std::vector<std::string>> rows[] = {
      {"", {}}, {"a", {"a"}}, {"a, b,,c", {"a", " b", "", "c"}}, {",", {"", ""}}};
  for (const auto& [text, pieces] : rows) {
    EXPECT_EQ(platform::parseCommaDelimitedArr(text), pieces) << text;
  }
}

}  // namespace
}  // namespace quillet
