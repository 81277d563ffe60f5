#include "DnsProxyExt/registry/FlowManager.h"

#include <algorithm>

#include "DnsProxyExt/registry/FlowReport.h"
#include "platform/base/Clock.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::NEAppProxyUDPFlow;
using platform::NSLog;
using platform::NSLogStep;

bool FlowManager::addFlowIfNew(const std::shared_ptr<NEAppProxyUDPFlow>& flow) {
  NSLogStep("flows count = ", flows_.size());
  if (flows_.contains(flow->hash())) {
    return true;
  }
  flows_.emplace(flow->hash(), std::make_unique<ManagedFlow>(flow));
  dropBeyondBounds();
  return false;
}

void FlowManager::addErrorToFlow(const NEAppProxyUDPFlow& flow, ErrorBreakpoint breakpoint) {
  if (auto* record = find(flow)) {
    record->addError(breakpoint);
  } else {
    NSLog("***Critical: FlowManager -> addErrorToFlow is nil");
  }
}

void FlowManager::flowWasHandled(const NEAppProxyUDPFlow& flow, std::string error) {
  auto* record = find(flow);
  if (record == nullptr) {
    NSLog("***Critical: FlowManager -> flowWasHandled is nil");
    return;
  }
  record->errors.push_back(std::move(error));
  record->endTimestamp = platform::secondsSince1970();
  if (!record->isFinished) {
    record->isFinished = true;
    finished_.push_back(flow.hash());
    dropBeyondBounds();
  }
}

void FlowManager::addRequest(const NEAppProxyUDPFlow& flow, std::vector<platform::Data> datagrams,
                             std::vector<std::optional<DnsToolsSocket::Message>> messages) {
  auto* record = find(flow);
  if (record == nullptr) {
    return;
  }
  cost_ -= record->cost();
  record->addRequest(std::move(datagrams), std::move(messages));
  cost_ += record->cost();
  dropBeyondBounds();
}

void FlowManager::printFlowReport(const ReportSettings& settings) const {
  FlowReport(*this, settings).print(flows_.size(), LineSink::log());
}

ManagedFlow* FlowManager::find(const NEAppProxyUDPFlow& flow) const {
  const auto record = flows_.find(flow.hash());
  return record == flows_.end() ? nullptr : record->second.get();
}

void FlowManager::dropBeyondBounds() {
  const auto isTooCostly = [this] { return cost_ > kMaxCost; };
  while (finished_.size() > kMaxFinished || (isTooCostly() && !finished_.empty())) {
    drop(flows_.find(finished_.front()));
    finished_.pop_front();
  }
  while (flows_.size() - finished_.size() > kMaxUnfinished ||
         (isTooCostly() && flows_.size() > 1)) {
    drop(std::find_if(flows_.begin(), flows_.end(),
                      [](const auto& entry) { return !entry.second->isFinished; }));
  }
}

void FlowManager::drop(std::map<FlowKey, std::unique_ptr<ManagedFlow>>::iterator record) {
  cost_ -= record->second->cost();
  flows_.erase(record);
}

}  // namespace quillet
