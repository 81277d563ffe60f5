#include "bench/Allocations.h"

#include <cstdlib>
#include <new>

std::size_t quillet::bench::allocations = 0;

// NOLINTBEGIN(cppcoreguidelines-no-malloc): what they stand for
void* operator new(std::size_t size) {
  ++quillet::bench::allocations;
  if (void* const memory = std::malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
// NOLINTEND(cppcoreguidelines-no-malloc)
