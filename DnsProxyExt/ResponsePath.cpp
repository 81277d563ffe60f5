#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/RelayLog.h"
#include "dns_tools/HostRecord.h"
#include "dns_tools/IPv4.h"
#include "dns_tools/RecordType.h"
#include "platform/log/NSLog.h"

namespace quillet {

using DnsToolsSocket::Message;
using platform::Data;
using platform::Error;
using platform::NSLog;
using platform::NWHostEndpoint;

namespace {

/// Printed as the list of the reports' keys.
struct KeysOf {
  void describe(std::string& out) const {
    out.push_back('[');
    const char* separator = "";
    for (const auto& [key, report] : reports) {
      out.append(separator);
      platform::debugDescribe(out, key);
      separator = ", ";
    }
    out.push_back(']');
  }

  const DNSFlowReports& reports;
};

/// The message's bytes, written anew. An answer that the message model cannot read, or not write
/// again, passes through as it came: the application gets its answer all the same.
Data serializedAgain(const std::optional<Message>& message, Data received) {
  if (message) {
    if (auto serialized = message->serialize()) {
      return *std::move(serialized);
    }
  }
  return received;
}

void logClosing(bool isFinished, std::int64_t flowHash) {
  if (isFinished) {
    NSLog("handleInBoundDatagram, closing read/write,hash = ", flowHash);
  }
}

void logTiming(const DNSFlowReport& report, std::int64_t flowHash,
               const std::optional<Message>& message) {
  std::string additional = "nil";
  if (message) {
    additional = "Optional(" + platform::description(message->additional) + ")";
  }
  NSLog("[DNS REQ FLOW] - took: ", report.milliseconds(), "msec, domain:", report.url,
        ", dnsServer:", report.dnsServer, ", hash - ", flowHash, ", additional: ", additional);
}

}  // namespace

void DnsProxyExt::handleInBoundDatagram(const Flow& flow, std::optional<Data> datagram,
                                        bool isFinished, const NWHostEndpoint& endpoint,
                                        std::optional<Error> error) {
  const auto flowHash = flow->hash();
  const auto reportKey = std::to_string(flowHash);
  NSLog("handleInBoundDatagram,hash = ", flowHash, ", isFinish = ", isFinished,
        ", error = ", error);
  auto report = endedReport(reportKey);
  NSLog("flow reports: ", KeysOf{dnsFlowsReports});
  if (error) {
    flowManager.addErrorToFlow(*flow, ErrorBreakpoint::upstream);
  }
  if (!datagram) {
    NSLog("handleInBoundDatagram, data == nil,hash = ", flowHash);
    logClosing(isFinished, flowHash);
    return;
  }
  const auto message = decodeDNSResponse(*datagram, flowHash);
  auto url = answeredName(message, flowHash);
  NSLog("handleInBoundDatagram -> starting write datagrams,hash = ", flowHash);
  auto answer = serializedAgain(message, *std::move(datagram));
  NSLog("modified msg = ", message ? std::optional(message->debugDescription()) : std::nullopt);
  if (report) {
    report->url = std::move(url);
    logTiming(*report, flowHash, message);
  }
  dnsFlowsReports.erase(reportKey);
  writeAnswer(flow, std::move(answer), isFinished, endpoint, std::move(error));
  logClosing(isFinished, flowHash);
}

/// A copy of the flow's report that ends now.
std::optional<DNSFlowReport> DnsProxyExt::endedReport(const std::string& key) const {
  const auto found = dnsFlowsReports.find(key);
  if (found == dnsFlowsReports.end()) {
    return std::nullopt;
  }
  auto report = found->second;
  report.endTimestamp = platform::DispatchTime::now();
  return report;
}

/// The owner name of the first answer record, and what the log is told of it.
std::optional<std::string> DnsProxyExt::answeredName(const std::optional<Message>& message,
                                                     std::int64_t flowHash) {
  using DnsToolsSocket::HostRecord;
  using DnsToolsSocket::IPv4;
  if (!message) {
    NSLog("handleInBoundDatagram,hash = ", flowHash, ", decode response returned nil");
    return std::nullopt;
  }
  if (message->answers.empty()) {
    NSLog("handleInBoundDatagram,hash = ", flowHash, ", url = <answers arr is empty>");
    return std::nullopt;
  }
  if (!message->questions.empty() &&
      message->questions.front().type == DnsToolsSocket::RecordType::HTTPSSVC) {
    NSLog("=== ignore HTTPSSVC ===");
  }
  const auto& first = *message->answers.front();
  if (const auto* host = dynamic_cast<const HostRecord<IPv4>*>(&first)) {
    NSLog("ip.presentationString - ", host->ip.presentationString());
  }
  std::optional<std::string> url = first.name();
  NSLog("handleInBoundDatagram,hash = ", flowHash, ", url = ", url);
  return url;
}

void DnsProxyExt::writeAnswer(const Flow& flow, Data answer, bool isFinished,
                              const NWHostEndpoint& endpoint, std::optional<Error> upstreamError) {
  std::vector<Data> datagrams;
  datagrams.push_back(std::move(answer));
  flow->writeDatagrams(
      std::move(datagrams), {endpoint},
      [self = shared_from_this(), flow, isFinished,
       upstreamError = std::move(upstreamError)](const std::optional<Error>& writeError) {
        self->answerWritten(flow, isFinished, upstreamError, writeError);
      });
}

void DnsProxyExt::answerWritten(const Flow& flow, bool isFinished,
                                const std::optional<Error>& upstreamError,
                                const std::optional<Error>& writeError) {
  NSLog("handleInBoundDatagram -> write datagrams, hash  = ", flow->hash(),
        ", hasError = ", writeError.has_value());
  if (writeError) {
    flowManager.addErrorToFlow(*flow, ErrorBreakpoint::writingAnswer);
  }
  if (isFinished) {
    flowManager.flowWasHandled(*flow, platform::description(upstreamError));
    flow->closeReadWithError(upstreamError);
    flow->closeWriteWithError(upstreamError);
  }
}

std::optional<Message> DnsProxyExt::decodeDNSResponse(platform::DataView data,
                                                      std::int64_t flowHash) const {
  logTwice("***decodeDNSResponse***,data size = ", data.size(), ", flowHash:", flowHash);
  return decodeDNSData(data, "response");
}

}  // namespace quillet
