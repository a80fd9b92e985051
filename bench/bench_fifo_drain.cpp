// Draining a backlog out of a line FIFO, ns per line.
//
// fifo_drain/<doubles per line>: one iteration drains 1023 waiting lines, with the full fence and
// the index per line that the protocol asks for. The rival pops the same lines from boost's
// single-producer single-consumer queue. The limit is one memcpy of the same bytes per line, in the
// same order. Filling is not timed.
#include <benchmark/benchmark.h>

#include <array>
#include <boost/lockfree/spsc_queue.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/bench_common.h"
#include "link/line_fifo.h"

namespace {

constexpr std::uint64_t kLines = 1024;
constexpr std::uint64_t kBacklog = kLines - 1;

/// A FIFO segment in ordinary memory, filled as a master would.
class Segment {
 public:
    explicit Segment(std::size_t doubles)
        : m_memory(8 + kLines * doubles), m_line_size(doubles * sizeof(double)) {
        auto* const header = Header();
        header->line_size = m_line_size;
        header->line_count = kLines;
        for (std::size_t i = 8; i < m_memory.size(); ++i) {
            m_memory[i] = static_cast<double>(i);
        }
    }
    wavo::LineFifoHeader* Header() {
        return reinterpret_cast<wavo::LineFifoHeader*>(m_memory.data());
    }
    [[nodiscard]] std::uint64_t Size() const { return m_memory.size() * sizeof(double); }
    /// Makes the largest backlog wait again.
    void Refill() {
        wavo::LineFifoHeader* const header = Header();
        header->write_index = (header->read_index + kBacklog) % kLines;
    }

 private:
    std::vector<double> m_memory;
    std::size_t m_line_size;
};

void DrainOurs(benchmark::State& state, std::size_t doubles) {
    Segment segment(doubles);
    wavo::LineFifo fifo;
    if (!wavo::MMemLineFifo_Link(segment.Header(), segment.Size(), fifo)) {
        state.SkipWithError("the FIFO could not be linked");
        return;
    }
    std::vector<double> buffer(kBacklog * doubles);
    for (auto _ : state) {
        segment.Refill();
        if (wavo::MMemLineFifo_Read(fifo, buffer.data(), doubles * sizeof(double), kBacklog) !=
            kBacklog) {
            state.SkipWithError("a line is missing");
            return;
        }
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kBacklog);
}

template <std::size_t kDoubles>
void DrainRival(benchmark::State& state) {
    using Line = std::array<double, kDoubles>;
    auto queue =
        std::make_unique<boost::lockfree::spsc_queue<Line, boost::lockfree::capacity<kLines>>>();
    std::vector<Line> buffer(kBacklog);
    Line line{};
    for (auto _ : state) {
        state.PauseTiming();
        while (queue->push(line)) {
            line[0] += 1.0;
        }
        state.ResumeTiming();
        for (std::uint64_t i = 0; i < kBacklog; ++i) {
            if (!queue->pop(buffer[i])) {
                state.SkipWithError("a line is missing");
                return;
            }
        }
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kBacklog);
    state.SetLabel("boost spsc_queue pop");
}

template <std::size_t kDoubles>
void DrainLimit(benchmark::State& state) {
    const std::vector<double> source(kLines * kDoubles, 1.0);
    std::vector<double> buffer(kBacklog * kDoubles);
    // Short copies are fastest in place, long ones in the library.
    std::size_t length = kDoubles * sizeof(double);
    if (kDoubles > 16) {
        benchmark::DoNotOptimize(length);
    }
    for (auto _ : state) {
        for (std::uint64_t i = 0; i < kBacklog; ++i) {
            std::memcpy(buffer.data() + i * kDoubles, source.data() + i * kDoubles, length);
        }
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kBacklog);
    state.SetLabel("memcpy");
}

[[maybe_unused]] const bool g_registered = [] {
    benchmark::RegisterBenchmark("fifo_drain/8/ours", DrainOurs, 8);
    benchmark::RegisterBenchmark("fifo_drain/8/rival", DrainRival<8>);
    benchmark::RegisterBenchmark("fifo_drain/8/limit", DrainLimit<8>);
    benchmark::RegisterBenchmark("fifo_drain/64/ours", DrainOurs, 64);
    benchmark::RegisterBenchmark("fifo_drain/64/rival", DrainRival<64>);
    benchmark::RegisterBenchmark("fifo_drain/64/limit", DrainLimit<64>);
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
