#include "DnsProxyExt/answers/ResponsePath.h"

#include <utility>
#include <vector>

#include "dns_tools/HostRecord.h"
#include "dns_tools/IPv4.h"
#include "dns_tools/RecordType.h"
#include "platform/log/NSLog.h"

namespace quillet {

using DnsToolsSocket::Message;
using platform::Data;
using platform::Error;
using platform::Lazily;
using platform::logsSteps;
using platform::NSLogStep;

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
    NSLogStep("handleInBoundDatagram, closing read/write,hash = ", flowHash);
  }
}

void logTiming(const DNSFlowReport& report, std::int64_t flowHash,
               const std::optional<Message>& message) {
  const Lazily additional([&message] {
    return message ? "Optional(" + platform::description(message->additional) + ")" : "nil";
  });
  NSLogStep("[DNS REQ FLOW] - took: ", report.milliseconds(), "msec, domain:", report.url,
            ", dnsServer:", report.dnsServer, ", hash - ", flowHash, ", additional: ", additional);
}

/// The owner name of the first answer record, and what the log is told of it.
std::optional<std::string> answeredName(const std::optional<Message>& message,
                                        std::int64_t flowHash) {
  using DnsToolsSocket::HostRecord;
  using DnsToolsSocket::IPv4;
  if (!message) {
    NSLogStep("handleInBoundDatagram,hash = ", flowHash, ", decode response returned nil");
    return std::nullopt;
  }
  if (message->answers.empty()) {
    NSLogStep("handleInBoundDatagram,hash = ", flowHash, ", url = <answers arr is empty>");
    return std::nullopt;
  }
  if (!message->questions.empty() &&
      message->questions.front().type == DnsToolsSocket::RecordType::HTTPSSVC) {
    NSLogStep("=== ignore HTTPSSVC ===");
  }
  const auto& first = *message->answers.front();
  if (const auto* host = dynamic_cast<const HostRecord<IPv4>*>(&first)) {
    NSLogStep("ip.presentationString - ", Lazily([host] { return host->ip.presentationString(); }));
  }
  std::optional<std::string> url = first.name();
  NSLogStep("handleInBoundDatagram,hash = ", flowHash, ", url = ", url);
  return url;
}

}  // namespace

void ResponsePath::take(Answer answer, std::shared_ptr<const void> owner) {
  const auto flowHash = answer.hash();
  const bool isFinished = answer.isFinished;
  NSLogStep("handleInBoundDatagram,hash = ", flowHash, ", isFinish = ", isFinished,
            ", error = ", answer.error);
  auto report = logsSteps() ? endedReport(std::to_string(flowHash)) : std::nullopt;
  NSLogStep("flow reports: ", KeysOf{reports_});
  if (answer.error) {
    registry_.addErrorToFlow(*answer.flow, ErrorBreakpoint::upstream);
  }
  if (answer.datagram) {
    answer.datagram = writtenAnew(*std::move(answer.datagram), flowHash, std::move(report));
    write(std::move(answer), std::move(owner));
  } else {
    NSLogStep("handleInBoundDatagram, data == nil,hash = ", flowHash);
  }
  logClosing(isFinished, flowHash);
}

Data ResponsePath::writtenAnew(Data received, std::int64_t flowHash,
                               std::optional<DNSFlowReport> report) {
  const auto message = decoding_.response(received, flowHash);
  auto url = logsSteps() ? answeredName(message, flowHash) : std::nullopt;
  NSLogStep("handleInBoundDatagram -> starting write datagrams,hash = ", flowHash);
  auto answer = serializedAgain(message, std::move(received));
  NSLogStep("modified msg = ", Lazily([&message] {
              return message ? std::optional(message->debugDescription()) : std::nullopt;
            }));
  if (report) {
    report->url = std::move(url);
    logTiming(*report, flowHash, message);
  }
  reports_.erase(std::to_string(flowHash));
  return answer;
}

/// A copy of the flow's report that ends now.
std::optional<DNSFlowReport> ResponsePath::endedReport(const std::string& key) const {
  const auto found = reports_.find(key);
  if (found == reports_.end()) {
    return std::nullopt;
  }
  auto report = found->second;
  report.endTimestamp = platform::DispatchTime::now();
  return report;
}

void ResponsePath::write(Answer answer, std::shared_ptr<const void> owner) {
  std::vector<Data> datagrams;
  datagrams.push_back(*std::exchange(answer.datagram, std::nullopt));
  const auto flow = answer.flow;
  const auto endpoint = answer.endpoint;
  flow->writeDatagrams(
      std::move(datagrams), {endpoint},
      [this, owner = std::move(owner), answer = std::move(answer)](
          const std::optional<Error>& writeError) { written(answer, writeError); });
}

void ResponsePath::written(const Answer& answer, const std::optional<Error>& writeError) {
  NSLogStep("handleInBoundDatagram -> write datagrams, hash  = ", answer.hash(),
            ", hasError = ", writeError.has_value());
  if (writeError) {
    registry_.addErrorToFlow(*answer.flow, ErrorBreakpoint::writingAnswer);
  }
  if (answer.isFinished) {
    registry_.flowWasHandled(*answer.flow, platform::description(answer.error));
    answer.flow->closeReadWithError(answer.error);
    answer.flow->closeWriteWithError(answer.error);
  }
}

}  // namespace quillet
