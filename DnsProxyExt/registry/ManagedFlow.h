#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DnsProxyExt/registry/LineSink.h"
#include "DnsProxyExt/registry/ReportSettings.h"
#include "dns_tools/Message.h"
#include "platform/base/Data.h"
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

  /// Prints the flow's lines of the flow-manager report.
  void printReport(const ReportSettings& settings, const LineSink& sink) const;

  /// Keeps what was read: replaces the datagrams, appends the messages.
  void addRequest(std::vector<platform::Data> datagrams,
                  std::vector<std::optional<DnsToolsSocket::Message>> messages);

  /// Octets that datagrams and messages take.
  [[nodiscard]] std::size_t cost() const { return datagramsCost_ + messagesCost_; }

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

 private:
  [[nodiscard]] std::string answeredName() const;
  void printDetails(const LineSink& sink) const;

  std::size_t datagramsCost_ = 0;
  std::size_t messagesCost_ = 0;
};

}  // namespace quillet
