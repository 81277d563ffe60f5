#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"

#include <DeploymentValues.h>

#include <utility>

#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::NWHostEndpoint;

void SafeSearchDNSProxyProvider::connectToDNS(const Flow& flow,
                                              std::optional<std::vector<Data>> data,
                                              std::optional<std::vector<NWHostEndpoint>> endpoints,
                                              const std::optional<platform::Error>& /*error*/) {
  auto batch = Batch::from(flow, std::move(data), std::move(endpoints));
  if (!batch.isComplete()) {
    return;
  }
  const auto server = Utils::DNSHost::at(deployment::kFilteringDns, "53");
  if (onRouted) {
    onRouted({Route::Rule::filtering, server});
  }
  const auto self = std::static_pointer_cast<SafeSearchDNSProxyProvider>(shared_from_this());
  exchange(std::move(batch), *server, [self](Answer answer) { self->received(std::move(answer)); });
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
