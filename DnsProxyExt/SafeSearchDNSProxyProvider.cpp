#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"

#include <DeploymentValues.h>

#include <utility>

#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::NWHostEndpoint;

namespace {

DNSHostRef filteringService() { return Utils::DNSHost::at(deployment::kFilteringDns, "53"); }

}  // namespace

void SafeSearchDNSProxyProvider::connectToDNS(const Flow& flow,
                                              std::optional<std::vector<Data>> data,
                                              std::optional<std::vector<NWHostEndpoint>> endpoints,
                                              const std::optional<platform::Error>& /*error*/) {
  auto batch = Batch::from(flow, std::move(data), std::move(endpoints));
  if (!batch.isComplete()) {
    return;
  }
  const auto server = filteringService();
  if (onRouted) {
    onRouted({Route::Rule::filtering, server});
  }
  const auto self = std::static_pointer_cast<SafeSearchDNSProxyProvider>(shared_from_this());
  exchange(std::move(batch), *server, [self](Answer answer) { self->received(std::move(answer)); });
}

Explanation SafeSearchDNSProxyProvider::explain(const std::string& /*questionName*/,
                                                const std::string& /*application*/) const {
  if (bypassAll) {
    return {};
  }
  return {.rule = static_cast<int>(Route::Rule::filtering) + 1,
          .server = filteringService()->description()};
}

std::set<std::string> SafeSearchDNSProxyProvider::serverTexts(Route::Rule rule) const {
  return rule == Route::Rule::filtering ? std::set{filteringService()->description()}
                                        : std::set<std::string>();
}

void SafeSearchDNSProxyProvider::received(Answer answer) {
  if (!answer.datagram) {
    platform::NSLogStep("[SafeSearchDNSProxyProvider]: datagram data is nil");
    return;
  }
  if (platform::logsSteps()) {
    decodeDNSResponse(*answer.datagram, answer.hash());
  }
  answered(std::move(answer));
}

}  // namespace quillet
