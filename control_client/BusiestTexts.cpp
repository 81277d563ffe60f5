#include "control_client/BusiestTexts.h"

#include <algorithm>
#include <iterator>

namespace quilletctl {

void BusiestTexts::add(std::string_view text) {
  std::uint64_t count = 0;
  if (const auto known = counts_.find(text); known != counts_.end()) {
    count = known->second;
    order_.erase({count, known->first});
  } else if (counts_.size() == kMaxTexts) {
    const auto rarest = std::prev(order_.end());
    count = rarest->first;
    counts_.erase(rarest->second);
    order_.erase(rarest);
  }
  counts_.insert_or_assign(std::string(text), count + 1);
  order_.emplace(count + 1, text);
}

std::vector<BusiestTexts::Count> BusiestTexts::first(std::size_t limit) const {
  const auto count = std::min(limit, order_.size());
  return {order_.begin(), std::next(order_.begin(), static_cast<std::ptrdiff_t>(count))};
}

}  // namespace quilletctl
