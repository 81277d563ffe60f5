#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace quillet::bench {

/// How often `operator new` was called.
extern std::size_t allocations;

/// Shows the allocations of one iteration beside the times, when the benchmark ends.
class CountedAllocations {
 public:
  explicit CountedAllocations(benchmark::State& state) : state_(state), before_(allocations) {}
  ~CountedAllocations() {
    state_.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations - before_),
                                                        benchmark::Counter::kAvgIterations);
  }
  CountedAllocations(const CountedAllocations&) = delete;
  CountedAllocations& operator=(const CountedAllocations&) = delete;
  CountedAllocations(CountedAllocations&&) = delete;
  CountedAllocations& operator=(CountedAllocations&&) = delete;

 private:
  benchmark::State& state_;
  std::size_t before_;
};

}  // namespace quillet::bench
