// Backgrounds, device pixels, and a graph among other things.
#include "golden/scenes.h"

namespace wavo::testing {

namespace {

/// Three curves, zero lines and a run state: every colour of a graph.
WavoGraph Colourful() {
    WavoGraph graph = TimeGraph(4.0);
    graph.ZeroLines = true;
    AddCurve(graph, "X", kYellow, ManualScale(-10.0, 30.0));
    AddCurve(graph, "Y", kBlue, ManualScale(-30.0, 10.0));
    AddCurve(graph, "Z", kRed, ManualScale(-10.0, 10.0));
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 1e6, "X"};
    return graph;
}

std::vector<std::vector<double>> Values() {
    return {Sine(400, 200.0, 8.0, 6.0), Sine(400, 130.0, 9.0, -15.0), Sine(400, 90.0, 6.0)};
}

QImage On(const QColor& background) {
    return PictureOf(Colourful(), Values(), Looks(QSize(480, 160), background));
}

QImage OnDark() {
    return On(QColor(0x10, 0x14, 0x18));
}

QImage OnWhite() {
    return On(Qt::white);
}

QImage OnGrey() {
    return On(QColor(0x80, 0x80, 0x80));
}

QImage OnBlue() {
    return On(QColor(0x00, 0x40, 0xC0));
}

/// Curves in the colour of the background, in its complement, and next to it.
QImage CurvesLikeTheBackground() {
    WavoGraph graph = TimeGraph(4.0);
    AddCurve(graph, "same", 0x808080, ManualScale(-10.0, 10.0));
    AddCurve(graph, "complement", ComplementColor(0x808080), ManualScale(-10.0, 10.0));
    AddCurve(graph, "near", 0x90A080, ManualScale(-10.0, 10.0));
    return PictureOf(graph, {Sine(400, 200.0, 8.0), Sine(400, 130.0, 8.0), Sine(400, 90.0, 6.0)},
                     Looks(QSize(400, 140), QColor(0x80, 0x80, 0x80)));
}

/// What is printed on white paper of curves that were chosen for a dark screen.
QImage LightCurvesOnWhite() {
    WavoGraph graph = TimeGraph(4.0);
    graph.ZeroLines = true;
    AddCurve(graph, "white", 0xFFFFFF, ManualScale(-10.0, 10.0));
    AddCurve(graph, "yellow", 0x00FFFF, ManualScale(-10.0, 10.0));
    AddCurve(graph, "cyan", 0xFFFF00, ManualScale(-10.0, 10.0));
    return PictureOf(graph, {Sine(400, 200.0, 8.0), Sine(400, 130.0, 8.0), Sine(400, 90.0, 6.0)},
                     Looks(QSize(480, 140), Qt::white));
}

QImage WhitePathOnWhite() {
    WavoGraph graph = AxisGraph(4.0, ManualScale(-100.0, 100.0), ManualScale(-100.0, 100.0));
    graph.YCoorAxColor = {0xFFFFFF};
    return PictureOf(graph, {Sine(300, 200.0, 70.0), Sine(300, 200.0, 70.0, 0.0, 0.25)},
                     Looks(QSize(240, 160), Qt::white));
}

QImage WaitingOnWhite() {
    WavoGraph graph = TimeGraph(1.0);
    AddCurve(graph, "X", 0x000000, ManualScale(-10.0, 10.0));
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 1e6, "X"};
    return PictureOf(graph, {Sine(400, 200.0, 8.0)}, Looks(QSize(400, 100), Qt::white));
}

QImage HiDpi2() {
    ScopeLooks looks = Looks(QSize(240, 110), QColor(0x10, 0x14, 0x18));
    looks.ratio = 2.0;
    return PictureOf(Colourful(), Values(), looks);
}

/// The graph paints its own rectangle and no other pixel.
QImage AmongOthers() {
    const QRect rectangle(30, 20, 240, 100);
    Scope scope(Colourful(), kCycle, rectangle, 0.0,
                Looks(QSize(300, 140), QColor(0x10, 0x14, 0x18)));
    FeedInSteps(scope, Values(), 10);
    return scope.Image();
}

