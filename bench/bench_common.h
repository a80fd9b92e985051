// What all benchmarks report in the same way.
//
// Names: <benchmark>/ours, <benchmark>/rival, <benchmark>/limit, run in one program so that their
// ratio holds. Rival and limit are named by their label.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace wavo::bench {

/// Reports the time per item as the counter ns_per_item, in nanoseconds.
inline void SetTimePerItem(benchmark::State& state, std::size_t items_per_iteration) {
    // Inverted rate of items counted in thousands of millions: nanoseconds per item.
    state.counters["ns_per_item"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(items_per_iteration) * 1e-9,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace wavo::bench
