// Memory of a shown stream, bytes per sample: the value buffer, the curve that shows it, and all
// that a drawing step keeps for the next one.
//
// memory_per_sample/<samples held>: the graph was there first, and the samples came in steps.
// memory_rebuilt/<samples held>: the graph was made over a buffer that held them already.
// memory_64streams/1e5: 64 streams in 16 graphs that were there first, each of 1e5 samples.
//
// What a graph needs whatever it shows (picture, texts, layout) is not counted: it is measured with
// few samples and taken off. The rival is QCustomPlot with the same samples. The limit is the
// sample itself.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>
#include <map>
#include <string>
#include <utility>

#include "bench/bench_common.h"
#include "bench/ours_plot.h"
#include "bench/plot_scene.h"
#include "bench/rival_plot.h"

namespace {

using wavo::bench::kFrameSamples;
using wavo::bench::OursPlot;
using wavo::bench::RivalPlot;
using wavo::bench::Scene;
using wavo::bench::SceneSamples;

/// A graph whose samples do not count.
constexpr std::size_t kFewSamples = kFrameSamples;

/// Steps that the samples come in: few enough to be done in time.
constexpr std::size_t kSteps = 100;

double BytesInUse() {
    const struct mallinfo2 use = mallinfo2();
    return static_cast<double>(use.uordblks) + static_cast<double>(use.hblkhd);
}

/// Takes all samples in, and a step's worth more than is held. What a step keeps of its new samples
/// is what it keeps of a few: the last one is as large as usual.
template <typename Plot>
void FillLive(Plot& plot, const Scene& scene, SceneSamples& samples) {
    const std::size_t frames = scene.held / kFrameSamples;
    const std::size_t frames_per_step = (frames + kSteps - 1) / kSteps;
    plot.Start();
    for (std::size_t taken = 0; taken <= frames; taken += frames_per_step) {
        for (std::size_t i = 0; i < frames_per_step; ++i) {
            plot.Add(samples.Next(), kFrameSamples, 1);
        }
        plot.Draw();
    }
    plot.Add(samples.Next(), kFrameSamples, 1);
    plot.Draw();
}

template <typename Plot>
void FillBefore(Plot& plot, const Scene& scene, SceneSamples& samples) {
    wavo::bench::ShowFull(plot, scene, samples);
}

template <typename Plot>
using Fill = void (*)(Plot&, const Scene&, SceneSamples&);

/// One graph of one curve.
Scene OneStream() {
    return {};
}

Scene ManyStreams() {
    Scene scene;
    scene.size = QSize(1920, 1080);
    scene.graphs = 16;
    scene.curves = 4;
    return scene;
}

template <typename Plot>
double BytesOfPlot(Scene scene, std::size_t held, Fill<Plot> fill) {
    scene.held = held;
    SceneSamples samples(scene);
    const double before = BytesInUse();
    Plot plot(scene);
    fill(plot, scene, samples);
    return BytesInUse() - before;
}

/// The same however often it is asked, so it is found once.
template <typename Plot, Fill<Plot> kFill, Scene (*kScene)()>
double BytesPerSample(std::size_t held) {
    static std::map<std::size_t, double> found;
    if (found.count(held) == 0) {
        BytesOfPlot<Plot>(kScene(), kFewSamples, kFill);  // makes what the process makes once
        const double few = BytesOfPlot<Plot>(kScene(), kFewSamples, kFill);
        const double all = BytesOfPlot<Plot>(kScene(), held, kFill);
        const std::size_t samples = (held - kFewSamples) * kScene().Streams();
        found[held] = (all - few) / static_cast<double>(samples);
    }
    return found[held];
}

template <typename Plot, Fill<Plot> kFill, Scene (*kScene)() = OneStream>
void Measure(benchmark::State& state, std::size_t held, const char* label) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(BytesPerSample<Plot, kFill, kScene>(held));
    }
    wavo::bench::SetBytesPerItem(state, BytesPerSample<Plot, kFill, kScene>(held));
    state.SetLabel(label);
}

void Limit(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::ClobberMemory();
    }
    wavo::bench::SetBytesPerItem(state, sizeof(double));
    state.SetLabel("the sample");
}

constexpr char kRivalName[] = "QCustomPlot";

[[maybe_unused]] const bool g_registered = [] {
    const auto add = [](const std::string& name, const auto& measurement, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), measurement, arguments...)->Iterations(1);
    };
    for (const auto& [name, held] : {std::pair<std::string, std::size_t>{"1e6", 1000000},
                                     std::pair<std::string, std::size_t>{"1e7", 10000000}}) {
        const std::string live = "memory_per_sample/" + name;
        add(live + "/ours", Measure<OursPlot, FillLive<OursPlot>>, held, "");
        add(live + "/rival", Measure<RivalPlot, FillLive<RivalPlot>>, held, kRivalName);
        add(live + "/limit", Limit);
        const std::string rebuilt = "memory_rebuilt/" + name;
        add(rebuilt + "/ours", Measure<OursPlot, FillBefore<OursPlot>>, held, "");
        add(rebuilt + "/rival", Measure<RivalPlot, FillBefore<RivalPlot>>, held, kRivalName);
        add(rebuilt + "/limit", Limit);
    }
    const std::string many = "memory_64streams/1e5";
    constexpr std::size_t kHeld = 100000;
    add(many + "/ours", Measure<OursPlot, FillLive<OursPlot>, ManyStreams>, kHeld, "");
    add(many + "/rival", Measure<RivalPlot, FillLive<RivalPlot>, ManyStreams>, kHeld, kRivalName);
    add(many + "/limit", Limit);
    return true;
}();

}  // namespace
