#include "platform/flowhost/ApplicationMetaData.h"

#include <utility>

namespace platform {

ApplicationMetaData::ApplicationMetaData(std::string unknown)
    : unknown_(std::make_shared<NEFlowMetaData>(NEFlowMetaData{std::move(unknown)})) {}

std::shared_ptr<const NEFlowMetaData> ApplicationMetaData::of(
    std::optional<std::string_view> application) {
  if (!application) {
    return unknown_;
  }
  if (const auto found = known_.find(*application); found != known_.end()) {
    return found->second;
  }
  if (known_.size() >= kMaxCount) {
    known_.clear();
  }
  const std::string name(*application);
  return known_[name] = std::make_shared<NEFlowMetaData>(NEFlowMetaData{name});
}

}  // namespace platform
