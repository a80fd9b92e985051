// The whole road of the values, from the master's FIFO to the picture.
//
// acquire/64x4000: one iteration is one second of 64 axes at 4 kHz, in 100 batches of 40 lines. A
// batch is read from a line FIFO in shared memory, handed out to the value buffers, and drawn:
// 16 graphs of 4 y axes, each over 10 s, 1920 x 1080. Messages between processes are not part of it
// (bench_handshake), and the lines stand in the FIFO already.
//
// The rival, QCustomPlot, is given the lines where they are and need not read them. The limit is
// one fill of the picture per batch. percent_of_core is the part of one core that is busy.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QImage>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "bench/ours_plot.h"
#include "bench/plot_scene.h"
#include "bench/rival_plot.h"
#include "link/ax_value_reader.h"
#include "link/wire_format.h"
#include "platform/shared_memory.h"
#include "settings/view_settings.h"
#include "view/graph_board.h"
#include "view/graph_picture.h"

namespace {

using wavo::bench::RivalPlot;
using wavo::bench::Scene;

constexpr std::size_t kAxes = 64;
constexpr std::size_t kLinesPerSecond = 4000;
constexpr std::size_t kBatch = 40;
constexpr std::size_t kBatches = kLinesPerSecond / kBatch;
constexpr std::size_t kSecondsShown = 10;

Scene AcquiredScene() {
    Scene scene;
    scene.size = QSize(1920, 1080);
    scene.held = kSecondsShown * kLinesPerSecond;
    scene.graphs = 16;
    scene.curves = kAxes / scene.graphs;
    scene.cycle_time = 1.0 / kLinesPerSecond;
    return scene;
}

/// One second of all axes, line by line; the second after it is the same.
const std::vector<double>& Lines() {
    static const std::vector<double> lines = [] {
        const std::vector<double> motion = wavo::bench::MakeMotion(kLinesPerSecond);
        std::vector<double> made(kLinesPerSecond * kAxes);
        for (std::size_t i = 0; i < made.size(); ++i) {
            const std::size_t delay = i % kAxes * kLinesPerSecond / kAxes;
            made[i] = motion[(i / kAxes + delay) % kLinesPerSecond];
        }
        return made;
    }();
    return lines;
}

/// A FIFO in shared memory whose slots hold one second of lines, as a master has written them.
class FilledFifo {
 public:
    FilledFifo()
        : m_segment(wavo::platform::SharedSegment::Create(
              "WavoBenchAcquire_" + std::to_string(QCoreApplication::applicationPid()),
              sizeof(wavo::LineFifoHeader) + Lines().size() * sizeof(double))) {
        if (!m_segment) {
            return;
        }
        m_header = new (m_segment.data()) wavo::LineFifoHeader{};
        m_header->line_size = kAxes * sizeof(double);
        m_header->line_count = kLinesPerSecond;
        std::memcpy(m_header + 1, Lines().data(), Lines().size() * sizeof(double));
    }
    /// Null when the segment could not be made.
    [[nodiscard]] const char* Name() const {
        return m_segment ? m_segment.name().c_str() : nullptr;
    }
    /// Makes the next lines wait.
    void Publish(std::size_t lines) {
        m_header->write_index = (m_header->write_index + lines) % kLinesPerSecond;
    }

 private:
    wavo::platform::SharedSegment m_segment;
    wavo::LineFifoHeader* m_header = nullptr;
};

/// Everything between the FIFO and the picture, as the view holds it.
class Acquisition {
 public:
    Acquisition()
        : m_board(m_graphs, m_streams, [] {}),
          m_settings(wavo::DefaultViewSettings()),
          m_input(kLinesPerSecond * kAxes) {
        const Scene scene = AcquiredScene();
        for (std::size_t i = 0; i < scene.graphs; ++i) {
            m_graphs.Add(wavo::bench::MakeGraph(scene, i));
        }
        std::vector<std::string> names;
        for (const wavo::WavoGraph& graph : m_graphs.Graphs()) {
            names.insert(names.end(), graph.YCoorAxName.begin(), graph.YCoorAxName.end());
        }
        m_board.CreateAllGraphRects(QRect(QPoint(0, 0), scene.size), scene.cycle_time, names,
                                    m_settings);
        m_picture.Resize(scene.size, 1.0);
    }

