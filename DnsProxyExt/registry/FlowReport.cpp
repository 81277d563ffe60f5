#include "DnsProxyExt/registry/FlowReport.h"

#include <limits>
#include <utility>

#include "DnsProxyExt/registry/FlowManager.h"
#include "platform/base/Clock.h"
#include "platform/base/LetterCase.h"

namespace quillet {

FlowReport::FlowReport(const FlowManager& registry, ReportSettings settings)
    : registry_(&registry),
      settings_(std::move(settings)),
      start_(platform::secondsSince1970()),
      next_(std::numeric_limits<std::int64_t>::min()),
      end_(registry.flows().empty() ? next_ : registry.flows().rbegin()->first + 1) {}

bool FlowReport::print(std::size_t flows, const LineSink& sink) {
  if (!std::exchange(hasHead_, true)) {
    printHead(sink);
  }
  auto entry = registry_->flows().lower_bound(next_);
  for (; entry != registry_->flows().end() && entry->first < end_; ++entry) {
    next_ = entry->first;
    if (flows-- == 0) {
      return true;
    }
    if (isWanted(*entry->second)) {
      sink.print("flow hash is ", entry->first);
      entry->second->printReport(settings_, sink);
    }
  }
  sink.print("----< end of flow manager report >----");
  return false;
}

void FlowReport::printHead(const LineSink& sink) const {
  sink.print("----> start of flow manager report <----");
  sink.print("Report settings - package: ", settings_.package, ", tf: ", settings_.forLastSecs,
             ", detailed:  ", settings_.detailed);
}

bool FlowReport::isWanted(const ManagedFlow& record) const {
  if (settings_.forLastSecs &&
      start_ - record.startTimestamp > static_cast<double>(*settings_.forLastSecs)) {
    return false;
  }
  if (!settings_.package) {
    return true;
  }
  const auto sender = platform::caseFolded(record.flow->metaData().sourceAppSigningIdentifier);
  return sender.find(platform::caseFolded(*settings_.package)) != std::string::npos;
}

}  // namespace quillet
