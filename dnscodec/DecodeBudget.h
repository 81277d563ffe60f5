#pragma once

#include <cstddef>

namespace quillet {

/// What decoding one message may cost, so that names which point at each other cannot multiply its
/// few octets into much text or much time: each octet of a name costs one, each pointer followed
/// `kPointerCost`.
class DecodeBudget {
 public:
  /// Four times the largest datagram. A message without pointers costs no more than its size.
  static constexpr std::size_t kTotal = 256UL * 1024;
  static constexpr std::size_t kPointerCost = 16;

  /// Takes `cost` off what is left; false when there is not enough.
  bool charge(std::size_t cost) {
    if (cost > left_) {
      return false;
    }
    left_ -= cost;
    return true;
  }

 private:
  std::size_t left_ = kTotal;
};

}  // namespace quillet
