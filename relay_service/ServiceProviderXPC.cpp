#include "relay_service/ServiceProviderXPC.h"

#include <DeploymentValues.h>

#include <memory>
#include <string_view>

#include "platform/foundation/NSLog.h"
#include "platform/foundation/Utf8.h"
#include "platform/process/NSTask.h"

namespace QuilletXPCservice {

using platform::NSLog;

namespace {

namespace deployment = quillet::deployment;

/// `text` without white space and line breaks at both ends.
std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpaces = " \t\n\v\f\r";
  const auto first = text.find_first_not_of(kSpaces);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

/// What the lookup prints, empty when it cannot be started. Its output is read before its end is
/// waited for: a program whose output nobody takes would not end.
std::string lookUpPublicIp() {
  platform::NSTask task;
  task.executablePath = "/usr/bin/env";
  // dig takes the option shortened.
  task.arguments = {"dig", "+shor", deployment::kPublicIpName,
                    std::string("@") + deployment::kPublicIpResolver};
  task.standardOutput = std::make_shared<platform::NSPipe>();
  if (task.run()) {
    return "";
  }
  const auto output = task.standardOutput->readDataToEndOfFile();
  task.waitUntilExit();
  return std::string(platform::textOf(output));
}

}  // namespace

/// Output that is no UTF-8 is no address: the reply is empty then.
void ServiceProviderXPC::getPublicIp(const platform::NSXPCReply& reply) {
  const auto output = lookUpPublicIp();
  reply(platform::isValidUtf8(output) ? std::string(trimmed(output)) : "");
}

void ServiceProviderXPC::sendDNSProxyCommand(const std::string& command) {
  NSLog("sendDNSProxyCommand called: ", command);
}

void ServiceProviderXPC::printAppLogToFile(const std::string& log) {
  NSLog("print app log to file called: ", log);
}

void ServiceProviderXPC::printLogToFile(const std::string& log) { NSLog("log: ", log); }

void ServiceProviderXPC::proxyStateWasUpdated(const std::string& state) {
  NSLog("proxyStateWasUpdated  called: ", state);
}

void ServiceProviderXPC::setAgentCommandListener(std::function<void(std::string)> /*listener*/) {
  NSLog("setAgentCommandListener  called");
}

}  // namespace QuilletXPCservice
