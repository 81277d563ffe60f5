#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "DnsProxyExt/registry/DNSFlowReport.h"

namespace quillet {

/// Keeps the report of an exchange, in place of an earlier one of the same flow. One that is not
/// answered stays when its exchange is over, which this goes with; of those the oldest goes when
/// there are too many.
class KeptReport {
 public:
  /// Reports of exchanges that are over without an answer. One costs some 200 octets, and a key in
  /// a log line of every answer.
  static constexpr std::ptrdiff_t kMaxUnanswered = 16;

  KeptReport(std::shared_ptr<DNSFlowReports> reports, std::int64_t flowHash, DNSFlowReport report);
  ~KeptReport();
  KeptReport(const KeptReport&) = delete;
  KeptReport& operator=(const KeptReport&) = delete;

 private:
  const std::shared_ptr<DNSFlowReports> reports_;
  const std::string key_;
};

}  // namespace quillet
