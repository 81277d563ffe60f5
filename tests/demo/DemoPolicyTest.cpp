#include <gtest/gtest.h>

#include "demo/DemoPolicy.h"

namespace quillet {
namespace {

TEST(DemoPolicyTest, ReadsTheOrganizationOfARequest) {
  const std::pair<std::string, std::optional<std::string_view>> rows[] = {
      {R"(a"}b"})", R"(a"}b)"}, {R"("})", ""}, {R"(})", std::nullopt}, {R"(org42")", std::nullopt}};
  for (const auto& [rest, organization] : rows) {
    const auto request = R"({"function": "localDNSMap","companyId": ")" + rest;
    EXPECT_EQ(organizationOf(platform::bytesOf(request)), organization) << rest;
    EXPECT_EQ(organizationOf(platform::bytesOf("x" + request)), std::nullopt);
  }
}

}  // namespace
}  // namespace quillet
