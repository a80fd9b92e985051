// The pictures of the manual: windows as a user sees them.
#include <QCheckBox>
#include <QComboBox>
#include <QMainWindow>
#include <QSettings>
#include <QTemporaryDir>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>

#include "golden/scenes.h"
#include "golden/scenes_circle.h"
#include "golden/scenes_recording.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/panes/measure_control.h"
#include "ui/panes/measurements_pane.h"
#include "ui/panes/pane_dock.h"
#include "ui/panes/spectrum_pane.h"
#include "ui/panes/spectrum_plot.h"
#include "ui/shell/looks.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr int kGuideLines = 1000;

/// As a control gives it: with so many decimals.
double Rounded(double value) {
    return std::round(value * 1e4) / 1e4;
}

/// The view with two graphs of a circle, and the pane of measurements.
class MeasuredWindow {
 public:
    explicit MeasuredWindow(CommandId look) {
        ApplyLook(FindLook(static_cast<int>(look)));
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = new CWavoView(m_prompts, &m_frame, std::move(source));
        m_frame.setCentralWidget(m_view);
        m_control = std::make_unique<MeasureControl>(m_frame, *m_view, m_prompts, nullptr);
        m_frame.resize(900, 560);
        m_frame.show();
        m_view->OnInitialUpdate();
        m_view->Screen().ShowEditor(false);
        m_view->Work().Graphs().Replace({OverTime(), OverAxis()});
        m_view->Work().RebuildGraphs();
        Give();
        m_view->Commands().Execute(CommandId::kStop);
        m_control->Execute(CommandId::kMeasurements);
        m_control->Pane()
            .findChild<QCheckBox*>(QStringLiteral("measure_all_graphs"))
            ->setChecked(true);
        QCoreApplication::processEvents();
        m_view->Cursors().PutOn(CursorName::kA, 380);
        m_view->Cursors().PutOn(CursorName::kB, 700);
        QCoreApplication::processEvents();
    }
    ~MeasuredWindow() { qunsetenv(kDataHome); }
    MeasuredWindow(const MeasuredWindow&) = delete;
    MeasuredWindow& operator=(const MeasuredWindow&) = delete;

    [[nodiscard]] MeasureControl& Control() { return *m_control; }
    [[nodiscard]] QImage Picture() { return m_frame.grab().toImage(); }

 private:
    static WavoGraph OverTime() {
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = 4.0;
        graph.YCoorAxName = {"X", "X"};
        graph.YCoorAxColor = {kYellow, kBlue};
        graph.YCoorAxDerivation = {0, 1};
        graph.Triggers.resize(2, graph.Triggers.front());
        graph.YScales.resize(2, graph.YScales.front());
        for (ScaleDefinition& scale : graph.YScales) {
            scale.ScaleAx = ScaleAxCode::kAutomatic;
        }
        return graph;
    }
    static WavoGraph OverAxis() {
        WavoGraph graph;
        graph.InitGraph(2, "Y", 0, nullptr);
        graph.YCoorAxColor = {kGreen};
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = "X";
        graph.XScale.ScaleType = ScaleTypeCode::kAxis;
        graph.XScale.ScaleAx = ScaleAxCode::kManual;
        graph.XScale.Minimum = -60.0;
        graph.XScale.Maximum = 60.0;
        graph.YScales[0] = graph.XScale;
        graph.FadeOutTime = 4.0;
        return graph;
    }
    void Give() {
        for (int line = 0; line < kGuideLines;) {
            m_source->values.clear();
            for (int i = 0; i < 100; ++i, ++line) {
                const double angle = std::numbers::pi * line / 300.0;
                m_source->values.insert(m_source->values.end(),
                                        {Rounded(50.0 * std::cos(angle)),
                                         Rounded(50.0 * std::sin(angle) + std::sin(7.0 * angle))});
            }
            (void)m_source->events->BatchReady();
        }
    }

    QTemporaryDir m_folder;
    Prompts m_prompts = RealPrompts();
    QMainWindow m_frame;
    LinesFromMemory* m_source = nullptr;
    CWavoView* m_view = nullptr;  // a child of the frame
    std::unique_ptr<MeasureControl> m_control;
};

QImage Measurements() {
    return MeasuredWindow(kDefaultLook).Picture();
}

QImage MeasurementsInTheDark() {
    return MeasuredWindow(CommandId::kLookBlack).Picture();
}

