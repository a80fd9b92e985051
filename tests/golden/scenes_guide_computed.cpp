// The pictures of the manual that show computed axes.
#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>
#include <cmath>
#include <memory>
#include <numbers>

#include "golden/scenes.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "ui/shell/looks.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

const std::vector<computed::ComputedAxis> kShownAxes{{"radius", "hypot(X, Y)", "mm"},
                                                     {"speed", "hypot(d(X), d(Y))", "mm/s"}};

/// The dialog while an expression is being typed.
QImage DialogIn(CommandId look) {
    ApplyLook(FindLook(static_cast<int>(look)));
    std::vector<computed::ComputedAxis> axes = kShownAxes;
    axes.push_back({"lag", "(X - [X cmd] / speed", "s"});
    ComputedAxesDialog dialog(axes, {"X", "Y", "X cmd"}, nullptr);
    dialog.show();
    FindControl<QTableWidget>(dialog, static_cast<int>(ComputedAxesId::kTable))->selectRow(2);
    auto* const expression =
        FindControl<QLineEdit>(dialog, static_cast<int>(ComputedAxesId::kExpression));
    expression->setFocus();
    expression->setReadOnly(true);  // no cursor that blinks
    QCoreApplication::processEvents();
    return dialog.grab().toImage();
}

QImage Dialog() {
    return DialogIn(kDefaultLook);
}

QImage DialogInTheDark() {
    return DialogIn(CommandId::kLookBlack);
}

WavoGraph OfBoth() {
    WavoGraph graph;
    graph.InitGraph(1, "radius", 0, nullptr);
    graph.Mode = GraphMode::kContinuity;
    graph.XScale.TimeRange = 4.0;
    graph.YCoorAxName = {"radius", "speed"};
    graph.YCoorAxColor = {kYellow, kBlue};
    graph.YCoorAxDerivation = {0, 0};
    graph.Triggers.resize(2, graph.Triggers.front());
    graph.YScales.resize(2, graph.YScales.front());
    for (ScaleDefinition& scale : graph.YScales) {
        scale.ScaleAx = ScaleAxCode::kAutomatic;
    }
    return graph;
}

/// A circle whose radius swings a little, faster and faster.
QImage Curves() {
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    const QTemporaryDir folder;
    qputenv(kDataHome, folder.path().toLocal8Bit());
    const Prompts prompts = RealPrompts();
    auto source = std::make_unique<LinesFromMemory>();
    LinesFromMemory& machine = *source;
    CWavoView view(prompts, nullptr, std::move(source));
    view.resize(900, 300);
    view.show();
    view.OnInitialUpdate();
    view.Screen().ShowEditor(false);
    view.Work().Computed().Define(kShownAxes);
    view.Work().Graphs().Replace({OfBoth()});
    view.Work().RebuildGraphs();
    for (int line = 0; line < 1000;) {
        machine.values.clear();
        for (int i = 0; i < 100; ++i, ++line) {
            const double angle = std::numbers::pi * line * line / 3e5;
            const double radius = 50.0 + std::sin(4.0 * angle);
            machine.values.insert(machine.values.end(),
                                  {radius * std::cos(angle), radius * std::sin(angle)});
        }
        (void)machine.events->BatchReady();
    }
    view.Commands().Execute(CommandId::kStop);
    QCoreApplication::processEvents();
    QImage picture = view.grab().toImage();
    qunsetenv(kDataHome);
    return picture;
}

}  // namespace

std::vector<Scene> ComputedScenes() {
    return {{"computed_axes", Dialog},
            {"computed_axes_dark", DialogInTheDark},
            {"computed_curves", Curves}};
}

}  // namespace wavo::testing
