// Cost of computed axes.
//
// computed/4: four of them, of the eight axes of a machine, in batches of 1000 lines: per value
// that is computed, with all that a source does for it. The rival is numpy
// (bench/rival_computed.py), which has compiled loops for whole columns; the limit is the same in
// compiled C++.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "computed/computed_source.h"

namespace {

constexpr double kCycleTime = 0.001;
constexpr std::size_t kAxes = 8;
constexpr std::size_t kLines = 1000;
constexpr std::size_t kComputed = 4;

/// Something that moves, the same in bench/rival_computed.py.
std::vector<double> Lines() {
    std::vector<double> lines(kAxes * kLines);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto at = static_cast<double>(i);
        lines[i] = 100.0 * std::sin(at * 0.0123) + std::sin(at * 1.7);
    }
    return lines;
}

struct NoLimits : wavo::AxisLimitsSource {
    std::optional<wavo::AxisCapabilities> FindAxis(const std::string& /*name*/) override {
        return std::nullopt;
    }
};

struct Machine : wavo::ValueSource {
    void SetEvents(wavo::ValueSourceEvents* /*events*/) override {}
    wavo::MaybeFault Start() override { return std::nullopt; }
    void Hold() override {}
    bool GoOn() override { return true; }
    void Stop() override {}
    wavo::BatchOutcome Take(wavo::ValueBatch& batch) override {
        batch = {lines.data(), kLines, kAxes};
        return wavo::BatchOutcome::kTaken;
    }
    bool Answer() override { return true; }
    [[nodiscard]] const wavo::SourceDescription& Description() const override {
        return description;
    }
    [[nodiscard]] wavo::AxisLimitsSource& Limits() override { return limits; }
    [[nodiscard]] bool IsPresent() const override { return true; }
    [[nodiscard]] bool CanStart() const override { return false; }
    [[nodiscard]] const std::string& StateText() const override { return text; }
    [[nodiscard]] wavo::SourceCounters Counters() const override { return {}; }

    std::vector<double> lines = Lines();
    wavo::SourceDescription description{
        {"X_cmd", "X_act", "Y_cmd", "Y_act", "Z_cmd", "Z_act", "X1", "X2"}, kCycleTime};
    NoLimits limits;
    std::string text;
};

void Ours(benchmark::State& state) {
    Machine machine;
    wavo::computed::ComputedSource source(machine);
    source.SetEvents(nullptr);
    source.Define({{"X_err", "X_cmd - X_act", "mm"},
                   {"v", "sqrt(d(X_act)^2 + d(Y_act)^2)", "mm/s"},
                   {"gantry", "X1 - X2", "mm"},
                   {"inch", "X_act / 25.4", "in"}});
    wavo::ValueBatch batch;
    for (auto _ : state) {
        source.Take(batch);
        benchmark::DoNotOptimize(batch.lines);
    }
    wavo::bench::SetTimePerItem(state, kLines * kComputed);
}

void Limit(benchmark::State& state) {
    const std::vector<double> lines = Lines();
    std::vector<double> wide(kLines * (kAxes + kComputed));
    std::vector<double> before(kAxes);
    for (auto _ : state) {
        for (std::size_t line = 0; line < kLines; ++line) {
            const double* const in = &lines[line * kAxes];
            double* const out = &wide[line * (kAxes + kComputed)];
            for (std::size_t axis = 0; axis < kAxes; ++axis) {
                out[axis] = in[axis];
            }
            const double x = (in[1] - before[1]) / kCycleTime;
            const double y = (in[3] - before[3]) / kCycleTime;
            out[kAxes] = in[0] - in[1];
            out[kAxes + 1] = std::sqrt(x * x + y * y);
            out[kAxes + 2] = in[6] - in[7];
            out[kAxes + 3] = in[1] / 25.4;
            before.assign(in, in + kAxes);
        }
        benchmark::DoNotOptimize(wide.data());
    }
    wavo::bench::SetTimePerItem(state, kLines * kComputed);
    state.SetLabel("compiled C++");
}

}  // namespace

BENCHMARK(Ours)->Name("computed/4/ours");
BENCHMARK(Limit)->Name("computed/4/limit");

BENCHMARK_MAIN();
