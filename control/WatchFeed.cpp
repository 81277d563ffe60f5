#include "control/WatchFeed.h"

#include <algorithm>
#include <utility>

#include "queries/Mnemonics.h"

namespace quillet {

using platform::JSONObject;
using platform::JSONRPCSubscriber;
using platform::JSONValue;

namespace {

JSONValue mnemonic(const std::optional<std::uint16_t>& code, std::string (*name)(std::uint16_t)) {
  return code ? JSONValue(name(*code)) : JSONValue(nullptr);
}

std::string lineOf(const QueryOutcome& outcome) {
  return platform::jsonRPCNotificationLine(
      "query", JSONObject{{"name", outcome.name ? JSONValue(*outcome.name) : JSONValue(nullptr)},
                          {"type", mnemonic(outcome.type, typeMnemonic)},
                          {"app", outcome.application},
                          {"rule", outcome.rule},
                          {"server", outcome.server},
                          {"rcode", mnemonic(outcome.rcode, rcodeMnemonic)},
                          {"ms", outcome.milliseconds}});
}

}  // namespace

void WatchFeed::add(const std::shared_ptr<JSONRPCSubscriber>& watcher) {
  const auto isSame = [&](const auto& other) { return other.lock() == watcher; };
  if (std::none_of(watchers_.begin(), watchers_.end(), isSame)) {
    watchers_.push_back(watcher);
  }
}

void WatchFeed::tell(const QueryOutcome& outcome) {
  if (watchers_.empty()) {
    return;
  }
  lines_ += lineOf(outcome);
  ++count_;
  if (lines_.size() >= kMaxGathered) {
    send();
  } else if (!sending_.isValid()) {
    sending_ = platform::Timer::scheduled(kGatheringSeconds, false, [this] { send(); });
  }
}

void WatchFeed::send() {
  sending_.invalidate();
  const auto lines = std::exchange(lines_, {});
  const auto count = std::exchange(count_, 0);
  std::erase_if(watchers_, [&](const auto& weak) {
    const auto watcher = weak.lock();
    if (watcher) {
      watcher->notify(lines, count);
    }
    return watcher == nullptr;
  });
}

}  // namespace quillet
