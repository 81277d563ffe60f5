#include <DeploymentValues.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "relay_service/ServiceProviderXPC.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/support/LogCapture.h"

namespace QuilletXPCservice {
namespace {

using platform::test::EnvironmentVariable;
using platform::test::TemporaryDirectory;

/// All replies to one lookup with `script` as the dig that is found first.
std::vector<std::string> lookUp(const TemporaryDirectory& folder, const std::string& script) {
  const auto program = folder.path() / "dig";
  std::ofstream(program) << "#!/bin/sh\n" << script << "\n";
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const EnvironmentVariable path("PATH",
                                 (folder.path().string() + ":" + std::getenv("PATH")).c_str());
  std::vector<std::string> replies;
  ServiceProviderXPC().getPublicIp([&](std::string reply) { replies.push_back(std::move(reply)); });
  return replies;
}

TEST(ServiceProviderXPCTest, RepliesWhatTheLookupPrintsTrimmed) {
  const TemporaryDirectory folder;
  const std::pair<const char*, std::string> cases[] = {
      {"echo 192.0.2.7", "192.0.2.7"},
      {"printf ' \\t\\r\\n 192.0.2.7\\n\\n192.0.2.8 \\n\\n'", "192.0.2.7\n\n192.0.2.8"},
      {"true", ""},
      {"printf ' \\n '", ""},
      {"echo no; exit 9", "no"},
      {"echo to-error >&2", ""},
      {"printf '1\\377'", ""},
      {"kill -9 $$", ""},
      {"head -c 300000 /dev/zero | tr '\\0' x", std::string(300'000, 'x')},
  };
  for (const auto& [script, expected] : cases) {
    EXPECT_THAT(lookUp(folder, script), testing::ElementsAre(expected)) << script;
  }
}

TEST(ServiceProviderXPCTest, AsksForTheNameAtTheResolver) {
  const TemporaryDirectory folder;
  EXPECT_THAT(lookUp(folder, R"(printf '[%s]' "$@")"),
              testing::ElementsAre(std::string("[+shor][") + quillet::deployment::kPublicIpName +
                                   "][@" + quillet::deployment::kPublicIpResolver + "]"));
}

TEST(ServiceProviderXPCTest, WithoutTheProgramTheReplyIsEmpty) {
  const EnvironmentVariable path("PATH", "/nowhere");
  std::vector<std::string> replies;
  ServiceProviderXPC().getPublicIp([&](std::string reply) { replies.push_back(std::move(reply)); });
  EXPECT_THAT(replies, testing::ElementsAre(""));
}

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

TEST(ServiceProviderXPCTest, ExportsThreeMethodsOnly) {
  const auto interface = ServiceProviderXPCProtocol::interface();
  for (const char* name :
       {"getPublicIpWithReply:", "sendDNSProxyCommandWithCommand:", "printAppLogToFileWithLog:"}) {
    EXPECT_NE(interface.find(name), nullptr) << name;
  }
  for (const char* name : {"printLogToFileWithLog:", "proxyStateWasUpdatedWithState:",
                           "setAgentCommandListenerWithListener:", "getPublicIp", ""}) {
    EXPECT_EQ(interface.find(name), nullptr) << name;
  }
}

}  // namespace
}  // namespace QuilletXPCservice
