#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "relay_service/ServiceProviderXPC.h"
#include "tests/support/LogCapture.h"

namespace QuilletXPCservice {
namespace {

TEST(ServiceProviderXPCTest, LogsWhatCannotBeCalledFromOutside) {
  const quillet::test::LogCapture log;
  ServiceProviderXPC service({});
  service.printLogToFile("line");
  service.proxyStateWasUpdated("started");
  service.setAgentCommandListener([](const std::string&) { FAIL(); });
  EXPECT_THAT(log.records(),
              testing::ElementsAre("log: line", "proxyStateWasUpdated  called: started",
                                   "setAgentCommandListener  called"));
}

}  // namespace
}  // namespace QuilletXPCservice
