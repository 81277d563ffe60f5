#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "DnsProxyExt/registry/DNSFlowReport.h"

namespace quillet {

/// Keeps the report of an exchange, in place of an earlier one of the same flow, and takes it away
/// with the last handler of the exchange, unless it has been answered or replaced before.
class KeptReport {
 public:
  KeptReport(std::shared_ptr<DNSFlowReports> reports, std::int64_t flowHash, DNSFlowReport report);
  ~KeptReport();
  KeptReport(const KeptReport&) = delete;
  KeptReport& operator=(const KeptReport&) = delete;

 private:
  const std::shared_ptr<DNSFlowReports> reports_;
  const std::string key_;
};

}  // namespace quillet
