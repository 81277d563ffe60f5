#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "relay_service/ServiceProviderXPC.h"
#include "tests/support/LogCapture.h"

namespace QuilletXPCservice {
namespace {

// The last three cannot be called from outside.
TEST(ServiceProviderXPCTest, LogsWhatItIsTold) {
  const quillet::test::LogCapture log;
  ServiceProviderXPC service;
  service.sendDNSProxyCommand("bypassAllOn");
  service.printAppLogToFile("100%s");
  service.printLogToFile("line");
  service.proxyStateWasUpdated("started");
  service.setAgentCommandListener([](const std::string&) { FAIL(); });
  EXPECT_THAT(log.records(),
              testing::ElementsAre("sendDNSProxyCommand called: bypassAllOn",
                                   "print app log to file called: 100%s", "log: line",
                                   "proxyStateWasUpdated  called: started",
                                   "setAgentCommandListener  called"));
}

}  // namespace
}  // namespace QuilletXPCservice
