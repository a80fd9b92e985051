// Graphs over time: modes, run states, zoom, scales, and values that are no curve.
#include <limits>

#include "golden/scenes.h"

namespace wavo::testing {

namespace {

WavoGraph OneCurve(GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph = TimeGraph(4.0, mode);
    AddCurve(graph, "X", kYellow, ManualScale(-10.0, 10.0));
    return graph;
}

QImage ContinuityFilling() {
    return PictureOf(OneCurve(), {Sine(250, 90.0, 8.0)});
}

QImage ContinuityScrolled() {
    return PictureOf(OneCurve(), {Sine(730, 90.0, 8.0)});
}

QImage ClassicFirstSweep() {
    return PictureOf(OneCurve(GraphMode::kClassic), {Sine(250, 90.0, 8.0)});
}

QImage ClassicOverwritten() {
    return PictureOf(OneCurve(GraphMode::kClassic), {Sine(640, 97.0, 8.0)});
}

/// A graph whose trigger, at 5, fires at the 170th value.
QImage Triggered(TriggerTypeCode trigger, int count) {
    WavoGraph graph = TimeGraph(2.0);
    AddCurve(graph, "X", kGreen, ManualScale(-10.0, 10.0));
    graph.Triggers.back() = {trigger, 5.0, "X"};
    return PictureOf(graph, {Sine(count, 800.0, 9.0, 0.0, -0.125)});
}

QImage WaitingForStart() {
    return Triggered(TriggerTypeCode::kStartAbove, 100);
}

QImage RunningAfterStart() {
    return Triggered(TriggerTypeCode::kStartAbove, 270);
}

QImage StoppedAfterStart() {
    return Triggered(TriggerTypeCode::kStartAbove, 700);
}

QImage WaitingForStop() {
    return Triggered(TriggerTypeCode::kStopAbove, 100);
}

QImage StoppedAfterStop() {
    return Triggered(TriggerTypeCode::kStopAbove, 700);
}

QImage Zoomed() {
    Scope scope = MakeScope(OneCurve());
    FeedInSteps(scope, {Sine(400, 90.0, 8.0)}, 10);
    scope.draw->SetZoomRange(1.0, 2.25);
    scope.Draw();
    return scope.Image();
}

QImage AutomaticScaleWidened() {
    WavoGraph graph = TimeGraph(4.0);
    AddCurve(graph, "X", kYellow, AutomaticScale());
    std::vector<double> values = Sine(150, 60.0, 2.0, 1.0);
    const std::vector<double> larger = Sine(150, 60.0, 47.0, 1.0);
    values.insert(values.end(), larger.begin(), larger.end());
    return PictureOf(graph, {values});
}

QImage ConstantSignal() {
    WavoGraph graph = TimeGraph(4.0);
    AddCurve(graph, "X", kYellow, AutomaticScale());
    return PictureOf(graph, {std::vector<double>(300, 12.5)});
}

QImage GapsAndInfinities() {
    WavoGraph graph = OneCurve();
    std::vector<double> values = Sine(400, 200.0, 8.0);
    for (std::size_t i = 60; i < 100; ++i) {
        values[i] = std::numeric_limits<double>::quiet_NaN();
    }
    for (std::size_t i = 160; i < 200; ++i) {
        values[i] = std::numeric_limits<double>::infinity();
    }
    for (std::size_t i = 260; i < 300; ++i) {
        values[i] = -std::numeric_limits<double>::infinity();
    }
    return PictureOf(graph, {values});
}

QImage Derivations() {
    WavoGraph graph = TimeGraph(4.0);
    AddCurve(graph, "X", kYellow, ManualScale(-10.0, 10.0), 0);
    AddCurve(graph, "X", kGreen, ManualScale(-100.0, 100.0), 1);
    AddCurve(graph, "X", kBlue, ManualScale(-1000.0, 1000.0), 2);
    const std::vector<double> values = Sine(400, 80.0, 8.0);
    return PictureOf(graph, {values, values, values}, Looks(QSize(400, 180)));
}

WavoGraph WithZeroLines() {
    WavoGraph graph = TimeGraph(4.0);
    graph.ZeroLines = true;
    AddCurve(graph, "X", kYellow, ManualScale(-10.0, 30.0));
    AddCurve(graph, "Y", kBlue, ManualScale(-30.0, 10.0));
    return graph;
}

QImage ZeroLinePerCurve() {
    return PictureOf(WithZeroLines(), {Sine(400, 200.0, 8.0), Sine(400, 130.0, 9.0, -15.0)});
}

QImage ZeroLineShared() {
    WavoGraph graph = WithZeroLines();
    graph.YScales[1] = ManualScale(-1.0, 3.0);
    return PictureOf(graph, {Sine(400, 200.0, 8.0), Sine(400, 130.0, 0.8, 1.5)});
}

}  // namespace

std::vector<Scene> TimeScenes() {
    return {
        {"continuity_filling", &ContinuityFilling},
        {"continuity_scrolled", &ContinuityScrolled},
        {"classic_first_sweep", &ClassicFirstSweep},
        {"classic_overwritten", &ClassicOverwritten},
        {"state_waiting_for_start", &WaitingForStart},
        {"state_running_after_start", &RunningAfterStart},
        {"state_stopped_after_start", &StoppedAfterStart},
        {"state_waiting_for_stop", &WaitingForStop},
        {"state_stopped_after_stop", &StoppedAfterStop},
        {"zoomed", &Zoomed},
        {"automatic_scale_widened", &AutomaticScaleWidened},
        {"constant_signal", &ConstantSignal},
        {"gaps_and_infinities", &GapsAndInfinities},
        {"derivations", &Derivations},
        {"zero_line_per_curve", &ZeroLinePerCurve},
        {"zero_line_shared", &ZeroLineShared},
    };
}

}  // namespace wavo::testing
