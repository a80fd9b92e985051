// The picture of the user guide that compares a run with a good one.
#include <QCoreApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QTabWidget>
#include <QTemporaryDir>
#include <cmath>
#include <memory>

#include "golden/scenes.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/panes/pane_dock.h"
#include "ui/panes/reference_control.h"
#include "ui/panes/reference_pane.h"
#include "ui/shell/looks.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr std::size_t kLinesOfRun = 1500;
constexpr double kCycleOfRun = 0.004;

/// A tool change: the axis goes out, waits and comes back; a worn one swings at the ends.
std::vector<double> ToolChange(std::size_t delay, double wear) {
    std::vector<double> places;
    double place = 0.0;
    double speed = 0.0;
    for (std::size_t i = 0; i < kLinesOfRun; ++i) {
        const std::size_t at = i < delay ? 0 : i - delay;
        const double target = at > 150 && at < 750 ? 60.0 : 0.0;
        speed += (160.0 * (target - place) - (22.0 - 9.0 * wear) * speed) * kCycleOfRun;
        place += speed * kCycleOfRun;
        places.push_back(std::round(place * 1e4) / 1e4);
    }
    return places;
}

/// A recording of the good one.
std::string RecordGoodRun(const QTemporaryDir& folder) {
    recording::RecordingHead head;
    head.axis_names = {"Z", "A"};
    head.cycle_time = kCycleOfRun;
    const std::string path = folder.filePath(QStringLiteral("good-tool-change.mcap")).toStdString();
    std::vector<std::vector<double>> lines;
    for (const double value : ToolChange(0, 0.0)) {
        lines.push_back({value, 0.0});
    }
    auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
    Append(**writer, 0, lines);
    (void)(*writer)->Finish();
    return path;
}

QImage Compared(CommandId look, int page) {
    ApplyLook(FindLook(static_cast<int>(look)));
    const QTemporaryDir folder;
    qputenv(kDataHome, folder.path().toLocal8Bit());
    const Prompts prompts = RealPrompts();
    auto source = std::make_unique<LinesFromMemory>();
    source->description = {{"Z", "A"}, kCycleOfRun};
    LinesFromMemory& machine = *source;
    QMainWindow frame;
    auto* const view = new CWavoView(prompts, &frame, std::move(source));
    frame.setCentralWidget(view);
    ReferenceControl control(frame, *view, prompts, nullptr, {});
    frame.resize(QSize(1000, 640));
    frame.show();
    view->OnInitialUpdate();
    view->Screen().ShowEditor(false);
    WavoGraph graph;
    graph.InitGraph(1, "Z", 0, nullptr);
    graph.Mode = GraphMode::kContinuity;
    graph.XScale.TimeRange = static_cast<double>(kLinesOfRun) * kCycleOfRun;
    graph.YScales.front().Minimum = -20.0;
    graph.YScales.front().Maximum = 80.0;
    graph.YCoorAxColor = {kGreen};
    view->Work().Graphs().Replace({graph});
    view->Work().RebuildGraphs();
    control.Execute(CommandId::kReference);
    FindControl<QLineEdit>(control.Pane(), static_cast<int>(ReferencePaneId::kTolerance))
        ->setText(QStringLiteral("4"));
    (void)control.Watch().Choose({{{RecordGoodRun(folder)}, {}, 0}});
    control.Watch().Finish();
    for (const double value : ToolChange(120, 1.0)) {
        machine.values.insert(machine.values.end(), {value, 0.0});
    }
    (void)machine.events->BatchReady();
    view->Commands().Execute(CommandId::kStop);
    control.Pane().Pages().setCurrentIndex(page);
    frame.resizeDocks({&control.Dock()}, {300}, Qt::Vertical);
    QCoreApplication::processEvents();
    control.Watch().Finish();
    QCoreApplication::processEvents();
    QImage picture = frame.grab().toImage();
    qunsetenv(kDataHome);
    return picture;
}

QImage Verdict() {
    return Compared(kDefaultLook, 0);
}

QImage Difference() {
    return Compared(CommandId::kLookBlack, 1);
}

}  // namespace

std::vector<Scene> ReferenceScenes() {
    return {{"reference", Verdict}, {"reference_difference", Difference}};
}

}  // namespace wavo::testing
