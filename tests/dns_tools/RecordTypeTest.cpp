#include <gtest/gtest.h>

#include "dns_tools/RecordType.h"

namespace {

using DnsToolsSocket::typeDescription;

TEST(RecordType, DescribesKnownValues) {
  const struct {
    std::uint16_t type;
    const char* text;
  } kCases[] = {{1, "A"},        {2, "NS"},        {5, "CNAME"},      {6, "SOA"},
                {12, "PTR"},     {15, "MX"},       {16, "TXT"},       {28, "AAAA"},
                {33, "SRV"},     {64, "SVCB"},     {65, "HTTPSSVC"},  {251, "IXFR"},
                {252, "AXFR"},   {255, "*"},       {0, "Unknown"},    {3, "Unknown"},
                {41, "Unknown"}, {256, "Unknown"}, {65535, "Unknown"}};
  for (const auto& [type, text] : kCases) {
    EXPECT_EQ(typeDescription(type), text) << type;
  }
}

}  // namespace
