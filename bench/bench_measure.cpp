// Cost of the figures.
//
// measure/live16: figures of 16 curves between the cursors after a batch of 100 lines, over a
// window of 1e5 samples. measure/band1e7: all figures of a band of 1e7 samples, read for the first
// time. spectrum/2^17: an
// amplitude spectrum of 131072 values. circle/1e6: the whole circle test of 1e6 lines in both
// senses. circle/parts: the longest part of a live one, beside which a batch may have to wait; its
// limit is 2 ms. contour/1e6: the contour error of 1e6 lines of two axes. match/1e6: the best match
// of 1e6 samples among 1e6.
//
// The rivals are numpy and scipy, measured by bench/rival_measure.py with the same data, except for
// the spectrum, where FFTW is linked in. The limit is one read of the samples, for the spectrum
// FFTW's transform alone.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <memory>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "measure/circle_test.h"
#include "measure/comparison.h"
#include "measure/contour_error.h"
#include "measure/spectrum.h"
#include "measure/spectrum_work.h"
#include "session/curve_reader.h"
#include "session/line_values.h"

namespace {

using wavo::measure::PlanePath;

constexpr double kCycleTime = 0.001;

/// Something that moves and never repeats, the same in bench/rival_measure.py.
std::vector<double> Moving(std::size_t count) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto at = static_cast<double>(i);
        values[i] = 100.0 * std::sin(at * 0.0123) + std::sin(at * 1.7);
    }
    return values;
}

/// The shortest loop that reads every sample: several sums, so that it waits for memory alone.
double ReadOnce(const std::vector<double>& values) {
    double sums[8] = {};
    for (std::size_t i = 0; i + 8 <= values.size(); i += 8) {
        for (std::size_t lane = 0; lane < 8; ++lane) {
            sums[lane] += values[i + lane];
        }
    }
    return sums[0] + sums[1] + sums[2] + sums[3] + sums[4] + sums[5] + sums[6] + sums[7];
}

void ReadOf(benchmark::State& state, std::size_t count, std::size_t columns) {
    const auto values = Moving(count * columns);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadOnce(values));
    }
    state.SetLabel("one read");
}

constexpr std::size_t kLiveCurves = 16;
constexpr std::size_t kLiveWindow = 100000;
constexpr std::size_t kLiveBatch = 100;

/// A buffer that holds so many samples.
wavo::GraphValue Held(std::size_t count) {
    wavo::GraphValue value("X", kCycleTime, static_cast<double>(count) * kCycleTime, 0);
    for (const double sample : Moving(count)) {
        value.SetValue(sample);
    }
    return value;
}

wavo::CurveReader ReaderOf(const wavo::GraphValue& value) {
    return {std::make_unique<wavo::BufferValues>(value), kCycleTime, 0};
}

void LiveOurs(benchmark::State& state) {
    const auto batch = Moving(kLiveBatch);
    std::vector<wavo::GraphValue> curves(kLiveCurves, Held(kLiveWindow));
    std::vector<wavo::CurveReader> readers;
    for (const auto& curve : curves) {
        readers.push_back(ReaderOf(curve));
    }
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& curve : curves) {
            curve.SetValues(batch.data(), batch.size(), 1);
            curve.EmptyNewValues();
        }
        state.ResumeTiming();
        for (auto& reader : readers) {
            const wavo::LineRange lines = reader.Lines();
            benchmark::DoNotOptimize(reader.Between(lines.begin + 1, lines.end - 2));
            benchmark::DoNotOptimize(reader.Decimals());
        }
    }
}

void BandOurs(benchmark::State& state) {
    const wavo::GraphValue value = Held(10000000);
    for (auto _ : state) {
        wavo::CurveReader reader = ReaderOf(value);  // knows nothing yet
        const wavo::LineRange lines = reader.Lines();
        benchmark::DoNotOptimize(reader.Between(lines.begin, lines.end - 1));
    }
}

void SpectrumOurs(benchmark::State& state) {
    const auto values = Moving(1U << 17U);
    wavo::measure::SpectrumWork work;
    for (auto _ : state) {
        work.Begin(0, static_cast<wavo::measure::Cycle>(values.size()), kCycleTime, {},
                   {[&values](wavo::measure::Cycle first, std::span<double> room) {
                        std::copy_n(values.begin() + first, room.size(), room.begin());
                        return true;
                    },
                    {}});
        while (work.Step()) {
        }
        const auto spectrum = work.Take();
        benchmark::DoNotOptimize(wavo::measure::PeaksOf(*spectrum, 10));
    }
}

