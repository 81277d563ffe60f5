#include "DnsProxyExt/registry/DNSFlowReport.h"

namespace quillet {

using platform::DispatchTime;

DNSFlowReport DNSFlowReport::startingNow(std::string dnsServer) {
  const auto now = DispatchTime::now();
  return {.startTimestamp = now,
          .endTimestamp = now,
          .dataWasSent = now,
          .url = std::nullopt,
          .dnsServer = std::move(dnsServer)};
}

double DNSFlowReport::milliseconds() const {
  if (!startTimestamp || !endTimestamp) {
    return 0;
  }
  const auto nanoseconds = endTimestamp->uptimeNanoseconds - startTimestamp->uptimeNanoseconds;
  return static_cast<double>(nanoseconds) / 1'000'000.0;
}

}  // namespace quillet
