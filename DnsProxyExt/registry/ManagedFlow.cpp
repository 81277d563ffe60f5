#include "DnsProxyExt/registry/ManagedFlow.h"

#include "DnsProxyExt/registry/MessageFootprint.h"
#include "platform/base/Clock.h"

namespace quillet {

using platform::secondsSince1970;

ManagedFlow::ManagedFlow(std::shared_ptr<platform::NEAppProxyUDPFlow> managed)
    : flow(std::move(managed)), startTimestamp(secondsSince1970()) {}

void ManagedFlow::addError(ErrorBreakpoint breakpoint) {
  const double now = secondsSince1970();
  std::string entry = "--> error: timestamp: ";
  platform::describe(entry, now);
  entry.append(" in ");
  platform::describe(entry, now - startTimestamp);
  entry.append(" after start handling, breakboint: ");
  platform::describe(entry, static_cast<int>(breakpoint));
  errors.push_back(std::move(entry));
}

void ManagedFlow::printReport(const ReportSettings& settings, const LineSink& sink) const {
  const double delay = endTimestamp != 0 ? endTimestamp - startTimestamp : 0;
  sink.print("->flow ", flow->hash(), ", isFinished: ", isFinished,
             ", senderId: ", flow->metaData().sourceAppSigningIdentifier, ",  delay: ", delay,
             ", url: ", answeredName(), ", errors: ", errors);
  if (delay == 0) {
    sink.print("time from now = ", secondsSince1970() - startTimestamp);
  }
  const auto count = rawReqData ? std::optional(rawReqData->size()) : std::nullopt;
  sink.print("rawReqData: count = ", count, ", raw: ", rawReqData);
  if (settings.detailed) {
    printDetails(sink);
  }
}

void ManagedFlow::printDetails(const LineSink& sink) const {
  sink.print("flow ", flow->hash(), " detailed, isBound: ", flow->isBound(),
             ", localEndpoint: ", flow->localEndpoint(),
             ", remoteHostname: ", flow->remoteHostname(),
             ", nettworkInterface: ", flow->networkInterface());
}

std::string ManagedFlow::answeredName() const {
  if (reqMessages.empty()) {
    return "reqMessages is empty";
  }
  const auto& message = reqMessages.front();
  if (!message || message->answers.empty()) {
    return "answers is empty";
  }
  return message->answers.front()->name();
}

void ManagedFlow::addRequest(std::vector<platform::Data> datagrams,
                             std::vector<std::optional<DnsToolsSocket::Message>> messages) {
  for (auto& message : messages) {
    messagesCost_ += sizeof(message) + (message ? footprintOf(*message) : 0);
    reqMessages.push_back(std::move(message));
  }
  datagramsCost_ = 0;
  for (const auto& datagram : datagrams) {
    datagramsCost_ += sizeof(platform::Data) + datagram.capacity();
  }
  rawReqData = std::move(datagrams);
}

}  // namespace quillet
