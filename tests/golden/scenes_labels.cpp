// Where the texts stand, how they shorten, and which drop out when there is no room.
#include "golden/scenes.h"

namespace wavo::testing {

namespace {

/// Curves with names of ordinary length.
WavoGraph Curves(int count, TriggerTypeCode trigger = TriggerTypeCode::kNone) {
    constexpr ColorRef kColors[] = {kYellow, kGreen, kBlue, kRed, kViolet};
    const char* const names[] = {"X", "Y", "Z", "C1", "Spindle"};
    WavoGraph graph = TimeGraph(4.0);
    for (int i = 0; i < count; ++i) {
        AddCurve(graph, names[i % 5], kColors[i % 5], ManualScale(-100.0, 100.0), i / 5);
    }
    if (count > 0) {
        graph.Triggers[0] = {trigger, 1e6, names[0]};
    }
    return graph;
}

std::vector<std::vector<double>> Values(int count) {
    std::vector<std::vector<double>> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        values.push_back(Sine(400, 110.0 + 20.0 * i, 70.0 - 5.0 * i, 0.0, 0.1 * i));
    }
    return values;
}

QImage CurvesIn(int count, const QSize& size, TriggerTypeCode trigger = TriggerTypeCode::kNone) {
    return PictureOf(Curves(count, trigger), Values(count), Looks(size));
}

QImage SevenCurves() {
    return CurvesIn(7, QSize(480, 240));
}

QImage TwelveCurvesNarrow() {
    return CurvesIn(12, QSize(320, 200));
}

QImage ThreeCurves320() {
    return CurvesIn(3, QSize(320, 120));
}

QImage OneCurve200() {
    return CurvesIn(1, QSize(200, 80));
}

QImage ThreeCurves200() {
    return CurvesIn(3, QSize(200, 80));
}

QImage SevenCurves200() {
    return CurvesIn(7, QSize(200, 80));
}

QImage OneCurve120() {
    return CurvesIn(1, QSize(120, 60));
}

QImage State200() {
    return CurvesIn(1, QSize(200, 80), TriggerTypeCode::kStopAbove);
}

QImage State120() {
    return CurvesIn(1, QSize(120, 60), TriggerTypeCode::kStartAbove);
}

QImage LowWide() {
    return CurvesIn(3, QSize(760, 44));
}

QImage Low400() {
    return CurvesIn(3, QSize(400, 40));
}

QImage Low200() {
    return CurvesIn(5, QSize(200, 30));
}

QImage LowState() {
    return CurvesIn(2, QSize(640, 44), TriggerTypeCode::kStopAbove);
}

QImage Lowest() {
    return CurvesIn(2, QSize(400, 24));
}

WavoGraph LongNames() {
    WavoGraph graph = TimeGraph(4.0);
    AddCurve(graph, "ActualPositionOfTheUpperMillingSpindleCarrier", kYellow,
             ManualScale(-100.0, 100.0));
    AddCurve(graph, "CommandedPositionOfTheUpperMillingSpindleCarrier", kBlue,
             ManualScale(-100.0, 100.0));
    return graph;
}

QImage LongNames480() {
    return PictureOf(LongNames(), Values(2), Looks(QSize(480, 160)));
}

QImage LongNames200() {
    return PictureOf(LongNames(), Values(2), Looks(QSize(200, 100)));
}

QImage LongNamesOverAxis() {
    WavoGraph graph = AxisGraph(4.0, ManualScale(-100.0, 100.0), ManualScale(-100.0, 100.0));
    graph.XCoorAxName = "ActualPositionOfTheUpperMillingSpindleCarrier";
    graph.YCoorAxName[0] = "CommandedPositionOfTheUpperMillingSpindleCarrier";
    graph.Triggers[0].AxName = graph.YCoorAxName[0];
    graph.YCoorAxColor[0] = kGreen;
    return PictureOf(graph, {Sine(400, 120.0, 70.0), Sine(400, 360.0, 70.0)},
                     Looks(QSize(400, 160)));
}

WavoGraph HugeNumbers() {
    WavoGraph graph = TimeGraph(123456.654321);
    AddCurve(graph, "X", kYellow, ManualScale(-1e8, 1e8));
    AddCurve(graph, "Y", kBlue, ManualScale(-99999999.123456, 99999999.654321));
    AddCurve(graph, "Z", kGreen, ManualScale(-0.000001, 0.000001));
    return graph;
}

/// One value in many seconds: the range of the graph is long.
QImage HugeNumbersIn(const QSize& size) {
    const ScopeLooks looks = Looks(size);
    Scope scope(HugeNumbers(), 400.0, QRect(QPoint(0, 0), size), 0.0, looks);
    FeedInSteps(scope, {Sine(300, 100.0, 9e7), Sine(300, 130.0, 8e7), Sine(300, 90.0, 1e-6)}, 10);
    return scope.Image();
}

QImage HugeNumbers640() {
    return HugeNumbersIn(QSize(640, 160));
}

QImage HugeNumbers200() {
    return HugeNumbersIn(QSize(200, 120));
}

QImage LinesIn(std::int32_t x_lines, std::int32_t y_lines) {
    ScopeLooks looks = Looks(QSize(400, 160));
    looks.scale_lines_x = x_lines;
    looks.scale_lines_y = y_lines;
    return PictureOf(Curves(1), Values(1), looks);
}

QImage ManyScaleLines() {
    return LinesIn(60, 30);
}

QImage TooManyScaleLines() {
    return LinesIn(5000, 1000000);
}

QImage LargeFont() {
    return PictureOf(Curves(3), Values(3), Looks(QSize(400, 200), Qt::black, 24));
}

}  // namespace

std::vector<Scene> LabelScenes() {
    return {
        {"labels_seven_curves_480x240", &SevenCurves},
        {"labels_twelve_curves_320x200", &TwelveCurvesNarrow},
        {"labels_three_curves_320x120", &ThreeCurves320},
        {"labels_one_curve_200x80", &OneCurve200},
        {"labels_three_curves_200x80", &ThreeCurves200},
        {"labels_seven_curves_200x80", &SevenCurves200},
        {"labels_one_curve_120x60", &OneCurve120},
        {"labels_state_200x80", &State200},
        {"labels_state_120x60", &State120},
        {"labels_low_760x44", &LowWide},
        {"labels_low_400x40", &Low400},
        {"labels_low_200x30", &Low200},
        {"labels_low_state_640x44", &LowState},
        {"labels_lowest_400x24", &Lowest},
        {"labels_long_names_480x160", &LongNames480},
        {"labels_long_names_200x100", &LongNames200},
        {"labels_long_names_over_axis", &LongNamesOverAxis},
        {"labels_huge_numbers_640x160", &HugeNumbers640},
        {"labels_huge_numbers_200x120", &HugeNumbers200},
        {"scale_lines_many", &ManyScaleLines},
        {"scale_lines_too_many", &TooManyScaleLines},
        {"font_large", &LargeFont},
    };
}

}  // namespace wavo::testing
