#include "control/AnswerTimes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace quillet {

namespace {

constexpr std::size_t kParts = 16;  // of a power of two
constexpr unsigned kPartBits = 4;

/// Below 16 each number has a bucket of its own.
std::size_t bucketOf(std::uint64_t number) {
  if (number < kParts) {
    return number;
  }
  const auto exponent = static_cast<unsigned>(std::bit_width(number)) - 1;
  return (exponent - kPartBits) * kParts + (number >> (exponent - kPartBits));
}

/// The least number of a bucket.
std::uint64_t startOf(std::size_t bucket) {
  if (bucket < kParts) {
    return bucket;
  }
  return (kParts + bucket % kParts) << (bucket / kParts - 1);
}

}  // namespace

// Of the microseconds that were begun the last one is left away, so that a bucket holds its upper
// bound and not its lower one.
void AnswerTimes::add(double milliseconds) {
  constexpr double kMost = static_cast<double>(std::uint64_t{1} << kMaxExponent);
  const auto begun = std::clamp(std::ceil(milliseconds * 1000), 1.0, kMost);
  ++buckets_[bucketOf(static_cast<std::uint64_t>(begun) - 1)];
  ++count_;
  sumSeconds_ += std::max(milliseconds, 0.0) / 1000;
}

std::optional<double> AnswerTimes::quantile(double share) const {
  if (count_ == 0) {
    return std::nullopt;
  }
  const auto rank = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(count_)));
  std::size_t bucket = 0;
  for (auto seen = buckets_[0]; seen < rank; seen += buckets_[bucket]) {
    ++bucket;
  }
  return static_cast<double>(startOf(bucket) + startOf(bucket + 1)) / 2 / 1000;
}

std::uint64_t AnswerTimes::countUpTo(unsigned exponent) const {
  const auto end = static_cast<std::ptrdiff_t>(bucketOf(std::uint64_t{1} << exponent));
  return std::accumulate(buckets_.begin(), buckets_.begin() + end, std::uint64_t{0});
}

}  // namespace quillet
