// Looking at recordings: 8 curves of 64 recorded axes in a graph of 1600 x 900 pixels.
//
// looking/first_picture/N: from opening a recording of N samples to the exact picture of all of it.
// The rival gets all samples from memory, once they are there, and draws the same. The limit opens
// the recording.
//
// looking/frame/N: an item is a picture while the window is zoomed at places, zoomed out of and
// moved, at any zoom; what is not read yet is coarser in it. percentile_99 is the 99th percentile,
// ns, exact_share says how many of the pictures were exact at once. The limit copies a picture.
// Both, and the next one, in time of a processor.
//
// looking/exact/N: a window to which the program was never before until its picture is exact.
//
// The counter resident is the memory of the whole program, bytes, with the recording open.
#include <benchmark/benchmark.h>

#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "bench/long_recording.h"
#include "bench/looking.h"
#include "bench/rival_plot.h"
#include "graph/draw/graph_draw.h"
#include "session/open_recording.h"
#include "session/seen_lines.h"

namespace {

using namespace wavo;
using bench::LongRecording;

using bench::kLookedCurves;
using bench::kLookedSize;
constexpr std::uint64_t kFrame = 350;  // as the view gives a drawing

class NoHost : public GraphDrawHost {
 public:
    void RecordingEnded() override {}
};

/// A recording with the graph that shows it.
class Looked {
 public:
    explicit Looked(const std::string& path) {
        auto opened = OpenRecording::Open({path});
        if (!opened) {
            return;
        }
        m_recording = std::move(*opened);
        GraphStreams none;
        none.y.resize(kLookedCurves);
        m_graph =
            std::make_unique<GraphDraw>(QRect(QPoint(0, 0), kLookedSize), bench::MakeLookedAt(),
                                        m_host, m_settings, m_recording->CycleTime(), 5, 3, none);
        m_window.ShowAll(m_recording->Lines());
    }

    [[nodiscard]] bool IsOpen() const { return m_recording != nullptr; }
    [[nodiscard]] SeenLines& Window() { return m_window; }

    /// One picture; true when it is exact.
    bool Draw(std::uint64_t budget = kFrame) {
        m_recording->Budget().Renew(budget);
        ShownHistory history{{}, nullptr, m_window.Seen(), m_recording->Lines().begin};
        for (const std::string& name : m_graph->Graph().YCoorAxName) {
            history.y.push_back(m_recording->StreamOf(name, 0));
        }
        m_graph->ShowHistory(history);
        m_graph->DrawGraph(m_image, false);
        return m_graph->IsExact();
    }
    void DrawExactly() {
        while (!Draw(recording::ReadingBudget::kUnlimited)) {
        }
    }

 private:
    std::unique_ptr<OpenRecording> m_recording;
    NoHost m_host;
    GraphDisplaySettings m_settings;
    std::unique_ptr<GraphDraw> m_graph;
    SeenLines m_window;
    QImage m_image{kLookedSize, QImage::Format_RGB32};
};

/// The next window of a walk through a recording: zooms in at a place in some steps, moves, zooms
/// out again.
class Walk {
 public:
    void Step(SeenLines& window) {
        if (m_left == 0) {
            m_random = m_random * 6364136223846793005U + 1442695040888963407U;
            m_action = m_random >> 62U;
            m_place = static_cast<double>((m_random >> 20U) % 1000) / 999.0;
            m_left = 5 + static_cast<int>((m_random >> 40U) % 20);
        }
        --m_left;
        switch (m_action) {
            case 0:
            case 1:
                window.Zoom(m_place, 0.8);
                break;
            case 2:
                window.Move(m_place < 0.5 ? -0.05 : 0.05);
                break;
            default:
                window.Zoom(m_place, 1.25);
        }
        if (window.Seen().Count() <= 2 * SeenLines::kFewest) {
            m_action = 3;
            m_left = 60;
        }
    }

 private:
    std::uint64_t m_random = 7;
    std::uint64_t m_action = 0;
    double m_place = 0.5;
    int m_left = 0;
};

void FirstPicture(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    for (auto _ : state) {
        Looked looked(recording.path());
        looked.DrawExactly();
    }
    bench::SetTimePerItem(state, 1);
}

void OpenOnly(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(OpenRecording::Open({recording.path()}).HasValue());
    }
    bench::SetTimePerItem(state, 1);
    state.SetLabel("opening it");
}

