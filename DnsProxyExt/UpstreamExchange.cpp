#include "DnsProxyExt/DnsProxyExt.h"
#include "dns_tools/DNSSocketClient.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::NWHostEndpoint;

/// Takes a report away with the last handler of its exchange, unless it has been answered or
/// replaced before.
class DnsProxyExt::KeptReport {
 public:
  KeptReport(std::shared_ptr<DnsProxyExt> provider, std::int64_t flowHash, DNSFlowReport report)
      : provider_(std::move(provider)),
        key_(std::to_string(flowHash)),
        exchange_(++provider_->exchanges_) {
    report.exchange = exchange_;
    provider_->dnsFlowsReports.insert_or_assign(key_, std::move(report));
  }
  ~KeptReport() {
    auto& reports = provider_->dnsFlowsReports;
    const auto kept = reports.find(key_);
    if (kept != reports.end() && kept->second.exchange == exchange_) {
      reports.erase(kept);
    }
  }
  KeptReport(const KeptReport&) = delete;
  KeptReport& operator=(const KeptReport&) = delete;

 private:
  const std::shared_ptr<DnsProxyExt> provider_;
  const std::string key_;
  const std::uint64_t exchange_;
};

void DnsProxyExt::exchange(const Flow& flow, std::vector<Data> batch,
                           std::vector<NWHostEndpoint> endpoints, const Utils::DNSHost& server,
                           AnswerHandler handler) {
  auto report = std::make_shared<const KeptReport>(shared_from_this(), flow->hash(),
                                                   DNSFlowReport::startingNow(server.address));
  const auto client =
      DnsToolsSocket::DNSSocketClient::create(flow, std::move(batch), std::move(endpoints));
  client->onDataReceived = [handler = std::move(handler), report = std::move(report)](
                               const Flow& answeredFlow, std::optional<Data> answer,
                               const std::optional<NWHostEndpoint>& endpoint,
                               std::optional<bool> isFinished,
                               const std::optional<platform::NWError>& networkError) {
    std::optional<Error> error;
    if (networkError) {
      error = Error(platform::description(*networkError));
    }
    handler(answeredFlow, std::move(answer), isFinished.value(), endpoint.value(),
            std::move(error));
  };
  client->connectWithDNS(server.address, server.port);
}

}  // namespace quillet
