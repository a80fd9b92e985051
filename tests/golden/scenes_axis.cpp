// Graphs of an axis over an axis, with guiding circles and the fading of old points.
#include "golden/scenes.h"

namespace wavo::testing {

namespace {

WavoGraph Path(AxisDrawMode mode, const ScaleDefinition& x_scale, const ScaleDefinition& y_scale) {
    WavoGraph graph = AxisGraph(4.0, x_scale, y_scale);
    graph.ModeAx = mode;
    graph.YCoorAxColor = {kGreen};
    return graph;
}

/// y, then x: a figure with three loops, drawn once and a bit.
std::vector<std::vector<double>> Loops(int count, double x_middle = 0.0) {
    return {Sine(count, 120.0, 40.0), Sine(count, 360.0, 80.0, x_middle, 0.25)};
}

QImage AxisLines() {
    return PictureOf(
        Path(AxisDrawMode::kLines, ManualScale(-100.0, 100.0), ManualScale(-50.0, 50.0)),
        Loops(370));
}

QImage AxisPoints() {
    return PictureOf(
        Path(AxisDrawMode::kPoints, ManualScale(-100.0, 100.0), ManualScale(-50.0, 50.0)),
        Loops(370));
}

QImage AxisZeroLines() {
    WavoGraph graph =
        Path(AxisDrawMode::kLines, ManualScale(-100.0, 200.0), ManualScale(-50.0, 100.0));
    graph.ZeroLines = true;
    return PictureOf(graph, Loops(370));
}

QImage AxisAutomaticScales() {
    return PictureOf(Path(AxisDrawMode::kLines, AutomaticScale(), AutomaticScale()),
                     Loops(370, 250.0));
}

QImage AxisOldPointsGone() {
    return PictureOf(
        Path(AxisDrawMode::kLines, ManualScale(-100.0, 100.0), ManualScale(-50.0, 50.0)),
        {Sine(900, 240.0, 40.0), Sine(900, 700.0, 80.0, 0.0, 0.25)});
}

QImage AxisGuidingCircles() {
    WavoGraph graph =
        Path(AxisDrawMode::kLines, ManualScale(-100.0, 100.0), ManualScale(-50.0, 50.0));
    graph.InnerGuidingCircleDX = 30.0;
    graph.OuterGuidingCircleDX = 60.0;
    graph.UpdateGuidingCircles();
    return PictureOf(graph, Loops(200));
}

/// As low as one of seven graphs on a small screen, with so many device pixels per pixel.
QImage SmallCircle(double ratio) {
    WavoGraph graph =
        Path(AxisDrawMode::kLines, ManualScale(-100.0, 100.0), ManualScale(-100.0, 100.0));
    graph.AutoCircle = true;
    graph.InnerGuidingCircleDX = 40.0;
    graph.OuterGuidingCircleDX = 80.0;
    graph.UpdateGuidingCircles();
    ScopeLooks looks = Looks(QSize(300, 52));
    looks.ratio = ratio;
    return PictureOf(graph, {Sine(400, 200.0, 60.0), Sine(400, 200.0, 60.0, 0.0, 0.25)}, looks);
}

QImage SmallCircle1() {
    return SmallCircle(1.0);
}

QImage SmallCircle15() {
    return SmallCircle(1.5);
}

}  // namespace

std::vector<Scene> AxisScenes() {
    return {
        {"axis_lines", &AxisLines},
        {"axis_points", &AxisPoints},
        {"axis_zero_lines", &AxisZeroLines},
        {"axis_automatic_scales", &AxisAutomaticScales},
        {"axis_guiding_circles", &AxisGuidingCircles},
        {"axis_small_circle", &SmallCircle1},
        {"axis_small_circle_hidpi_1_5", &SmallCircle15},
        {"axis_old_points_gone", &AxisOldPointsGone},
    };
}

}  // namespace wavo::testing
