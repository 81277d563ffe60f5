#include "DnsProxyExt/registry/KeptReport.h"

#include <algorithm>
#include <utility>

namespace quillet {

namespace {

/// Keys grow with time: the first is the oldest.
void dropOldestUnanswered(DNSFlowReports& reports) {
  const auto isUnanswered = [](const auto& entry) { return entry.second.keeper == nullptr; };
  if (std::ranges::count_if(reports, isUnanswered) > KeptReport::kMaxUnanswered) {
    reports.erase(std::ranges::find_if(reports, isUnanswered));
  }
}

}  // namespace

KeptReport::KeptReport(std::shared_ptr<DNSFlowReports> reports, std::int64_t flowHash,
                       DNSFlowReport report)
    : reports_(std::move(reports)), key_(std::to_string(flowHash)) {
  report.keeper = this;
  reports_->insert_or_assign(key_, std::move(report));
}

KeptReport::~KeptReport() {
  const auto kept = reports_->find(key_);
  if (kept != reports_->end() && kept->second.keeper == this) {
    kept->second.keeper = nullptr;
    dropOldestUnanswered(*reports_);
  }
}

}  // namespace quillet
