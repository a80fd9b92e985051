// The pictures of the circle test and the axis test in the manual: a good machine, and one that
// wants work.
#include <QCoreApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QTabWidget>
#include <QTemporaryDir>
#include <cmath>
#include <memory>

#include "golden/scenes.h"
#include "golden/scenes_circle.h"
#include "lines_from_memory.h"
#include "measure/synthetic_machine.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/panes/axis_control.h"
#include "ui/panes/axis_pane.h"
#include "ui/panes/circle_control.h"
#include "ui/panes/circle_pane.h"
#include "ui/panes/pane_dock.h"
#include "ui/shell/looks.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr double kScale = 60.0;

WavoGraph Plane() {
    WavoGraph graph;
    graph.InitGraph(1, "Y", 0, nullptr);
    graph.YCoorAxColor = {kGreen};
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kManual;
    graph.XScale.Minimum = -kScale;
    graph.XScale.Maximum = kScale;
    graph.YScales[0] = graph.XScale;
    graph.FadeOutTime = 30.0;
    return graph;
}

QImage Tested(const measure::MachineErrors& errors, CommandId look, const QSize& size) {
    ApplyLook(FindLook(static_cast<int>(look)));
    QTemporaryDir folder;
    qputenv(kDataHome, folder.path().toLocal8Bit());
    measure::CircleProgram program;
    program.radius = 50.0;
    program.turns = {1.5, -1.5};
    program.cycle_time = 0.004;
    const measure::RunData data = measure::RunCircles(program, errors);
    const Prompts prompts = RealPrompts();
    auto source = std::make_unique<LinesFromMemory>();
    LinesFromMemory& lines = *source;
    QMainWindow frame;
    auto* const view = new CWavoView(prompts, &frame, std::move(source));
    frame.setCentralWidget(view);
    CircleControl control(frame, *view, prompts, nullptr, QStringLiteral("Wavo"));
    frame.resize(size);
    frame.show();
    view->OnInitialUpdate();
    view->Screen().ShowEditor(false);
    view->Work().Graphs().Replace({Plane()});
    view->Work().RebuildGraphs();
    for (std::size_t i = 0; i < data.x.size(); ++i) {
        // As a control gives them: with so many decimals.
        lines.values.insert(lines.values.end(),
                            {std::round(data.x[i] * 1e5) / 1e5, std::round(data.y[i] * 1e5) / 1e5});
    }
    (void)lines.events->BatchReady();
    view->Commands().Execute(CommandId::kStop);
    control.Execute(CommandId::kCircleTest);
    FindControl<QLineEdit>(control.Pane(), static_cast<int>(CirclePaneId::kRadius))
        ->setText(QStringLiteral("50"));
    FindControl<QLineEdit>(control.Pane(), static_cast<int>(CirclePaneId::kFeed))
        ->setText(QStringLiteral("6000"));
    frame.resizeDocks({&control.Dock()}, {size.width() / 2}, Qt::Horizontal);
    QCoreApplication::processEvents();
    control.Watch().Finish();
    QCoreApplication::processEvents();
    QImage picture = frame.grab().toImage();
    qunsetenv(kDataHome);
    return picture;
}

measure::MachineErrors Bad() {
    measure::MachineErrors errors;
    errors.lag_x = 0.0200;
    errors.lag_y = 0.0202;
    errors.play_x = 0.008;
    errors.spike_y = 0.006;
    errors.noise = 0.0002;
    return errors;
}

QImage GoodMachine() {
    measure::MachineErrors errors;
    errors.lag_x = errors.lag_y = 0.02;
    errors.noise = 0.0002;
    return Tested(errors, kDefaultLook, QSize(1100, 640));
}

QImage BadMachine() {
    return Tested(Bad(), kDefaultLook, QSize(1100, 640));
}

QImage BadMachineInTheDark() {
    return Tested(Bad(), CommandId::kLookBlack, QSize(760, 640));
}

/// Lines of any axes.
class MovesFromMemory : public LinesFromMemory {
 public:
    BatchOutcome Take(ValueBatch& b) override {
        const std::size_t axes = description.axis_names.size();
        return b = {values.data(), values.size() / axes, axes}, BatchOutcome::kTaken;
    }
};

/// Moves to and fro of an axis: one whose loop swings a little, or one as it should be.
void AddMoves(LinesFromMemory* lines, double damping) {
    double commanded = 0.0;
    double place = 0.0;
    double speed = 0.0;
    constexpr double kCycleOfMoves = 0.002;
    constexpr double kGain = 900.0;  // 1/s^2
    for (int i = 0; i < 4000; ++i) {
        const int phase = i % 2000;
        const double move = phase >= 300 && phase < 800     ? 0.08
                            : phase >= 1300 && phase < 1800 ? -0.08
                                                            : 0.0;
        commanded += move;
        speed += (kGain * (commanded - place) - damping * speed) * kCycleOfMoves;
        place += speed * kCycleOfMoves;
        lines->values.insert(lines->values.end(),
                             {std::round(commanded * 1e4) / 1e4, std::round(place * 1e4) / 1e4});
    }
}

constexpr double kSwings = 32.0;  // 1/s
constexpr double kSettles = 54.0;

QImage AxisTest(int page, double damping = kSwings) {
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    QTemporaryDir folder;
    qputenv(kDataHome, folder.path().toLocal8Bit());
    const Prompts prompts = RealPrompts();
    auto source = std::make_unique<MovesFromMemory>();
    source->description = {{"X_cmd", "X"}, 0.002};
    LinesFromMemory& lines = *source;
    QMainWindow frame;
    auto* const view = new CWavoView(prompts, &frame, std::move(source));
    frame.setCentralWidget(view);
    AxisControl control(frame, *view, prompts, nullptr, QStringLiteral("Wavo"));
    frame.resize(QSize(1000, 640));
    frame.show();
    view->OnInitialUpdate();
    view->Screen().ShowEditor(false);
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.Mode = GraphMode::kContinuity;
    graph.XScale.TimeRange = 8.0;
    graph.YScales.front().ScaleAx = ScaleAxCode::kAutomatic;
    graph.YCoorAxColor = {kGreen};
    view->Work().Graphs().Replace({graph});
    view->Work().RebuildGraphs();
    control.Execute(CommandId::kAxisTest);
    AddMoves(&lines, damping);
    (void)lines.events->BatchReady();
    view->Commands().Execute(CommandId::kStop);
    control.Pane().Pages().setCurrentIndex(page);
    frame.resizeDocks({&control.Dock()}, {380}, Qt::Vertical);
    QCoreApplication::processEvents();
    control.Watch().Finish();
    QCoreApplication::processEvents();
    QImage picture = frame.grab().toImage();
    qunsetenv(kDataHome);
    return picture;
}

QImage AxisFigures() {
    return AxisTest(0);
}

QImage GoodAxis() {
    return AxisTest(2, kSettles);
}

QImage AxisMoves() {
    return AxisTest(1);
}

QImage AxisFollowing() {
    return AxisTest(2);
}

}  // namespace

std::vector<Scene> CircleScenes() {
    return {{"circle_good", GoodMachine},
            {"circle_bad", BadMachine},
            {"circle_bad_dark", BadMachineInTheDark},
            {"axis_figures", AxisFigures},
            {"axis_good", GoodAxis},
            {"axis_moves", AxisMoves},
            {"axis_following", AxisFollowing}};
}

}  // namespace wavo::testing
