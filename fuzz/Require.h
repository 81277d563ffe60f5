#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace quillet::fuzz {

/// Ends a fuzz run where a property does not hold.
inline void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace quillet::fuzz
