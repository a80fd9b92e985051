// Drawing live graphs into a picture, ns per frame. All samples are held before the measurement
// begins; the picture has 1600 x 900 pixels unless said otherwise, and every curve gets 100 new
// samples a frame. The cycle time is 1 ms.
//
// paint_continuity/<samples held>: one scrolling curve of an axis that moves smoothly and reverses.
// paint_noise/<samples held>: one scrolling curve of noise over the whole height.
// paint_8curves/<samples per curve>: one graph with 8 y axes.
// paint_16graphs/<samples per curve>: 16 graphs of one curve, one below the other, 1920 x 1080.
// paint_classic/<samples held>: a sweep that overwrites the one before it.
// paint_xy/<samples held>: an axis over an axis, drawn as lines.
// zoom_requery/<samples held>: each frame shows another half of what is held; no new samples.
// rescale/<samples held>: paint_continuity with an automatic scale that every frame changes.
//
// The rival is QCustomPlot by its fastest way (rival_plot.h). The limit is one fill of the picture.
#include <benchmark/benchmark.h>

#include <QImage>
#include <cmath>
#include <string>

#include "bench/bench_common.h"
#include "bench/ours_plot.h"
#include "bench/plot_scene.h"
#include "bench/rival_plot.h"

namespace {

using wavo::bench::OursPlot;
using wavo::bench::RivalPlot;
using wavo::bench::Scene;
using wavo::bench::SceneMode;
using wavo::bench::SceneSamples;
using wavo::bench::SignalShape;

/// Frames of new samples.
template <typename Plot>
void PaintFrames(benchmark::State& state, const Scene& scene) {
    Plot plot(scene);
    SceneSamples samples(scene);
    wavo::bench::ShowFull(plot, scene, samples);
    for (auto _ : state) {
        plot.Add(samples.Next(), wavo::bench::kFrameSamples, 1);
        plot.Draw();
    }
    wavo::bench::SetTimePerItem(state, 1);
}

/// Frames of the same samples that each show another half of them.
template <typename Plot>
void ZoomFrames(benchmark::State& state, const Scene& scene) {
    constexpr double kGoldenPart = 0.6180339887498949;  // comes near no place twice for long
    constexpr double kShown = 0.5;
    Plot plot(scene);
    SceneSamples samples(scene);
    wavo::bench::ShowFull(plot, scene, samples);
    plot.Zoom(0.25, 0.75);
    plot.Draw();
    double place = 0.0;
    for (auto _ : state) {
        place = std::fmod(place + kGoldenPart, 1.0);
        const double from = place * (1.0 - kShown);
        plot.Zoom(from, from + kShown);
        plot.Draw();
    }
    wavo::bench::SetTimePerItem(state, 1);
}

void FillPicture(benchmark::State& state, const Scene& scene) {
    QImage picture(scene.size, QImage::Format_RGB32);
    unsigned int color = 0xFF000000U;
    for (auto _ : state) {
        picture.fill(color++);
        benchmark::DoNotOptimize(picture.constBits());
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, 1);
    state.SetLabel("fill");
}

using Measurement = void (*)(benchmark::State&, const Scene&);

/// Frames of scenes that take seconds to fill: they are filled once per measurement.
constexpr benchmark::IterationCount kFramesOfLargeScene = 50;
constexpr std::size_t kLargeScene = 100000000;

void Register(const std::string& name, const Scene& scene, Measurement ours, Measurement rival) {
    const auto once = [&scene](benchmark::internal::Benchmark* registered) {
        if (scene.held >= kLargeScene) {
            registered->Iterations(kFramesOfLargeScene);
        }
    };
    once(benchmark::RegisterBenchmark((name + "/ours").c_str(), ours, scene));
    const auto named_rival = [rival](benchmark::State& state, const Scene& what) {
        rival(state, what);
        state.SetLabel(wavo::bench::kRivalName);
    };
    once(benchmark::RegisterBenchmark((name + "/rival").c_str(), named_rival, scene));
    once(benchmark::RegisterBenchmark((name + "/limit").c_str(), FillPicture, scene));
}

void RegisterFrames(const std::string& name, const Scene& scene) {
    Register(name, scene, PaintFrames<OursPlot>, PaintFrames<RivalPlot>);
}

Scene Held(std::size_t samples) {
    Scene scene;
    scene.held = samples;
    return scene;
}

[[maybe_unused]] const bool g_registered = [] {
    RegisterFrames("paint_continuity/1e4", Held(10000));
    RegisterFrames("paint_continuity/1e5", Held(100000));
    RegisterFrames("paint_continuity/1e6", Held(1000000));
    RegisterFrames("paint_continuity/1e7", Held(10000000));
    RegisterFrames("paint_continuity/1e8", Held(kLargeScene));
    Scene scene = Held(100000);
    scene.shape = SignalShape::kNoise;
    RegisterFrames("paint_noise/1e5", scene);
    scene.held = 10000000;
    RegisterFrames("paint_noise/1e7", scene);
    scene = Held(100000);
    scene.curves = 8;
    RegisterFrames("paint_8curves/1e5", scene);
    scene = Held(100000);
    scene.graphs = 16;
    scene.size = QSize(1920, 1080);
    RegisterFrames("paint_16graphs/1e5", scene);
    scene = Held(1000000);
    scene.mode = SceneMode::kClassic;
    RegisterFrames("paint_classic/1e6", scene);
    scene = Held(100000);
    scene.mode = SceneMode::kOverAxis;
    RegisterFrames("paint_xy/1e5", scene);
    scene = Held(10000000);
    Register("zoom_requery/1e7", scene, ZoomFrames<OursPlot>, ZoomFrames<RivalPlot>);
    scene.rising = true;
    RegisterFrames("rescale/1e7", scene);
    return true;
}();

}  // namespace
