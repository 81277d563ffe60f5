#include <gtest/gtest.h>

#include "demo/DemoPolicy.h"

namespace quillet {
namespace {

TEST(DemoPolicyTest, ReadsTheOrganizationOfARequest) {
  const struct {
    const char* request;
    std::optional<std::string_view> organization;
  } rows[] = {
      {R"({"function": "localDNSMap","companyId": "org42"})", "org42"},
      {R"({"function": "localDNSMap","companyId": "a"}b"})", R"(a"}b)"},
      {R"({"function": "localDNSMap","companyId": ""})", ""},
      {R"({"function": "localDNSMap","companyId": "})", std::nullopt},
      {R"({"function": "localDNSMap","companyId": "org42")", std::nullopt},
      {R"({"function": "other","companyId": "org42"})", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(organizationOf(platform::bytesOf(row.request)), row.organization) << row.request;
  }
}

TEST(DemoPolicyTest, MapsOneDomain) {
  EXPECT_EQ(policyFor("127.0.0.1:5382"),
            R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["intranet.example"], )"
            R"("dnsServerIP": "127.0.0.1:5382"}]})");
}

}  // namespace
}  // namespace quillet
