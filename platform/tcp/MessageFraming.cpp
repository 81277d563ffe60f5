#include "platform/tcp/MessageFraming.h"

namespace platform {

namespace {

constexpr std::size_t kLengthSize = 2;

}  // namespace

std::optional<Data> MessageFraming::framed(DataView message) {
  if (message.size() > kMaxMessage) {
    return std::nullopt;
  }
  Data framed;
  framed.reserve(kLengthSize + message.size());
  framed.push_back(static_cast<std::uint8_t>(message.size() >> 8));
  framed.push_back(static_cast<std::uint8_t>(message.size() & 0xFF));
  framed.insert(framed.end(), message.begin(), message.end());
  return framed;
}

void MessageFraming::append(DataView octets) {
  octets_.erase(octets_.begin(), octets_.begin() + static_cast<std::ptrdiff_t>(taken_));
  taken_ = 0;
  octets_.insert(octets_.end(), octets.begin(), octets.end());
}

std::optional<Data> MessageFraming::next() {
  const auto octets = rest();
  if (octets.size() < kLengthSize) {
    return std::nullopt;
  }
  const auto length = static_cast<std::size_t>(octets[0]) << 8 | octets[1];
  if (octets.size() - kLengthSize < length) {
    return std::nullopt;
  }
  const auto message = octets.subspan(kLengthSize, length);
  Data taken(message.begin(), message.end());
  take(kLengthSize + length);
  return taken;
}

// A connection that waits for its next message holds no memory for it.
void MessageFraming::take(std::size_t count) {
  taken_ += count;
  if (taken_ == octets_.size()) {
    octets_ = {};
    taken_ = 0;
  }
}

}  // namespace platform
