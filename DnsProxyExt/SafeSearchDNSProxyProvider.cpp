#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"

#include <DeploymentValues.h>

#include <functional>
#include <utility>

#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::NWHostEndpoint;

void SafeSearchDNSProxyProvider::connectToDNS(const Flow& flow,
                                              std::optional<std::vector<Data>> data,
                                              std::optional<std::vector<NWHostEndpoint>> endpoints,
                                              const std::optional<Error>& /*error*/) {
  if (!isComplete(data, endpoints)) {
    return;
  }
  const auto server = host(deployment::kFilteringDns, "53");
  const auto self = std::static_pointer_cast<SafeSearchDNSProxyProvider>(shared_from_this());
  exchange(flow, *std::move(data), *std::move(endpoints), *server,
           std::bind_front(&SafeSearchDNSProxyProvider::received, self));
}

void SafeSearchDNSProxyProvider::received(const Flow& flow, std::optional<Data> answer,
                                          bool isFinished, const NWHostEndpoint& endpoint,
                                          std::optional<Error> error) {
  if (!answer) {
    platform::NSLog("[SafeSearchDNSProxyProvider]: datagram data is nil");
    return;
  }
  decodeDNSResponse(*answer, flow->hash());
  handleInBoundDatagram(flow, std::move(answer), isFinished, endpoint, std::move(error));
}

}  // namespace quillet
