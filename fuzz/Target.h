#pragma once

#include <cstdint>
#include <cstdlib>

#include "platform/base/Data.h"

namespace quillet::fuzz {

/// Ends a fuzz run where a property does not hold.
inline void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/// What the target does with one input. Each target includes this header once and defines it.
void run(platform::DataView input);

}  // namespace quillet::fuzz

// A target is one translation unit. NOLINTNEXTLINE(misc-definitions-in-headers)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quillet::fuzz::run({data, size});
  return 0;
}
