#include "DnsProxyExt/registry/KeptReport.h"

#include <utility>

namespace quillet {

KeptReport::KeptReport(std::shared_ptr<DNSFlowReports> reports, std::int64_t flowHash,
                       DNSFlowReport report)
    : reports_(std::move(reports)), key_(std::to_string(flowHash)) {
  report.keeper = this;
  reports_->insert_or_assign(key_, std::move(report));
}

KeptReport::~KeptReport() {
  const auto kept = reports_->find(key_);
  if (kept != reports_->end() && kept->second.keeper == this) {
    reports_->erase(kept);
  }
}

}  // namespace quillet