    bool Open() { return m_fifo.Name() != nullptr && m_reader.Open(m_fifo.Name()); }

    /// Takes `lines` lines and draws. False when they could not be read.
    bool TakeBatch(std::size_t lines) {
        m_fifo.Publish(lines);
        const std::uint64_t waiting = m_reader.LinesWaiting();
        if (waiting != lines || !m_reader.Read(m_input.data(), kAxes * sizeof(double), waiting,
                                               m_input.size() * sizeof(double))) {
            return false;
        }
        m_streams.Distribute({m_input.data(), waiting, kAxes});
        m_picture.Draw(m_board, m_settings.background, false);
        return true;
    }

    /// Whether every graph has taken the values of `seconds`.
    [[nodiscard]] bool HasTaken(std::size_t seconds) const {
        const auto& drawers = m_board.Drawers();
        return std::all_of(drawers.begin(), drawers.end(), [seconds](const auto& drawer) {
            return std::lround(LatestTime(drawer->Recorder())) == static_cast<long>(seconds);
        });
    }

 private:
    FilledFifo m_fifo;
    wavo::AxValueReader m_reader;
    wavo::GraphList m_graphs;
    wavo::ValueStreams m_streams;
    wavo::GraphBoard m_board;
    wavo::GraphPicture m_picture;
    wavo::ViewSettings m_settings;
    std::vector<double> m_input;
};

void AcquireOurs(benchmark::State& state) {
    Acquisition acquisition;
    bool good = acquisition.Open();
    // All curves are full: as few large batches as the FIFO allows, which keeps one slot free.
    constexpr std::size_t kLargeBatch = kLinesPerSecond / 2;
    for (std::size_t i = 0; i < kSecondsShown * kLinesPerSecond; i += kLargeBatch) {
        good = good && acquisition.TakeBatch(kLargeBatch);
    }
    if (!good || !acquisition.HasTaken(kSecondsShown)) {
        state.SkipWithError("the lines did not arrive");
        return;
    }
    for (auto _ : state) {
        for (std::size_t i = 0; i < kBatches; ++i) {
            good = acquisition.TakeBatch(kBatch) && good;
        }
    }
    if (!good) {
        state.SkipWithError("a batch is missing");
    }
    wavo::bench::SetTimePerItem(state, 1);
    wavo::bench::SetShareOfCore(state, 1.0);
}

void AcquireRival(benchmark::State& state) {
    RivalPlot plot(AcquiredScene());
    std::vector<const double*> columns(kAxes);
    std::size_t line = 0;
    const auto take_batch = [&](std::size_t lines) {
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            columns[axis] = Lines().data() + line * kAxes + axis;
        }
        line = (line + lines) % kLinesPerSecond;
        plot.Add(columns, lines, kAxes);
        plot.Draw();
    };
    plot.Start();
    for (std::size_t i = 0; i < kSecondsShown; ++i) {
        take_batch(kLinesPerSecond);
    }
    for (auto _ : state) {
        for (std::size_t i = 0; i < kBatches; ++i) {
            take_batch(kBatch);
        }
    }
    wavo::bench::SetTimePerItem(state, 1);
    wavo::bench::SetShareOfCore(state, 1.0);
    state.SetLabel(wavo::bench::kRivalName);
}

void AcquireLimit(benchmark::State& state) {
    QImage picture(AcquiredScene().size, QImage::Format_RGB32);
    unsigned int color = 0xFF000000U;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kBatches; ++i) {
            picture.fill(color++);
            benchmark::DoNotOptimize(picture.constBits());
            benchmark::ClobberMemory();
        }
    }
    wavo::bench::SetTimePerItem(state, 1);
    wavo::bench::SetShareOfCore(state, 1.0);
    state.SetLabel("fill");
}

}  // namespace

BENCHMARK(AcquireOurs)->Name("acquire/64x4000/ours");
BENCHMARK(AcquireRival)->Name("acquire/64x4000/rival");
BENCHMARK(AcquireLimit)->Name("acquire/64x4000/limit");
