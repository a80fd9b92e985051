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
// looking/cold/N: the same by the clock, when nothing of the file is in memory but its index. The
// limit reads 8 MiB in one piece; bytes_read is what a picture has read here and there.
//
// looking/broken/N: as frame, where values are missing all over.
//
// looking/points/N: as frame, of an axis over another one: the last 500,000 of the lines that are
// seen. It is read in many pictures where the program was never before.
//
// The counter resident is the memory of the whole program, bytes, with the recording open.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <QImage>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
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
constexpr std::uint64_t kFrame = 140;  // as the view gives a drawing

class NoHost : public GraphDrawHost {
 public:
    void RecordingEnded() override {}
};

/// A recording with the graph that shows it.
class Looked {
 public:
    explicit Looked(const std::string& path, WavoGraph shown = bench::MakeLookedAt()) {
        auto opened = OpenRecording::Open({path});
        if (!opened) {
            return;
        }
        m_recording = std::move(*opened);
        GraphStreams none;
        none.y.resize(shown.YCoorAxName.size());
        m_graph =
            std::make_unique<GraphDraw>(QRect(QPoint(0, 0), kLookedSize), std::move(shown), m_host,
                                        m_settings, m_recording->CycleTime(), 5, 3, none);
        m_window.ShowAll(m_recording->Lines());
    }

    [[nodiscard]] std::uint64_t BytesRead() const { return m_recording->Reader().BytesRead(); }
    [[nodiscard]] SeenLines& Window() { return m_window; }