QImage MeasurementsAtTheEdge() {
    MeasuredWindow window(kDefaultLook);
    window.Control().Execute(CommandId::kHideMeasurements);
    QCoreApplication::processEvents();
    return window.Picture();
}

/// The view with a graph of an axis that vibrates, and the pane of its spectrum.
class SpectrumWindow {
 public:
    explicit SpectrumWindow(CommandId look) {
        ApplyLook(FindLook(static_cast<int>(look)));
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = new CWavoView(m_prompts, &m_frame, std::move(source));
        m_frame.setCentralWidget(m_view);
        m_control = std::make_unique<MeasureControl>(m_frame, *m_view, m_prompts, nullptr);
        m_frame.resize(900, 640);
        m_frame.show();
        m_view->OnInitialUpdate();
        m_view->Screen().ShowEditor(false);
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = 8.0;
        graph.YCoorAxColor = {kYellow};
        graph.YScales.front().ScaleAx = ScaleAxCode::kAutomatic;
        m_view->Work().Graphs().Replace({graph});
        m_view->Work().RebuildGraphs();
        Give();
        m_view->Commands().Execute(CommandId::kStop);
        m_control->Execute(CommandId::kSpectrum);
        m_frame.resizeDocks({&m_control->Spectrum().Dock()}, {360}, Qt::Vertical);
        while (!Pane().Run().Last().spectrum) {
            QCoreApplication::processEvents();
        }
        Choose("spectrum_unit", 1);
        Pane().Plot().PutCursor(CursorName::kA, 12.5);
        Pane().Plot().PutCursor(CursorName::kB, 40.0);
        QCoreApplication::processEvents();
    }
    ~SpectrumWindow() { qunsetenv(kDataHome); }
    SpectrumWindow(const SpectrumWindow&) = delete;
    SpectrumWindow& operator=(const SpectrumWindow&) = delete;

    [[nodiscard]] SpectrumPane& Pane() { return m_control->Spectrum().Pane(); }
    [[nodiscard]] QImage Picture() { return m_frame.grab().toImage(); }

 private:
    void Choose(const char* name, int index) {
        Pane().findChild<QComboBox*>(QLatin1String(name))->setCurrentIndex(index);
    }
    void Give() {
        std::mt19937_64 random(1);
        for (int line = 0; line < 2 * kGuideLines;) {
            m_source->values.clear();
            for (int i = 0; i < 100; ++i, ++line) {
                const double turn = 2.0 * std::numbers::pi * line * 0.004;
                const double noise = static_cast<double>(random() % 2001) / 1e4 - 0.1;
                const double value = 3.0 * std::sin(12.5 * turn) + 1.2 * std::sin(40.3 * turn) +
                                     0.3 * std::sin(97.1 * turn) + noise;
                m_source->values.insert(m_source->values.end(), {Rounded(value), 0.0});
            }
            (void)m_source->events->BatchReady();
        }
    }

    QTemporaryDir m_folder;
    Prompts m_prompts = RealPrompts();
    QMainWindow m_frame;
    LinesFromMemory* m_source = nullptr;
    CWavoView* m_view = nullptr;  // a child of the frame
    std::unique_ptr<MeasureControl> m_control;
};

QImage SpectrumOfAnAxis() {
    return SpectrumWindow(kDefaultLook).Picture();
}

QImage SpectrumInTheDark() {
    return SpectrumWindow(CommandId::kLookBlack).Picture();
}

QImage SpectrumAsItIsPrinted() {
    SpectrumWindow window(kDefaultLook);
    return window.Pane().PictureOf({700, 420}, 2.0);
}

}  // namespace

std::vector<Scene> AllScenes() {
    std::vector<Scene> scenes{{"spectrum", SpectrumOfAnAxis},
                              {"spectrum_dark", SpectrumInTheDark},
                              {"spectrum_printed", SpectrumAsItIsPrinted},
                              {"measurements", Measurements},
                              {"measurements_dark", MeasurementsInTheDark},
                              {"measurements_at_the_edge", MeasurementsAtTheEdge}};
    for (const auto& more : {ComputedScenes(), CircleScenes(), RecordingScenes(), ReferenceScenes(),
                             FirstMinutesScenes(), DialogScenes()}) {
        scenes.insert(scenes.end(), more.begin(), more.end());
    }
    return scenes;
}

}  // namespace wavo::testing