void Frames(benchmark::State& state, const std::function<void()>& prepare,
            const std::function<void()>& frame) {
    bench::FrameTimes times;
    for (auto _ : state) {
        prepare();
        state.SetIterationTime(times.Measure(frame));
    }
    times.Report(state);
}

void ZoomAndMove(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    Looked looked(recording.path());
    looked.Draw();
    Walk walk;
    double exact = 0.0;
    Frames(
        state, [&] { walk.Step(looked.Window()); }, [&] { exact += looked.Draw() ? 1.0 : 0.0; });
    state.counters["exact_share"] = exact / static_cast<double>(state.iterations());
}

void CopyOnly(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    QImage from(kLookedSize, QImage::Format_RGB32);
    QImage to(kLookedSize, QImage::Format_RGB32);
    from.fill(Qt::black);
    Frames(
        state, [] {},
        [&] {
            std::copy_n(from.constBits(), from.sizeInBytes(), to.bits());
            benchmark::DoNotOptimize(to.bits());
        });
    state.SetLabel("copying a picture");
}

void UntilExact(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    Looked looked(recording.path());
    std::uint64_t random = 3;
    Frames(
        state,
        [&] {
            random = random * 6364136223846793005U + 1442695040888963407U;
            const LineRange held = looked.Window().Held();
            const std::int64_t count = held.Count() / (2 + static_cast<int>((random >> 33U) % 200));
            const auto begin = static_cast<std::int64_t>(
                (random >> 12U) % static_cast<std::uint64_t>(held.Count() - count));
            looked.Window().Show({begin, begin + count});
        },
        [&] { looked.DrawExactly(); });
}

/// The rival with as many samples per curve as the recording has lines.
struct HeldByRival {
    explicit HeldByRival(std::int64_t samples) {
        scene.size = kLookedSize;
        scene.held =
            static_cast<std::size_t>(samples / 64) / bench::kFrameSamples * bench::kFrameSamples;
        scene.curves = kLookedCurves;
        scene.cycle_time = bench::kRecordedCycle;
        plot = std::make_unique<bench::RivalPlot>(scene);
        bench::SceneSamples made(scene);
        bench::ShowFull(*plot, scene, made);
    }
    bench::Scene scene;
    std::unique_ptr<bench::RivalPlot> plot;
};

void RivalFirstPicture(benchmark::State& state) {
    for (auto _ : state) {
        HeldByRival rival(state.range(0));
    }
    bench::SetTimePerItem(state, 1);
    state.SetLabel(bench::kRivalName);
}

void RivalZoomAndMove(benchmark::State& state) {
    HeldByRival rival(state.range(0));
    SeenLines window;
    window.ShowAll({0, static_cast<std::int64_t>(rival.scene.held)});
    Walk walk;
    const auto held = static_cast<double>(rival.scene.held);
    Frames(
        state, [&] { walk.Step(window); },
        [&] {
            rival.plot->Zoom(static_cast<double>(window.Seen().begin) / held,
                             static_cast<double>(window.Seen().end) / held);
            rival.plot->Draw();
        });
    state.SetLabel(bench::kRivalName);
}

constexpr std::int64_t kMostOfRival = 100'000'000;

std::string NameOf(const char* what, std::int64_t samples, const char* role) {
    return std::string("looking/") + what + "/" + bench::DigitsOf(samples) + "/" + role;
}

[[maybe_unused]] const bool g_are_registered = [] {
    for (const std::int64_t samples : bench::kLookedSizes) {
        const auto add = [samples](const char* what, const char* role, auto run) {
            return benchmark::RegisterBenchmark(NameOf(what, samples, role).c_str(), run)
                ->Arg(samples)
                ->UseManualTime();
        };
        const auto add_timed = [samples](const char* what, const char* role, auto run) {
            return benchmark::RegisterBenchmark(NameOf(what, samples, role).c_str(), run)
                ->Arg(samples)
                ->UseRealTime();
        };
        add_timed("first_picture", "ours", FirstPicture);
        add_timed("first_picture", "limit", OpenOnly);
        add("frame", "ours", ZoomAndMove)->Iterations(3000);
        add("frame", "limit", CopyOnly);
        add("exact", "ours", UntilExact);
        if (samples <= kMostOfRival) {
            add_timed("first_picture", "rival", RivalFirstPicture);
            add("frame", "rival", RivalZoomAndMove)->Iterations(300);
        }
    }
    return true;
}();

}  // namespace