    /// One picture; true when it is exact.
    bool Draw(std::uint64_t budget = kFrame) {
        m_recording->Budget().Renew(budget);
        ShownHistory history{{}, nullptr, m_window.Seen(), m_recording->Lines().begin};
        for (const std::string& name : m_graph->Graph().YCoorAxName) {
            history.y.push_back(m_recording->StreamOf(name, 0));
        }
        if (m_graph->Graph().XCoorType == CoorType::kAxis) {
            history.x = m_recording->StreamOf(m_graph->Graph().XCoorAxName, 0);
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
    bench::MakeWarm(recording);
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
    bench::MakeWarm(recording);
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

void ZoomAndMoveIn(benchmark::State& state, const LongRecording& recording,
                   const WavoGraph& graph) {
    if (bench::IsMissing(state, recording)) {
        return;
    }
    bench::MakeWarm(recording);
    Looked looked(recording.path(), graph);
    looked.Draw();
    Walk walk;
    double exact = 0.0;
    Frames(
        state, [&] { walk.Step(looked.Window()); }, [&] { exact += looked.Draw() ? 1.0 : 0.0; });
    state.counters["exact_share"] = exact / static_cast<double>(state.iterations());
}

void ZoomAndMove(benchmark::State& state) {
    ZoomAndMoveIn(state, bench::RecordingOf(state.range(0)), bench::MakeLookedAt());
}

void ZoomAndMoveBroken(benchmark::State& state) {
    ZoomAndMoveIn(state, bench::RecordingOf(state.range(0), LongRecording::Values::kBroken),
                  bench::MakeLookedAt());
}

void ZoomAndMovePoints(benchmark::State& state) {
    WavoGraph graph = bench::MakeLookedAt();
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "A1";
    graph.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -100.0, 100.0};
    graph.YCoorAxName.resize(1);
    graph.YCoorAxColor.resize(1);
    graph.YCoorAxDerivation.resize(1);
    graph.Triggers.resize(1);
    graph.YScales.resize(1);
    ZoomAndMoveIn(state, bench::RecordingOf(state.range(0)), graph);
}

void CopyOnly(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    bench::MakeWarm(recording);
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

/// Drops what the system keeps of a file in memory.
bool DropFromMemory(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool is_dropped =
        file >= 0 && fdatasync(file) == 0 && posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED) == 0;
    if (file >= 0) {
        close(file);
    }
    return is_dropped;
}

/// The windows that a program comes to that was nowhere near before.
class NewWindows {
 public:
    LineRange Next(const LineRange& held) {
        m_random = m_random * 6364136223846793005U + 1442695040888963407U;
        const std::int64_t count = held.Count() / (2 + static_cast<int>((m_random >> 33U) % 200));
        const auto begin = static_cast<std::int64_t>(
            (m_random >> 12U) % static_cast<std::uint64_t>(held.Count() - count));
        return {begin, begin + count};
    }

 private:
    std::uint64_t m_random = 3;
};

void UntilExact(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    bench::MakeWarm(recording);
    Looked looked(recording.path());
    NewWindows windows;
    Frames(
        state, [&] { looked.Window().Show(windows.Next(looked.Window().Held())); },
        [&] { looked.DrawExactly(); });
}

void UntilExactCold(benchmark::State& state) {
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    Looked looked(recording.path());
    NewWindows windows;
    bench::FrameTimes times;
    const std::uint64_t read_before = looked.BytesRead();
    for (auto _ : state) {
        looked.Window().Show(windows.Next(looked.Window().Held()));
        if (!DropFromMemory(recording.path())) {
            state.SkipWithError("the file stays in memory");
            return;
        }
        times.Measure([&] { looked.DrawExactly(); });
        state.SetIterationTime(times.LastByClock());
    }
    times.Report(state);
    state.counters["ns_per_item"] = static_cast<double>(state.counters["clock"]);
    state.counters["bytes_read"] = static_cast<double>(looked.BytesRead() - read_before) /
                                   static_cast<double>(state.iterations());
}

void ReadCold(benchmark::State& state) {
    constexpr std::size_t kRead = std::size_t{8} << 20U;
    const LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    std::vector<char> bytes(kRead);
    std::uint64_t at = 0;
    for (auto _ : state) {
        DropFromMemory(recording.path());
        const auto before = std::chrono::steady_clock::now();
        std::ifstream file(recording.path(), std::ios::binary);
        file.seekg(static_cast<std::streamoff>(at));
        file.read(bytes.data(), kRead);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count());
        at = (at + 100 * kRead) % (recording.DataEnd() - kRead);
    }
    bench::SetTimePerItem(state, 1);
    state.SetLabel("reading 8 MiB");
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

void RivalZoomAndMoveUnbroken(benchmark::State& state) {
    RivalZoomAndMove(state);
    state.SetLabel(std::string(bench::kRivalName) + ", unbroken");
}

/// The rival has as many points in memory, and is given some more for each picture.
void RivalPoints(benchmark::State& state) {
    bench::Scene scene;
    scene.size = kLookedSize;
    scene.held = ShownHistory::kMostPoints;
    scene.mode = bench::SceneMode::kOverAxis;
    bench::RivalPlot plot(scene);
    bench::SceneSamples made(scene);
    bench::ShowFull(plot, scene, made);
    Frames(
        state, [] {},
        [&] {
            plot.Add(made.Next(), bench::kFrameSamples, 1);
            plot.Draw();
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
        if (samples <= kMostOfRival) {
            add("broken", "ours", ZoomAndMoveBroken)->Iterations(3000);
            add("broken", "rival", RivalZoomAndMoveUnbroken)->Iterations(300);
            add("broken", "limit", CopyOnly);
        }
        add("points", "ours", ZoomAndMovePoints)->Iterations(1000);
        add("points", "rival", RivalPoints)->Iterations(100);
        add("points", "limit", CopyOnly);
        add("exact", "ours", UntilExact);
        add("cold", "ours", UntilExactCold)->Iterations(20);
        add("cold", "limit", ReadCold)->Iterations(20);
        if (samples <= kMostOfRival) {
            add_timed("first_picture", "rival", RivalFirstPicture);
            add("frame", "rival", RivalZoomAndMove)->Iterations(300);
        }
    }
    return true;
}();

}  // namespace
