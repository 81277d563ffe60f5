#include "DnsProxyExt/intake/FlowIntake.h"

#include <utility>

#include "DnsProxyExt/intake/ReportCommand.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::NSLog;
using platform::NSLogStep;
using platform::NWHostEndpoint;

namespace {

constexpr char kOwnLdapApp[] = "com.quillet.ldapapp.ldap-app.DNS-proxy";

void logRead(const Batch& batch) {
  if (batch.application() == kOwnLdapApp) {
    // The line is all there is to it: the flow is served like any other.
    NSLogStep("force close the flow, error!!!, hash = ", batch.hash());
  }
  if (batch.datagrams.size() >= 2) {
    NSLogStep("readDatagrams ,data count = ", batch.datagrams.size());
    NSLogStep("readDatagrams ,data endpoints = ", batch.endpoints.size());
    NSLogStep("readDatagrams ,data endpoints = ", batch.endpoints);
  }
}

}  // namespace

void FlowIntake::opened(const Flow& flow, const std::optional<Error>& error) {
  NSLogStep("handleNewUDPFlow, opened flow, hash = ", flow->hash(), " ");
  if (error) {
    NSLog("error = ---> ", *error, ", flowIsBound: ", flow->isBound(),
          ", networkInterface: ", flow->networkInterface(),
          ", appId: ", flow->metaData().sourceAppSigningIdentifier);
    registry_.addErrorToFlow(*flow, ErrorBreakpoint::openingFlow);
  }
}

std::optional<Batch> FlowIntake::read(const Flow& flow, std::optional<std::vector<Data>> datagrams,
                                      std::optional<std::vector<NWHostEndpoint>> endpoints,
                                      const std::optional<Error>& error,
                                      const PrintSettings& printSettings) {
  if (!isReadable(flow, datagrams, error)) {
    return std::nullopt;
  }
  auto batch = Batch::from(flow, std::move(datagrams), std::move(endpoints));
  logRead(batch);
  record(batch);
  obeyReportCommand(batch, printSettings);
  relayLog_.stepTwice("readDatagrams hash = ", batch.hash(), " ,app id = ", batch.application());
  if (batch.datagrams.empty()) {
    NSLogStep("close read, flowHash = ", batch.hash());
    return std::nullopt;
  }
  return batch;
}

bool FlowIntake::isReadable(const Flow& flow, const std::optional<std::vector<Data>>& datagrams,
                            const std::optional<Error>& error) {
  NSLogStep("reading readDatagrams flowHash = ", flow->hash());
  if (error) {
    NSLog("read datagram, error = ", *error);
    registry_.addErrorToFlow(*flow, ErrorBreakpoint::readingFlow);
    return false;
  }
  if (!datagrams) {
    NSLog("***data  is nil***");
    return false;
  }
  return true;
}

void FlowIntake::record(const Batch& batch) {
  std::vector<Decoding::Decoded> messages;
  messages.reserve(batch.datagrams.size());
  for (const auto& datagram : batch.datagrams) {
    messages.push_back(Decoding::request(datagram, batch.hash()));
  }
  registry_.addRequest(*batch.flow, batch.datagrams, std::move(messages));
}

void FlowIntake::obeyReportCommand(const Batch& batch, const PrintSettings& printSettings) const {
  const auto* kept = registry_.find(*batch.flow);
  if (kept == nullptr || kept->reqMessages.empty()) {
    return;
  }
  const auto name = Decoding::questionName(kept->reqMessages.front());
  if (!name) {
    return;
  }
  NSLogStep("question domain is: ", *name);
  if (const auto settings = reportCommand(*name)) {
    printSettings();
    registry_.printFlowReport(*settings);
  }
}

}  // namespace quillet
