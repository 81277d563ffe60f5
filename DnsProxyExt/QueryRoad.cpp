// What the provider does with a query: intake, routing, exchange, answer.

#include <utility>

#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/intake/ReportCommand.h"
#include "DnsProxyExt/registry/KeptReport.h"
#include "dns_tools/DnsServerSettings.h"
#include "dnscodec/DNSParser.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::Lazily;
using platform::NSLogStep;
using platform::NWHostEndpoint;

namespace {

NWHostEndpoint filteringServiceEndpoint() {
  using DnsToolsSocket::DnsServerSettings;
  return {platform::description(DnsServerSettings::hostUDP()),
          platform::description(DnsServerSettings::portUDP())};
}

void logFlow(const platform::NEAppProxyUDPFlow& flow, const NWHostEndpoint& remoteEndpoint) {
  const auto localEndpoint = flow.localEndpoint();
  NSLogStep("handleNewUDPFlow, hash = ", flow.hash(), ",  flow = ", flow.debugDescription(),
            ", isBound: ", flow.isBound(), ", localEndpoint: ", localEndpoint,
            ",ledb: ", localEndpoint, ", remote: ", remoteEndpoint);
}

}  // namespace

bool DnsProxyExt::handleNewUDPFlow(const Flow& flow, const NWHostEndpoint& initialRemoteEndpoint) {
  NSLogStep("[DnsProxyExt] handleNewUDPFlow, instance id - ",
            Lazily([this] { return identity(); }));
  NSLogStep("bypassAll = ", bypassAll.load());
  refreshPolicy();
  if (capPortalHelper) {
    capPortalHelper->checkRegistration();
  }
  if (bypassAll) {
    return false;
  }
  if (platform::logsSteps()) {
    logFlow(*flow, initialRemoteEndpoint);
  }
  if (flowManager.addFlowIfNew(flow)) {
    NSLogStep("handleNewUDPFlow - old flow, hash = ", flow->hash());
    readDatagrams(flow);
  } else {
    openFlow(flow);
  }
  return true;
}

void DnsProxyExt::openFlow(const Flow& flow) {
  flow->openWithLocalEndpoint(filteringServiceEndpoint(),
                              [self = shared_from_this(), flow](const std::optional<Error>& error) {
                                self->intake_.opened(flow, error);
                                NSLogStep("handleNewUDPFlow, start read datagrams from new flow ");
                                self->readDatagrams(flow);
                              });
}

void DnsProxyExt::readDatagrams(const Flow& flow) {
  NSLogStep("try readDatagrams, flowHash = ", flow->hash());
  flow->readDatagrams(
      [self = shared_from_this(), flow](std::optional<std::vector<Data>> datagrams,
                                        std::optional<std::vector<NWHostEndpoint>> endpoints,
                                        const std::optional<Error>& error) {
        auto batch = self->intake_.read(flow, std::move(datagrams), std::move(endpoints), error,
                                        [&self] { self->printExtensionSettings(); });
        if (batch) {
          self->connectToDNS(flow, std::move(batch->datagrams), std::move(batch->endpoints),
                             std::nullopt);
        }
      });
}

void DnsProxyExt::connectToDNS(const Flow& flow, std::optional<std::vector<Data>> data,
                               std::optional<std::vector<NWHostEndpoint>> endpoints,
                               const std::optional<Error>& /*error*/) {
  auto batch = Batch::from(flow, std::move(data), std::move(endpoints));
  if (batch.datagrams.empty()) {
    return;
  }
  NSLogStep("datagram count = ", batch.datagrams.size());
  const auto route = chooseRoute(batch);
  tellRoute(route);
  if (route.rule == Route::Rule::filtering) {
    injectIdentity(batch);
  }
  NSLogStep("dnshost address = ", route.server->address);
  exchange(std::move(batch), *route.server,
           [self = shared_from_this()](Answer answer) { self->answered(std::move(answer)); });
}

Route DnsProxyExt::chooseRoute(const Batch& batch) const {
  const auto message = decodeDNSRequest(batch.datagrams.front(), batch.hash());
  NSLogStep("msg: ", message);
  const auto name = Decoding::questionName(message);
  auto route =
      routing.choose(batch.application(), name ? std::optional(routedDomain(*name)) : std::nullopt);
  NSLogStep("shouldAllowAll = ", shouldAllowAll, ", useSecondDNS = ", route.isAllowedApp,
            ", app = ", batch.application(), ", allowedApps = ", allowedApps);
  return route;
}

void DnsProxyExt::tellRoute(const Route& route) const {
  if (onRouted) {
    onRouted(route);
  }
  const Lazily line([&route] { return lineOf(route); });
  if (isRelayed(route.rule)) {
    relayLog_.stepTwice(line);
  } else {
    NSLogStep(line);
  }
}

void DnsProxyExt::injectIdentity(Batch& batch) const {
  const auto& values = MDMConfigurationManager::shared().getValuesForQuery(batch.application());
  relayLog_.stepTwice("values for inject = ", *values);
  batch.datagrams = DNSParser::injectFlagsToDatagrams(batch.datagrams, values);
  if (platform::logsSteps()) {
    decodeDNSRequest(batch.datagrams.front(), batch.hash());
  }
}

DNSHostRef DnsProxyExt::mappedForOtherDNS(std::string_view domain, const DomainMap& dnsMap) {
  return dnsMap.server(domain);
}

void DnsProxyExt::exchange(Batch batch, const Utils::DNSHost& server, AnswerHandler handler) {
  const std::shared_ptr<DNSFlowReports> reports(shared_from_this(), &dnsFlowsReports);
  auto report = std::make_shared<const KeptReport>(reports, batch.hash(),
                                                   DNSFlowReport::startingNow(server.address));
  if (!batch.isComplete()) {
    return;
  }
  upstream(std::move(batch), server,
           [handler = std::move(handler), report = std::move(report)](Answer answer) {
             handler(std::move(answer));
           });
}

void DnsProxyExt::answered(Answer answer) {
  responsePath_.take(std::move(answer), shared_from_this());
}

void DnsProxyExt::handleInBoundDatagram(const Flow& flow, std::optional<Data> datagram,
                                        bool isFinished, const NWHostEndpoint& endpoint,
                                        std::optional<Error> error) {
  answered({flow, std::move(datagram), isFinished, endpoint, std::move(error)});
}

Decoding::Decoded DnsProxyExt::decodeDNSRequest(platform::DataView data, std::int64_t flowHash) {
  return Decoding::request(data, flowHash);
}

Decoding::Decoded DnsProxyExt::decodeDNSResponse(platform::DataView data,
                                                 std::int64_t flowHash) const {
  return decoding_.response(data, flowHash);
}

Decoding::Decoded DnsProxyExt::decodeDNSData(platform::DataView data, std::string_view str) {
  return Decoding::message(data, str);
}

ReportSettings DnsProxyExt::checkDomainForCommand(std::string_view domain) {
  return reportParameters(domain);
}

}  // namespace quillet
