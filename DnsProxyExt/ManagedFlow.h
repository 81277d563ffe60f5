#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DnsProxyExt/ReportSettings.h"
#include "dns_tools/Message.h"
#include "platform/foundation/Data.h"
#include "platform/networkextension/NEAppProxyUDPFlow.h"

namespace quillet {

/// Where in the life of a flow an error came up; printed in the flow's error entries.
enum class ErrorBreakpoint { writingAnswer = 0, upstream = 1, openingFlow = 3, readingFlow = 5 };

/// What the registry knows of one flow. Keeps the flow alive.
class ManagedFlow {
 public:
  explicit ManagedFlow(std::shared_ptr<platform::NEAppProxyUDPFlow> managed);

  /// Appends an error entry with the current time.
  void addError(ErrorBreakpoint breakpoint);

  /// Logs the flow's lines of the flow-manager report.
  void printReport(const ReportSettings& settings) const;

  /// Octets that the queries of one read take, decoded messages included, never too low.
  static std::size_t costOf(const std::vector<platform::Data>& datagrams);

  const std::shared_ptr<platform::NEAppProxyUDPFlow> flow;
  /// Seconds since 1970.
  const double startTimestamp;
  /// Seconds since 1970; 0 until the flow was handled.
  double endTimestamp = 0;
  std::vector<std::string> errors;
  bool isFinished = false;
  /// One entry for each datagram read, absent when it could not be decoded.
  std::vector<std::optional<DnsToolsSocket::Message>> reqMessages;
  std::optional<std::string> url;
  /// The datagrams of the last read.
  std::optional<std::vector<platform::Data>> rawReqData;
  /// What all queries read take, octets.
  std::size_t cost = 0;

 private:
  [[nodiscard]] std::string answeredName() const;
  void printDetails() const;
};

}  // namespace quillet
