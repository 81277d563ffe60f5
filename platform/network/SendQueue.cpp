#include "platform/network/SendQueue.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/dispatch/RunGuarded.h"

namespace platform {

namespace {

// Refusals held for receives to come; more of them tell nothing new.
constexpr std::size_t kMaxHeldRefusals = 64;

bool isRefusal(std::error_code error) { return error == std::errc::connection_refused; }

}  // namespace

void SendQueue::send(Data content, Completion completion) {
  if (!isLink || !hasEnded() || isWaiting()) {
    sendAlone(std::move(content), std::move(completion));
    return;
  }
  collected_.push_back({std::move(content), std::move(completion)});
  if (collected_.size() == UDPSocket::kMaxTogether) {
    sendCollected();
  }
}

/// One that ends the sending of many is sent alone, which tells its error, or waits with those
/// after it.
void SendQueue::sendCollected() {
  auto collected = std::exchange(collected_, {});
  for (std::span<Collected> left = collected; !left.empty();) {
    const auto [count, error] = sendTogether(left);
    for (auto& [content, completion] : left.first(count)) {
      end(std::move(completion), std::nullopt);
    }
    isPeerGone_ = isPeerGone_ || isRefusal(error);
    left = left.subspan(count);
    if (!left.empty()) {
      sendAlone(std::move(left.front().content), std::move(left.front().completion));
      left = left.subspan(1);
    }
  }
}

UDPSocket::Sent SendQueue::sendTogether(std::span<const Collected> collected) {
  if (isPeerGone_ || isWaiting() || collected.size() < 2) {
    return {};
  }
  std::array<DataView, UDPSocket::kMaxTogether> datagrams;
  std::transform(collected.begin(), collected.end(), datagrams.begin(),
                 [](const Collected& one) { return DataView(one.content); });
  return socket_.sendTogether(std::span(datagrams).first(collected.size()));
}

void SendQueue::sendAlone(Data content, Completion completion) {
  waiting_.send([this, content = std::move(content)] { return attempt(content); },
                [this, completion = std::move(completion)](std::error_code error) mutable {
                  end(std::move(completion), NWError::ifAny(error));
                });
}

void SendQueue::end(Completion completion, std::optional<NWError> error) {
  ended_.push_back({std::move(completion), error});
}

void SendQueue::report() {
  isPeerGone_ = false;
  if (isLink && socket_.isOpen()) {
    socket_.dropRefusal();
  }
  for (const auto& [completion, error] : std::exchange(ended_, {})) {
    if (completion) {
      runGuarded([&send = completion, &outcome = error] { send(outcome); });
    }
  }
}

/// The error of a send may be of an earlier datagram: the kernel hands out what the network has
/// answered with the next call, which then has sent nothing. A refusal is always of an earlier one;
/// another error is, unless a second attempt fails in the same way. What is of an earlier one is
/// held for a receive, and the second attempt decides about this datagram. When that is refused
/// too, some more of the earlier ones were, and this one is lost as they are.
///
/// On a link, a refusal that comes while sends are unreported is of one of those. Their like would
/// be refused as well, so the rest of them is counted as lost without an attempt.
std::error_code SendQueue::attempt(DataView content) {
  if (isPeerGone_) {
    return {};
  }
  const auto error = socket_.send(content);
  if (!error || UDPSocket::wouldBlock(error)) {
    return error;
  }
  isPeerGone_ = isLink && isRefusal(error) && hasEnded();
  if (isPeerGone_) {
    return {};
  }
  const auto again = socket_.send(content);
  if (isRefusal(error) || error != again) {
    holdForReceive(error);
  }
  return isRefusal(again) ? std::error_code() : again;
}

void SendQueue::holdForReceive(std::error_code error) {
  if (!isLink && receives_.held().size() < kMaxHeldRefusals) {
    receives_.hold({std::nullopt, NWError::from(error)});
  }
}

}  // namespace platform
