// Cost of taking samples into a value buffer and of copying its history out.
//
// values_append/<order>: one iteration stores 100000 samples, the new values emptied every 100
// samples as a paint does. The rival holds the values in the containers of the standard library.
// The limit is the plain store of the values into an array with wrap.
// values_copy_out: one iteration copies the last 1000000 samples.
//
// The counter ns_per_item is the time per sample.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "bench/bench_common.h"
#include "graph/values/graph_value.h"

namespace {

constexpr double kCycleTime = 0.001;
constexpr double kTimeRange = 10.0;
constexpr std::size_t kCapacity = 10000;
constexpr std::size_t kBatch = 100;
constexpr std::size_t kBatches = 1000;
constexpr std::size_t kSamples = kBatch * kBatches;
constexpr std::size_t kCopied = 1000000;

/// Batches of a moving axis; few enough to stay in the nearest cache.
constexpr std::size_t kSourceBatches = 10;
const std::vector<double>& Source() {
    static const std::vector<double> source = [] {
        std::vector<double> samples(kBatch * kSourceBatches);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = 100.0 * std::sin(static_cast<double>(i) * 0.01);
        }
        return samples;
    }();
    return source;
}

const double* BatchSource(std::size_t batch) {
    return Source().data() + batch % kSourceBatches * kBatch;
}

/// As the acquisition does it: one column of a batch of lines at once.
void AppendOurs(benchmark::State& state, int order) {
    wavo::GraphValue value("X", kCycleTime, kTimeRange, order);
    for (auto _ : state) {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            value.SetValues(BatchSource(batch), kBatch, 1);
            value.EmptyNewValues();
        }
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(value.LatestTime());
    wavo::bench::SetTimePerItem(state, kSamples);
}

/// Sample by sample.
void AppendOursEach(benchmark::State& state, int order) {
    wavo::GraphValue value("X", kCycleTime, kTimeRange, order);
    for (auto _ : state) {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const double* samples = BatchSource(batch);
            for (std::size_t i = 0; i < kBatch; ++i) {
                value.SetValue(samples[i]);
            }
            value.EmptyNewValues();
        }
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(value.LatestTime());
    wavo::bench::SetTimePerItem(state, kSamples);
}

/// The same work with containers of the standard library.
class DequeValue {
 public:
    explicit DequeValue(int order) : m_order(static_cast<std::size_t>(order)) {}

    void SetValue(double sample) {
        if (m_order >= 1 && !Derive(sample)) {
            sample = 0.0;
        }
        if (m_new_values.size() > kCapacity) {
            return;
        }
        if (m_new_values.empty()) {
            m_first_new_index = m_total_count;
        }
        m_new_values.push_back(sample);
        if (m_values.size() >= kCapacity) {
            m_values.pop_front();
            m_dropped_count += 1.0;
        }
        m_pushed_count += 1.0;
        m_total_count += 1.0;
        m_values.push_back(sample);
    }

    void EmptyNewValues() { m_new_values.clear(); }
    [[nodiscard]] double LatestTime() const { return m_pushed_count * kCycleTime; }

 private:
    bool Derive(double& sample) {
        m_history.push_back(sample);
        if (m_history.size() < m_order + 1) {
            return false;
        }
        if (m_history.size() > m_order + 1) {
            m_history.pop_front();
        }
        double sum = m_history[m_order] - m_history[m_order - 1];
        double divisor = kCycleTime;
        for (std::size_t i = m_order - 1; i >= 1; --i) {
            sum -= m_history[i] - m_history[i - 1];
            divisor *= kCycleTime;
        }
        sample = sum / divisor;
        return true;
    }

    std::size_t m_order;
    std::deque<double> m_values;
    std::vector<double> m_new_values;
    std::deque<double> m_history;
    double m_first_new_index = 0.0;
    double m_dropped_count = 0.0;
    double m_pushed_count = 0.0;
    double m_total_count = 0.0;
};

void AppendRival(benchmark::State& state, int order) {
    DequeValue value(order);
    for (auto _ : state) {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const double* samples = BatchSource(batch);
            for (std::size_t i = 0; i < kBatch; ++i) {
                value.SetValue(samples[i]);
            }
            value.EmptyNewValues();
        }
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(value.LatestTime());
    wavo::bench::SetTimePerItem(state, kSamples);
    state.SetLabel("deque + vector");
}

