#pragma once

#include <cstdlib>

namespace quillet {

/// Ends a fuzz run where a property does not hold.
inline void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace quillet
