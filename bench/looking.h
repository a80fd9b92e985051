// What the benchmarks have in common that look at recordings.
#pragma once

#include <benchmark/benchmark.h>

#include <QSize>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "bench/long_recording.h"
#include "graph/model/wavo_graph.h"

namespace wavo::bench {

inline constexpr std::size_t kLookedCurves = 8;
inline constexpr QSize kLookedSize(1600, 900);
/// Samples of the recordings.
inline constexpr std::int64_t kLookedSizes[] = {1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

/// A graph over time of kLookedCurves recorded axes.
WavoGraph MakeLookedAt();

/// A recording of so many samples, made when it is first asked for.
const LongRecording& RecordingOf(std::int64_t samples,
                                 LongRecording::Values values = LongRecording::Values::kSmooth);
/// "1e9" of 1000000000.
std::string DigitsOf(std::int64_t samples);
/// True, and the benchmark told so, when there is no room for the recording.
bool IsMissing(benchmark::State& state, const LongRecording& recording);
/// All of it is in memory from now on, whatever another benchmark has dropped.
void MakeWarm(const LongRecording& recording);

/// Times of single frames, in time of a processor and by the clock.
class FrameTimes {
 public:
    void Begin();
    /// A frame has ended. Returns its processor time, seconds.
    double End();
    double Measure(const std::function<void()>& frame);
    /// Time of the last one by the clock, seconds.
    [[nodiscard]] double LastByClock() const { return m_clock.back() * 1e-9; }
    /// Time per frame, 99th percentiles (in time of a processor, and by the clock), memory.
    void Report(benchmark::State& state);

 private:
    std::clock_t m_begin = 0;
    std::chrono::steady_clock::time_point m_begin_by_clock;
    std::vector<double> m_processor;  ///< ns
    std::vector<double> m_clock;      ///< ns
};

}  // namespace wavo::bench
