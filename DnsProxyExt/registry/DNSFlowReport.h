#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/base/Clock.h"

namespace quillet {

/// The timing of one routed batch, from routing to its first answer.
struct DNSFlowReport {
  std::optional<platform::DispatchTime> startTimestamp;
  std::optional<platform::DispatchTime> endTimestamp;
  std::optional<platform::DispatchTime> dataWasSent;
  /// Owner name of the first answer record.
  std::optional<std::string> url;
  /// Address of the server chosen.
  std::optional<std::string> dnsServer;
  /// Tells the exchanges of one flow apart; none once the exchange is over.
  const void* keeper = nullptr;

  /// A report that begins now, for a batch on its way to `dnsServer`.
  static DNSFlowReport startingNow(std::string dnsServer);

  /// From start to end; 0 unless both are set.
  [[nodiscard]] double milliseconds() const;
};

/// Orders decimal numbers without leading zeros by their value, so the oldest flow key comes first.
struct DecimalOrder {
  bool operator()(const std::string& left, const std::string& right) const {
    return left.size() != right.size() ? left.size() < right.size() : left < right;
  }
};

/// The reports of batches that have no answer yet, by flow key in decimal.
using DNSFlowReports = std::map<std::string, DNSFlowReport, DecimalOrder>;

}  // namespace quillet