/// FFTW with what belongs to a spectrum, or its transform alone.
void SpectrumFftw(benchmark::State& state, bool whole) {
    const auto values = Moving(1U << 17U);
    const auto window = wavo::measure::WindowOf(wavo::measure::Window::kHann, values.size());
    std::vector<double> in(values.size());
    std::vector<double> out(values.size() / 2 + 1);
    std::vector<std::complex<double>> lines(values.size() / 2 + 1);
    fftw_plan plan =
        fftw_plan_dft_r2c_1d(static_cast<int>(in.size()), in.data(),
                             reinterpret_cast<fftw_complex*>(lines.data()), FFTW_MEASURE);
    for (auto _ : state) {
        if (whole) {
            in = values;
            wavo::measure::TakeOffTrend(wavo::measure::Detrend::kLinear, in);
            for (std::size_t i = 0; i < in.size(); ++i) {
                in[i] *= window[i];
            }
        }
        fftw_execute(plan);
        for (std::size_t k = 0; whole && k < out.size(); ++k) {
            out[k] = std::sqrt(std::norm(lines[k])) / 65536.0;
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
    state.SetLabel(whole ? "FFTW3" : "FFTW3, transform alone");
}

/// A circle in both senses of so many lines: an oval, play of 5 um, some ripple.
struct CircleLines {
    std::vector<double> x, y, x_cmd, y_cmd;

    explicit CircleLines(std::size_t count) {
        constexpr double kTurns = 3.0;
        const auto half = static_cast<double>(count) / 2.0;
        for (std::size_t i = 0; i < count; ++i) {
            const double along = static_cast<double>(i) / half;
            const double sense = along < 1.0 ? 1.0 : -1.0;
            const double turned = along < 1.0 ? along : 2.0 - along;
            const double angle = turned * kTurns * 2.0 * std::numbers::pi;
            const double at = static_cast<double>(i);
            const double late = angle - sense * 0.00015;
            x_cmd.push_back(50.0 * std::cos(angle));
            y_cmd.push_back(50.0 * std::sin(angle));
            x.push_back(50.002 * std::cos(late) + 0.0003 * std::sin(at * 0.7) +
                        sense * (std::sin(late) > 0.0 ? 0.0025 : -0.0025));
            y.push_back(49.999 * std::sin(late) + 0.0003 * std::cos(at * 0.9) -
                        sense * (std::cos(late) > 0.0 ? 0.0025 : -0.0025));
        }
    }
};

void CircleOurs(benchmark::State& state) {
    const CircleLines lines(1000000);
    const PlanePath path{kCycleTime, lines.x, lines.y, lines.x_cmd, lines.y_cmd};
    for (auto _ : state) {
        const auto result = wavo::measure::TestCircle(path);
        if (result.turns.size() != 2 || !result.evaluations.front().shape) {
            state.SkipWithError("no pair of turns");
        }
    }
}

/// The longest of the parts that a live test does between two batches, us: of a slow circle at 4
/// kHz. The least of the rounds counts: others may have had the processor.
void CircleParts(benchmark::State& state) {
    const CircleLines lines(262144);
    const PlanePath path{0.00025, lines.x, lines.y, lines.x_cmd, lines.y_cmd};
    double least = 1e9;
    for (auto _ : state) {
        double longest = 0.0;
        auto steps = wavo::measure::TestCircleInSteps(path, {});
        for (bool is_more = true; is_more;) {
            const auto begin = std::chrono::steady_clock::now();
            is_more = steps.Step();
            longest = std::max(longest, std::chrono::duration<double, std::micro>(
                                            std::chrono::steady_clock::now() - begin)
                                            .count());
        }
        least = std::min(least, longest);
    }
    state.counters["longest_part_us"] = least;
}

void ContourOurs(benchmark::State& state) {
    const CircleLines lines(1000000);
    const std::vector<wavo::measure::ContourAxis> axes{{lines.x_cmd, lines.x},
                                                       {lines.y_cmd, lines.y}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            wavo::measure::ContourErrors(axes, {0, lines.x.size()}, {.reach = 15}));
    }
}

void MatchOurs(benchmark::State& state) {
    const auto values = Moving(1000000);
    for (auto _ : state) {
        benchmark::DoNotOptimize(wavo::measure::BestMatch(values, values));
    }
}

}  // namespace

BENCHMARK(LiveOurs)->Name("measure/live16/ours");
BENCHMARK_CAPTURE(ReadOf, live, kLiveWindow, kLiveCurves)->Name("measure/live16/limit");
BENCHMARK(BandOurs)->Name("measure/band1e7/ours");
BENCHMARK_CAPTURE(ReadOf, band, 10000000, 1)->Name("measure/band1e7/limit");
BENCHMARK(SpectrumOurs)->Name("spectrum/2^17/ours");
BENCHMARK_CAPTURE(SpectrumFftw, rival, true)->Name("spectrum/2^17/rival");
BENCHMARK_CAPTURE(SpectrumFftw, limit, false)->Name("spectrum/2^17/limit");
BENCHMARK(CircleOurs)->Name("circle/1e6/ours");
BENCHMARK_CAPTURE(ReadOf, circle, 1000000, 4)->Name("circle/1e6/limit");
BENCHMARK(CircleParts)->Name("circle/parts/ours");
BENCHMARK(ContourOurs)->Name("contour/1e6/ours");
BENCHMARK_CAPTURE(ReadOf, contour, 1000000, 4)->Name("contour/1e6/limit");
BENCHMARK(MatchOurs)->Name("match/1e6/ours");
BENCHMARK_CAPTURE(ReadOf, match, 1000000, 2)->Name("match/1e6/limit");

BENCHMARK_MAIN();
