// Looking at recordings in the view as the program shows it: one graph of 8 curves of 64 recorded
// axes in a widget of 1600 x 900, with the bar below it.
//
// looking_window/first_picture/N: from the call that opens a recording of N samples until all of it
// is seen exactly, graphs and bar.
//
// looking_window/frame/N: an item is what the wheel brings about, turned and moved over places of
// the graph, with and without Shift: all is drawn and shown before the program goes on. What is
// drawn again while nothing else is to be done, until it is exact, counts as an item, too.
// percentile_99 is the 99th percentile, percentile_99_clock the same by the clock, ns; resident the
// memory of the whole program, bytes.
//
// The limit of both exposes the widget. Without a screen (offscreen).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <memory>
#include <string>

#include "bench/bench_common.h"
#include "bench/long_recording.h"
#include "bench/looking.h"
#include "ui/dialogs/dialog_prompts.h"
#include "view/wavo_view.h"

namespace {

using namespace wavo;

/// Takes each painting of a widget as the end of a frame.
class PaintWatch : public QObject {
 public:
    explicit PaintWatch(bench::FrameTimes& times) : m_times(times) {}

    bool eventFilter(QObject* /*object*/, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            m_times.End();
            m_times.Begin();
        }
        return false;
    }

 private:
    bench::FrameTimes& m_times;
};

/// The view without a master, with the graph that is looked at.
class Window {
 public:
    Window() {
        qputenv("XDG_DATA_HOME", m_home.path().toLocal8Bit());
        qputenv("XDG_STATE_HOME", m_home.path().toLocal8Bit());
        m_view = std::make_unique<CWavoView>(m_prompts);
        m_view->resize(bench::kLookedSize);
        m_view->show();
        m_view->OnInitialUpdate();
        m_view->Work().Graphs().Replace({bench::MakeLookedAt()});
        QCoreApplication::processEvents();
    }

    void Open(const std::string& path) { m_view->Past().Files().Open(path); }
    void Close() {
        m_view->Past().Execute(CommandId::kCloseRecording);
        QCoreApplication::processEvents();
    }
    [[nodiscard]] bool IsExact() { return m_view->Board().IsExact(); }
    void Expose() { m_view->repaint(); }

    /// Who is told of paintings; null: nobody any more.
    void Watch(QObject* filter) {
        if (m_filter != nullptr) {
            m_view->removeEventFilter(m_filter);
        }
        m_filter = filter;
        if (filter != nullptr) {
            m_view->installEventFilter(filter);
        }
    }

    /// Turns the wheel at a part of the width.
    void Turn(double place, bool up, bool move) {
        const QPoint at(static_cast<int>(place * (bench::kLookedSize.width() - 1)),
                        bench::kLookedSize.height() / 2);
        QWheelEvent event(at, m_view->mapToGlobal(at), QPoint(), QPoint(0, up ? 120 : -120),
                          Qt::NoButton, move ? Qt::ShiftModifier : Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_view.get(), &event);
    }
    [[nodiscard]] std::int64_t SeenLines() const {
        return m_view->Past().Window().Window().Seen().Count();
    }

 private:
    QTemporaryDir m_home;
    const Prompts m_prompts = DialogPrompts();
    std::unique_ptr<CWavoView> m_view;
    QObject* m_filter = nullptr;
};

void FirstPicture(benchmark::State& state) {
    const bench::LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    bench::MakeWarm(recording);
    Window window;
    for (auto _ : state) {
        window.Open(recording.path());
        do {
            QCoreApplication::processEvents();
        } while (!window.IsExact());
        state.PauseTiming();
        window.Close();
        state.ResumeTiming();
    }
    bench::SetTimePerItem(state, 1);
}

/// Turns the wheel as somebody who looks for something: some times in at a place, along, out again.
class Hand {
 public:
    void Turn(Window& window) {
        if (m_left == 0) {
            m_random = m_random * 6364136223846793005U + 1442695040888963407U;
            m_action = m_random >> 62U;
            m_place = 0.02 + 0.96 * static_cast<double>((m_random >> 20U) % 1000) / 999.0;
            m_left = 5 + static_cast<int>((m_random >> 40U) % 20);
        }
        --m_left;
        window.Turn(m_place, m_action < 2 || (m_action == 2 && m_place < 0.5), m_action == 2);
        if (window.SeenLines() <= 2 * SeenLines::kFewest) {
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

void Frames(benchmark::State& state) {
    const bench::LongRecording& recording = bench::RecordingOf(state.range(0));
    if (bench::IsMissing(state, recording)) {
        return;
    }
    bench::MakeWarm(recording);
    Window window;
    window.Open(recording.path());
    QCoreApplication::processEvents();
    Hand hand;
    bench::FrameTimes times;
    PaintWatch watch(times);
    for (auto _ : state) {
        state.SetIterationTime(times.Measure([&] { hand.Turn(window); }));
        // Drawings that go on until all is exact, each to where it is painted.
        window.Watch(&watch);
        times.Begin();
        QCoreApplication::processEvents();
        window.Watch(nullptr);
    }
    times.Report(state);
}

void Expose(benchmark::State& state) {
    Window window;
    for (auto _ : state) {
        window.Expose();
    }
    bench::SetTimePerItem(state, 1);
    state.SetLabel("exposing it");
}

[[maybe_unused]] const bool g_are_registered = [] {
    for (const std::int64_t samples : bench::kLookedSizes) {
        const std::string digits = bench::DigitsOf(samples);
        const auto add = [&](const char* what, const char* role, auto run) {
            const std::string name = std::string("looking_window/") + what + "/" + digits + "/";
            return benchmark::RegisterBenchmark((name + role).c_str(), run)->Arg(samples);
        };
        add("first_picture", "ours", FirstPicture)->UseRealTime();
        add("first_picture", "limit", Expose)->UseRealTime();
        add("frame", "ours", Frames)->UseManualTime()->Iterations(2000);
        add("frame", "limit", Expose)->UseRealTime();
    }
    return true;
}();

}  // namespace
