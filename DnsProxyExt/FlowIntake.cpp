#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/RelayLog.h"
#include "dns_tools/DnsServerSettings.h"
#include "dns_tools/RecordType.h"
#include "platform/base/RemoveOccurrences.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::NSLog;
using platform::NWHostEndpoint;

namespace {

constexpr char kReportMarker[] = "quillet_osx_filter";
constexpr char kReportPrefix[] = "quillet_osx_filter_";
constexpr char kOwnLdapApp[] = "com.quillet.ldapapp.ldap-app.DNS-proxy";

NWHostEndpoint filteringServiceEndpoint() {
  using DnsToolsSocket::DnsServerSettings;
  return {platform::description(DnsServerSettings::hostUDP()),
          platform::description(DnsServerSettings::portUDP())};
}

}  // namespace

bool DnsProxyExt::handleNewUDPFlow(const Flow& flow, const NWHostEndpoint& initialRemoteEndpoint) {
  NSLog("[DnsProxyExt] handleNewUDPFlow, instance id - ", identity());
  NSLog("bypassAll = ", bypassAll.load());
  refreshPolicy();
  if (capPortalHelper) {
    capPortalHelper->checkRegistration();
  }
  if (bypassAll) {
    return false;
  }
  const auto localEndpoint = flow->localEndpoint();
  NSLog("handleNewUDPFlow, hash = ", flow->hash(), ",  flow = ", flow->debugDescription(),
        ", isBound: ", flow->isBound(), ", localEndpoint: ", localEndpoint,
        ",ledb: ", localEndpoint, ", remote: ", initialRemoteEndpoint);
  if (flowManager.addFlowIfNew(flow)) {
    NSLog("handleNewUDPFlow - old flow, hash = ", flow->hash());
    readDatagrams(flow);
  } else {
    openFlow(flow);
  }
  return true;
}

void DnsProxyExt::openFlow(const Flow& flow) {
  flow->openWithLocalEndpoint(filteringServiceEndpoint(),
                              [self = shared_from_this(), flow](const std::optional<Error>& error) {
                                self->flowOpened(flow, error);
                              });
}

void DnsProxyExt::flowOpened(const Flow& flow, const std::optional<Error>& error) {
  NSLog("handleNewUDPFlow, opened flow, hash = ", flow->hash(), " ");
  if (error) {
    NSLog("error = ---> ", *error, ", flowIsBound: ", flow->isBound(),
          ", networkInterface: ", flow->networkInterface(),
          ", appId: ", flow->metaData().sourceAppSigningIdentifier);
    flowManager.addErrorToFlow(*flow, ErrorBreakpoint::openingFlow);
  }
  NSLog("handleNewUDPFlow, start read datagrams from new flow ");
  readDatagrams(flow);
}

void DnsProxyExt::readDatagrams(const Flow& flow) {
  NSLog("try readDatagrams, flowHash = ", flow->hash());
  flow->readDatagrams(
      [self = shared_from_this(), flow](std::optional<std::vector<Data>> datagrams,
                                        std::optional<std::vector<NWHostEndpoint>> endpoints,
                                        const std::optional<Error>& error) {
        self->datagramsRead(flow, std::move(datagrams), std::move(endpoints), error);
      });
}

void DnsProxyExt::datagramsRead(const Flow& flow, std::optional<std::vector<Data>> datagrams,
                                std::optional<std::vector<NWHostEndpoint>> endpoints,
                                const std::optional<Error>& error) {
  const auto flowHash = flow->hash();
  NSLog("reading readDatagrams flowHash = ", flowHash);
  if (error) {
    NSLog("read datagram, error = ", *error);
    flowManager.addErrorToFlow(*flow, ErrorBreakpoint::readingFlow);
    return;
  }
  if (!datagrams) {
    NSLog("***data  is nil***");
    return;
  }
  const auto& app = flow->metaData().sourceAppSigningIdentifier;
  if (app == kOwnLdapApp) {
    // The line is all there is to it: the flow is served like any other.
    NSLog("force close the flow, error!!!, hash = ", flowHash);
  }
  if (datagrams->size() >= 2) {
    const auto read = endpoints.value_or(std::vector<NWHostEndpoint>());
    NSLog("readDatagrams ,data count = ", datagrams->size());
    NSLog("readDatagrams ,data endpoints = ", read.size());
    NSLog("readDatagrams ,data endpoints = ", read);
  }
  recordRequest(flow, *datagrams);
  obeyReportCommand(flow);
  logTwice("readDatagrams hash = ", flowHash, " ,app id = ", app);
  if (datagrams->empty()) {
    NSLog("close read, flowHash = ", flowHash);
    return;
  }
  connectToDNS(flow, std::move(datagrams), std::move(endpoints), std::nullopt);
}

void DnsProxyExt::recordRequest(const Flow& flow, const std::vector<Data>& datagrams) {
  std::vector<std::optional<DnsToolsSocket::Message>> messages;
  messages.reserve(datagrams.size());
  for (const auto& datagram : datagrams) {
    messages.push_back(decodeDNSRequest(datagram, flow->hash()));
  }
  flowManager.addRequest(*flow, datagrams, std::move(messages));
}

void DnsProxyExt::obeyReportCommand(const Flow& flow) const {
  const auto* record = flowManager.find(*flow);
  if (record == nullptr || record->reqMessages.empty()) {
    return;
  }
  const auto& first = record->reqMessages.front();
  if (!first || first->questions.empty()) {
    return;
  }
  const auto& name = first->questions.front().name;
  NSLog("question domain is: ", name);
  if (name.find(kReportMarker) == std::string::npos) {
    return;
  }
  const auto settings = checkDomainForCommand(platform::removingOccurrences(name, kReportPrefix));
  printExtensionSettings();
  flowManager.printFlowReport(settings);
}

std::optional<DnsToolsSocket::Message> DnsProxyExt::decodeDNSRequest(platform::DataView data,
                                                                     std::int64_t flowHash) const {
  NSLog("---decodeDNSRequest---,data size = ", data.size(), ", hashFlow:", flowHash);
  return decodeDNSData(data, "request");
}

std::optional<DnsToolsSocket::Message> DnsProxyExt::decodeDNSData(platform::DataView data,
                                                                  std::string_view str) const {
  auto decoded = DnsToolsSocket::Message::deserialize(data);
  if (!decoded) {
    NSLog("decodeDNSResponse error");
    return std::nullopt;
  }
  const auto& message = *decoded;
  NSLog("decode ", str, ":", message);
  if (!message.answers.empty()) {
    const auto& answer = *message.answers.front();
    NSLog("DNS response,  answers count: ", message.answers.size(), ", ttl = ", answer.ttl(),
          ", name = ", answer.name());
    if (!message.questions.empty()) {
      const auto type = message.questions.front().type;
      NSLog("Response: rawType = ", type, ", debugDesc = ", DnsToolsSocket::typeDescription(type));
    }
  }
  for (const auto& question : message.questions) {
    NSLog("Question: rawType = ", question.type,
          ", debugDesc = ", DnsToolsSocket::typeDescription(question.type), ",");
  }
  return *std::move(decoded);
}

}  // namespace quillet
