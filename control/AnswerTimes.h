#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace quillet {

/// How long answers took: a histogram whose buckets grow with what they hold, so that its size is
/// fixed and its error relative. Each power of two, in microseconds, is split into 16 buckets; a
/// quantile is the middle of its bucket, which is off by at most 1/32 (3.1 %), below 16
/// microseconds by at most half of one.
class AnswerTimes {
 public:
  void add(double milliseconds);

  [[nodiscard]] std::uint64_t count() const { return count_; }
  [[nodiscard]] double sumSeconds() const { return sumSeconds_; }
  /// The time within which `share` of the answers were there, in milliseconds; absent without any.
  [[nodiscard]] std::optional<double> quantile(double share) const;
  /// Answers that took at most 2 to the power of `exponent` microseconds, exactly; from 4 on.
  [[nodiscard]] std::uint64_t countUpTo(unsigned exponent) const;

 private:
  static constexpr unsigned kMaxExponent = 40;  // some twelve days; what is longer counts as that
  static constexpr std::size_t kBuckets = (kMaxExponent - std::size_t{3}) * 16;

  std::array<std::uint64_t, kBuckets> buckets_{};
  std::uint64_t count_ = 0;
  double sumSeconds_ = 0;
};

}  // namespace quillet
