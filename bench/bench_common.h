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

/// Reports an amount of memory as the counter bytes_per_item. Such a benchmark has no time.
inline void SetBytesPerItem(benchmark::State& state, double bytes) {
    state.counters["bytes_per_item"] = bytes;
}

/// Reports the part of one core that is busy, percent, as the counter percent_of_core, when an
/// iteration is the work of `seconds`.
inline void SetShareOfCore(benchmark::State& state, double seconds) {
    state.counters["percent_of_core"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * seconds * 0.01,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace wavo::bench