void AppendLimit(benchmark::State& state) {
    std::vector<double> ring(kCapacity);
    double* data = ring.data();
    benchmark::DoNotOptimize(data);
    std::size_t slot = 0;
    for (auto _ : state) {
        for (std::size_t batch = 0; batch < kBatches; ++batch) {
            const double* samples = BatchSource(batch);
            for (std::size_t i = 0; i < kBatch; ++i) {
                data[slot] = samples[i];
                if (++slot == kCapacity) {
                    slot = 0;
                }
            }
        }
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(slot);
    wavo::bench::SetTimePerItem(state, kSamples);
    state.SetLabel("plain store");
}

/// Samples that a copied history is filled with: the ring has wrapped in its middle.
constexpr std::size_t kFilled = kCopied + kCopied / 2;

void CopyOutOurs(benchmark::State& state) {
    const double time_range = static_cast<double>(kCopied) * kCycleTime;
    wavo::GraphValue value("X", kCycleTime, time_range, 0);
    for (std::size_t i = 0; i < kFilled; ++i) {
        value.SetValue(static_cast<double>(i));
        if (i % kBatch == 0) {
            value.EmptyNewValues();
        }
    }
    std::vector<double> out;
    double start_time = 0.0;
    for (auto _ : state) {
        value.GetTimeRangeValues(out, time_range + 1.0, start_time);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    if (out.size() < kCopied - 1 || out.back() != static_cast<double>(kFilled - 1)) {
        state.SkipWithError("not the last samples");
    }
    wavo::bench::SetTimePerItem(state, kCopied);
}

void CopyOutRival(benchmark::State& state) {
    std::deque<double> values;
    for (std::size_t i = 0; i < kFilled; ++i) {
        if (values.size() == kCopied) {
            values.pop_front();
        }
        values.push_back(static_cast<double>(i));
    }
    std::vector<double> out;
    for (auto _ : state) {
        out.clear();
        out.reserve(kCopied);
        out.insert(out.end(), values.begin(), values.end());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kCopied);
    state.SetLabel("deque copy");
}

void CopyOutLimit(benchmark::State& state) {
    std::vector<double> values(kCopied);
    for (std::size_t i = 0; i < kCopied; ++i) {
        values[i] = static_cast<double>(i);
    }
    std::vector<double> out(kCopied);
    for (auto _ : state) {
        std::memcpy(out.data(), values.data(), kCopied * sizeof(double));
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kCopied);
    state.SetLabel("memcpy");
}

}  // namespace

BENCHMARK_CAPTURE(AppendOurs, 0, 0)->Name("values_append/0/ours");
BENCHMARK_CAPTURE(AppendOursEach, 0, 0)->Name("values_append/0/ours_each");
BENCHMARK_CAPTURE(AppendRival, 0, 0)->Name("values_append/0/rival");
BENCHMARK(AppendLimit)->Name("values_append/0/limit");
BENCHMARK_CAPTURE(AppendOurs, 1, 1)->Name("values_append/1/ours");
BENCHMARK_CAPTURE(AppendOursEach, 1, 1)->Name("values_append/1/ours_each");
BENCHMARK_CAPTURE(AppendRival, 1, 1)->Name("values_append/1/rival");
BENCHMARK(AppendLimit)->Name("values_append/1/limit");
BENCHMARK_CAPTURE(AppendOurs, 2, 2)->Name("values_append/2/ours");
BENCHMARK_CAPTURE(AppendOursEach, 2, 2)->Name("values_append/2/ours_each");
BENCHMARK_CAPTURE(AppendRival, 2, 2)->Name("values_append/2/rival");
BENCHMARK(AppendLimit)->Name("values_append/2/limit");
BENCHMARK(CopyOutOurs)->Name("values_copy_out/ours");
BENCHMARK(CopyOutRival)->Name("values_copy_out/rival");
BENCHMARK(CopyOutLimit)->Name("values_copy_out/limit");

BENCHMARK_MAIN();
