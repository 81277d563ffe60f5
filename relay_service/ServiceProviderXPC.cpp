#include "relay_service/ServiceProviderXPC.h"

#include <atomic>
#include <memory>
#include <string_view>

#include "platform/base/Utf8.h"
#include "platform/log/NSLog.h"
#include "platform/process/NSTask.h"
#include "platform/xpc/NSXPCListener.h"

namespace QuilletXPCservice {

using platform::NSLog;

namespace {

/// `text` without white space and line breaks at both ends.
std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpaces = " \t\n\v\f\r";
  const auto first = text.find_first_not_of(kSpaces);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

/// Lookups that run at one time. Each keeps its client's thread until its program ends, and of the
/// clients that the service takes, the others must find a place however long that is.
constexpr std::size_t kMaxLookups = platform::NSXPCListener::kMaxConnections / 2;

/// A place among the running lookups, if there was one left.
class LookupPlace {
 public:
  LookupPlace() : isTaken_(++count() <= kMaxLookups) {}
  ~LookupPlace() { --count(); }
  LookupPlace(const LookupPlace&) = delete;
  LookupPlace& operator=(const LookupPlace&) = delete;

  [[nodiscard]] bool isTaken() const { return isTaken_; }

 private:
  static std::atomic<std::size_t>& count() {
    static std::atomic<std::size_t> lookups{0};
    return lookups;
  }

  const bool isTaken_;
};

/// What the lookup prints, empty when it cannot be started. Its output is read before its end is
/// waited for: a program whose output nobody takes would not end.
std::string lookUpPublicIp(const PublicIpLookup& lookup) {
  platform::NSTask task;
  task.executablePath = "/usr/bin/env";
  // dig takes the option shortened.
  task.arguments = {"dig", "+shor", lookup.name, "@" + lookup.resolver};
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
  const LookupPlace place;
  if (!place.isTaken()) {
    reply("");
    return;
  }
  const auto output = lookUpPublicIp(lookup_);
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