/// Eight curves of little difference: as many as there are line styles.
WavoGraph EightCurves(double range) {
    WavoGraph graph = TimeGraph(range);
    for (int curve = 0; curve < 8; ++curve) {
        AddCurve(graph, std::string(1, static_cast<char>('A' + curve)), kGreen,
                 ManualScale(-10.0, 10.0));
    }
    return graph;
}

std::vector<std::vector<double>> EightWaves(int count, double period) {
    std::vector<std::vector<double>> waves;
    for (int curve = 0; curve < 8; ++curve) {
        waves.push_back(Sine(count, period, 1.0 + 0.5 * curve, 7.0 - 2.0 * curve));
    }
    return waves;
}

ScopeLooks LineStyleLooks(const QSize& size) {
    ScopeLooks looks = Looks(size, Qt::white);
    looks.settings.line_styles = true;
    return looks;
}

QImage LineStylesOfManySamples() {
    return PictureOf(EightCurves(20.0), EightWaves(2000, 500.0), LineStyleLooks(QSize(560, 260)));
}

QImage LineStylesOfFewSamples() {
    return PictureOf(EightCurves(1.0), EightWaves(100, 40.0), LineStyleLooks(QSize(560, 260)));
}

/// What falls and rises at once, and noise.
QImage LineStylesOfEdges() {
    WavoGraph graph = TimeGraph(20.0);
    AddCurve(graph, "solid", kYellow, ManualScale(-10.0, 10.0));
    AddCurve(graph, "noise", kGreen, ManualScale(-10.0, 10.0));
    AddCurve(graph, "steps", kBlue, ManualScale(-10.0, 10.0));
    std::vector<double> noise = Sine(2000, 2.7, 3.0, 5.0);
    std::vector<double> steps;
    for (int i = 0; i < 2000; ++i) {
        steps.push_back(i / 130 % 2 == 0 ? -8.0 : -1.0);
    }
    ScopeLooks looks = Looks(QSize(480, 160));
    looks.settings.line_styles = true;
    return PictureOf(graph, {Sine(2000, 1300.0, 8.0), noise, steps}, looks);
}

QImage LineStylesOverAnAxis() {
    WavoGraph graph = AxisGraph(8.0, ManualScale(-100.0, 100.0), ManualScale(-100.0, 100.0));
    AddCurve(graph, "Z", kRed, ManualScale(-100.0, 100.0));
    AddCurve(graph, "W", kBlue, ManualScale(-100.0, 100.0));
    graph.YCoorAxColor[0] = kGreen;
    ScopeLooks looks = Looks(QSize(300, 260));
    looks.ratio = 2.0;
    looks.settings.line_styles = true;
    return PictureOf(graph,
                     {Sine(700, 400.0, 90.0), Sine(700, 400.0, 60.0), Sine(700, 200.0, 30.0),
                      Sine(700, 400.0, 90.0, 0.0, 0.25)},
                     looks);
}

}  // namespace

std::vector<Scene> LooksScenes() {
    return {
        {"background_dark", &OnDark},
        {"background_white", &OnWhite},
        {"background_grey", &OnGrey},
        {"background_blue", &OnBlue},
        {"curves_like_the_background", &CurvesLikeTheBackground},
        {"curves_light_on_white", &LightCurvesOnWhite},
        {"axis_white_on_white", &WhitePathOnWhite},
        {"state_waiting_on_white", &WaitingOnWhite},
        {"hidpi_2", &HiDpi2},
        {"among_others", &AmongOthers},
        {"line_styles_many_samples", &LineStylesOfManySamples},
        {"line_styles_few_samples", &LineStylesOfFewSamples},
        {"line_styles_edges", &LineStylesOfEdges},
        {"line_styles_over_an_axis", &LineStylesOverAnAxis},
    };
}

}  // namespace wavo::testing
