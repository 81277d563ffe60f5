#include <gtest/gtest.h>

#include "dns_tools/HostRecord.h"
#include "tests/support/LogCapture.h"

namespace {

using DnsToolsSocket::HostRecord;
using DnsToolsSocket::IPv4;
using DnsToolsSocket::IPv6;
using quillet::test::LogCapture;

template <class Address>
HostRecord<Address> recordOf(const char* name, const char* ip) {
  return {name, false, 1, 60, Address::fromPresentation(ip).value()};
}

TEST(HostRecord, ChangesItsAddress) {
  LogCapture log;
  auto record = recordOf<IPv4>("a.", "1.2.3.4");
  record.changeIP("5.6.7.8");
  EXPECT_EQ(record.ip.presentation(), "5.6.7.8");
  auto record6 = recordOf<IPv6>("a.", "::1");
  record6.changeIP("2001:db8::2");
  EXPECT_EQ(record6.ip.presentation(), "2001:db8::2");
  EXPECT_TRUE(log.records().empty());
}

TEST(HostRecord, KeepsItsAddressWhenTheTextIsNone) {
  LogCapture log;
  auto record = recordOf<IPv4>("a.", "1.2.3.4");
  for (const auto* text : {"", "::1", "1.2.3.4.5", "name.example"}) {
    log.clear();
    record.changeIP(text);
    EXPECT_EQ(record.ip.presentation(), "1.2.3.4");
    EXPECT_EQ(log.records(), std::vector<std::string>{"*** wrong ip ***"});
  }
}

TEST(HostRecord, IsEqualByNameAlone) {
  const auto record = recordOf<IPv4>("a.", "1.2.3.4");
  const auto sameName = recordOf<IPv4>("a.", "5.6.7.8");
  const auto sameAddress = recordOf<IPv4>("b.", "1.2.3.4");
  EXPECT_EQ(record, sameName);
  EXPECT_FALSE(record == sameAddress);
  EXPECT_EQ(std::hash<HostRecord<IPv4>>()(record), std::hash<HostRecord<IPv4>>()(sameName));
}

}  // namespace
