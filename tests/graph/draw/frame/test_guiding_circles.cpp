#include "graph/draw/frame/guiding_circles.h"

#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <functional>

#include "drawing_fixture.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::AutomaticScale;
using testing::AxisGraph;
using testing::ManualScale;

ScaleLines XLines(const QRect& plot, double minimum, double maximum) {
    ScaleLines lines = VerticalScaleLines(plot, 5);
    FillScaleValues(lines, {minimum, maximum});
    return lines;
}

ScaleLines YLines(const QRect& plot, double minimum, double maximum) {
    ScaleLines lines = HorizontalScaleLines(plot, 3);
    FillScaleValues(lines, {minimum, maximum});
    return lines;
}

WavoGraph CircleGraph(double radius, const ScaleDefinition& x, const ScaleDefinition& y) {
    WavoGraph graph = AxisGraph(1.0, x, y);
    graph.AutoCircle = true;
    graph.InnerGuidingCircleDX = radius;
    graph.UpdateGuidingCircles();
    return graph;
}

const QColor kCircleColor(255, 0, 0);

QImage PaintedCircles(const QRect& plot, const GuidingCircles& circles, double ratio = 1.0) {
    QImage picture(400, 300, QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    PaintCircles(painter, plot, circles, kCircleColor, ratio);
    painter.end();
    return picture;
}

QRect PaintedArea(const QImage& picture) {
    QRect area;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            // Half a line at least: smooth edges reach a pixel farther.
            if (picture.pixelColor(x, y).red() >= 100) {
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    return area;
}

/// Whether the circle is seen within a pixel of a place.
bool IsNear(const QImage& picture, double x, double y) {
    const QPoint place(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            const QPoint near = place + QPoint(dx, dy);
            if (picture.rect().contains(near) && picture.pixelColor(near).red() >= 100) {
                return true;
            }
        }
    }
    return false;
}

int PaintedPixels(const QImage& picture) {
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += picture.pixelColor(x, y) != QColor(Qt::black) ? 1 : 0;
        }
    }
    return count;
}

TEST(PlaceCircle, StandsAroundZeroWithTheRadiiOfBothUnits) {
    struct Row {
        double x_minimum, x_maximum, y_minimum, y_maximum;
        double x, y, x_radius, y_radius;  // of radii 5 and 2
    };
    const QRect plot(10, 20, 201, 101);
    for (const Row& row : {
             Row{-10, 10, -5, 5, 110, 70, 50, 20}, Row{0, 20, 0, 10, 10, 120, 50, 20},
             Row{-20, 0, -10, 0, 210, 20, 50, 20},
             Row{10, 30, -5, 5, -90, 70, 50, 20},     // zero to the left of the scale
             Row{-10, 10, 10, 20, 110, 220, 50, 20},  // and below it
         }) {
        const auto place = PlaceCircle(5.0, 2.0, XLines(plot, row.x_minimum, row.x_maximum),
                                       YLines(plot, row.y_minimum, row.y_maximum));
        ASSERT_TRUE(place.has_value());
        EXPECT_DOUBLE_EQ(place->x, row.x);
        EXPECT_DOUBLE_EQ(place->y, row.y);
        EXPECT_DOUBLE_EQ(place->x_radius, row.x_radius);
        EXPECT_DOUBLE_EQ(place->y_radius, row.y_radius);
    }
}

TEST(PlaceCircle, ThereIsNoneWithoutARadius) {
    const QRect plot(0, 0, 201, 101);
    const ScaleLines x = XLines(plot, -10, 10);
    const ScaleLines y = YLines(plot, -10, 10);
    EXPECT_TRUE(PlaceCircle(1.0, 1.0, x, y).has_value());
    for (const double radius : {kNoRadius, kInf, -kInf, kNaN, 0.0, -1.0, 1e300}) {
        EXPECT_FALSE(PlaceCircle(radius, 1.0, x, y).has_value()) << radius;
        EXPECT_FALSE(PlaceCircle(1.0, radius, x, y).has_value()) << radius;
    }
}

TEST(PlaceCircle, ThereIsNoneOnAScaleWithoutExtent) {
    const QRect plot(0, 0, 201, 101);
    const ScaleLines x = XLines(plot, -10, 10);
    const ScaleLines y = YLines(plot, -10, 10);
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, {}, y).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, x, {}).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, XLines(plot, 3, 3), y).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, x, YLines(plot, 0, 0)).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, x, YLines(plot, 5, -5)).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, XLines(plot, kNaN, 1), y).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, XLines(plot, -1e308, 1e308), y).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, XLines(QRect(0, 0, 1, 1), -1, 1), y).has_value());
}

TEST(PlaceCircle, ThereIsNoneTooFarAwayForItsPlaceToBeTold) {
    const QRect plot(0, 0, 201, 101);
    const ScaleLines y = YLines(plot, -10, 10);
    EXPECT_TRUE(PlaceCircle(1.0, 1.0, XLines(plot, 1e6, 1e6 + 1.0), y).has_value());
    EXPECT_FALSE(PlaceCircle(1.0, 1.0, XLines(plot, 1e6, 1e6 + 1e-6), y).has_value());
    EXPECT_FALSE(PlaceCircle(1e6, 1.0, XLines(plot, -1e-6, 1e-6), y).has_value());
}

TEST(PlaceCircles, AreThoseOfTheGraph) {
    const QRect plot(0, 0, 201, 101);
    WavoGraph graph = CircleGraph(5.0, ManualScale(-10, 10), ManualScale(-10, 10));
    graph.OuterGuidingCircleDX = 8.0;
    graph.AutoCircle = false;
    graph.YScales[0] = ManualScale(-1, 1);
    graph.UpdateGuidingCircles();
    const ScaleLines x = XLines(plot, -10, 10);
    const ScaleLines y = YLines(plot, -1, 1);
    GuidingCircles circles = PlaceCircles(graph, x, y);
    ASSERT_TRUE(circles.inner && circles.outer);
    EXPECT_DOUBLE_EQ(circles.inner->x_radius, 50.0);
    EXPECT_DOUBLE_EQ(circles.inner->y_radius, 25.0);  // as wide a part of the one scale as of
    EXPECT_DOUBLE_EQ(circles.outer->x_radius, 80.0);  // the other
    EXPECT_DOUBLE_EQ(circles.outer->y_radius, 40.0);

    graph.InnerGuidingCircleDX = kNoRadius;
    graph.UpdateGuidingCircles();
    circles = PlaceCircles(graph, x, y);
    EXPECT_FALSE(circles.inner.has_value());
    EXPECT_TRUE(circles.outer.has_value());

    graph.XCoorType = CoorType::kTime;
    EXPECT_FALSE(PlaceCircles(graph, x, y).outer.has_value());
}

TEST(RoundPlot, IsTheLargestInTheMiddleWithEqualUnits) {
    struct Row {
        QRect available;
        ScaleDefinition x, y;
        QRect expected;
    };
    for (const Row& row : {
             Row{{0, 0, 301, 201}, ManualScale(-1, 1), ManualScale(-1, 1), {50, 0, 201, 201}},
             Row{{10, 20, 101, 401}, ManualScale(-1, 1), ManualScale(-1, 1), {10, 170, 101, 101}},
             Row{{0, 0, 301, 201}, ManualScale(-2, 2), ManualScale(-1, 1), {0, 25, 301, 151}},
             Row{{0, 0, 301, 201}, ManualScale(0, 1), ManualScale(-2, 0), {100, 0, 101, 201}},
             Row{{0, 0, 201, 201}, ManualScale(-1, 1), ManualScale(-1, 1), {0, 0, 201, 201}},
         }) {
        EXPECT_EQ(RoundPlot(row.available, CircleGraph(0.5, row.x, row.y)), row.expected);
    }
}

TEST(RoundPlot, IsWhatIsAvailableWhenNothingHasToBeRound) {
    const QRect available(0, 0, 301, 201);
    struct Row {
        const char* name;
        std::function<void(WavoGraph&)> change;
    };
    const std::vector<Row> rows{
        {"no automatic circle", [](WavoGraph& graph) { graph.AutoCircle = false; }},
        {"over time", [](WavoGraph& graph) { graph.XCoorType = CoorType::kTime; }},
        {"no circle", [](WavoGraph& graph) { graph.InnerGuidingCircleDX = kNoRadius; }},
        {"no size", [](WavoGraph& graph) { graph.InnerGuidingCircleDX = 0.0; }},
        {"no y axis", [](WavoGraph& graph) { graph.YScales.clear(); }},
        {"x automatic", [](WavoGraph& graph) { graph.XScale = AutomaticScale(-1, 1); }},
        {"y automatic", [](WavoGraph& graph) { graph.YScales[0] = AutomaticScale(-1, 1); }},
        {"x a time", [](WavoGraph& graph) { graph.XScale.ScaleType = ScaleTypeCode::kTime; }},
        {"zero left of x", [](WavoGraph& graph) { graph.XScale = ManualScale(0.1, 2); }},
        {"zero above y", [](WavoGraph& graph) { graph.YScales[0] = ManualScale(-2, -0.1); }},
        {"no x extent", [](WavoGraph& graph) { graph.XScale = ManualScale(0, 0); }},
        {"too low", [](WavoGraph& graph) { graph.XScale = ManualScale(-2000, 2000); }},
        {"too narrow", [](WavoGraph& graph) { graph.YScales[0] = ManualScale(-2000, 2000); }},
        {"no number", [](WavoGraph& graph) { graph.XScale = ManualScale(kNaN, 20); }},
        {"too large", [](WavoGraph& graph) { graph.XScale = ManualScale(-1e308, 1e308); }},
    };
    for (const Row& row : rows) {
        WavoGraph graph = CircleGraph(0.5, ManualScale(-1, 1), ManualScale(-1, 1));
        ASSERT_NE(RoundPlot(available, graph), available);
        row.change(graph);
        EXPECT_EQ(RoundPlot(available, graph), available) << row.name;
    }
    const WavoGraph graph = CircleGraph(0.5, ManualScale(-1, 1), ManualScale(-1, 1));
    EXPECT_EQ(RoundPlot(QRect(), graph), QRect());
    EXPECT_EQ(RoundPlot(QRect(0, 0, 2, 200), graph), QRect(0, 0, 2, 200)) << "there is no room";
}

TEST(RoundPlot, IsRoundHoweverSmall) {
    const WavoGraph graph = CircleGraph(0.5, ManualScale(-1, 1), ManualScale(-1, 1));
    for (int side = 3; side <= 45; ++side) {
        EXPECT_EQ(RoundPlot(QRect(0, 0, side, 200), graph).size(), QSize(side, side));
        EXPECT_EQ(RoundPlot(QRect(0, 0, 900, side), graph).size(), QSize(side, side));
    }
}

TEST(RoundPlot, MakesTheCircleRound) {
    const ScaleDefinition x_scale = ManualScale(-30, 90);
    const ScaleDefinition y_scale = ManualScale(-25, 40);
    const WavoGraph graph = CircleGraph(20.0, x_scale, y_scale);
    const QRect plot = RoundPlot(QRect(5, 5, 390, 290), graph);
    const QImage picture =
        PaintedCircles(plot, PlaceCircles(graph, XLines(plot, -30, 90), YLines(plot, -25, 40)));
    const QRect area = PaintedArea(picture);
    EXPECT_GT(area.width(), 100);
    EXPECT_NEAR(area.width(), area.height(), 1);
}

TEST(PaintCircles, RunsThroughThePixelsOfTheRadius) {
    const QRect plot(0, 0, 400, 300);
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const QImage picture =
            PaintedCircles(plot, {CirclePlace{200.0, 150.0, 120.0, 80.0}, {}}, ratio);
        for (int degrees = 0; degrees < 360; ++degrees) {
            const double angle = degrees * std::acos(-1.0) / 180.0;
            EXPECT_TRUE(
                IsNear(picture, 200.0 + 120.0 * std::cos(angle), 150.0 + 80.0 * std::sin(angle)))
                << degrees << " at " << ratio;
        }
        EXPECT_FALSE(IsNear(picture, 200.0, 150.0));
    }
    // At a ratio of 1 the whole circle lies on single pixels where it touches its box.
    const QImage picture = PaintedCircles(plot, {CirclePlace{200.0, 150.0, 120.0, 80.0}, {}});
    EXPECT_EQ(PaintedArea(picture), QRect(QPoint(80, 70), QPoint(320, 230)));
}

TEST(PaintCircles, TheOuterCircleIsDashed) {
    const QRect plot(0, 0, 400, 300);
    const CirclePlace place{200.0, 150.0, 120.0, 120.0};
    const int whole = PaintedPixels(PaintedCircles(plot, {place, {}}));
    const int dashed = PaintedPixels(PaintedCircles(plot, {{}, place}));
    EXPECT_LT(dashed, whole * 0.75);
    EXPECT_GT(dashed, whole * 0.5);
}

TEST(PaintCircles, NothingIsPaintedOutsideThePlotArea) {
    const QRect plot(100, 50, 120, 90);
    for (const double radius : {30.0, 60.0, 100.0, 500.0}) {
        const CirclePlace place{150.0, 100.0, radius, radius};
        const QImage picture = PaintedCircles(plot, {place, place}, 2.0);
        EXPECT_EQ(PaintedArea(picture) | plot, plot) << radius;
    }
    EXPECT_EQ(PaintedPixels(PaintedCircles(QRect(), {CirclePlace{50, 50, 20, 20}, {}})), 0);
}

TEST(PaintCircles, OfAHugeCircleTheArcThatIsSeenIsPainted) {
    const QRect plot(0, 0, 400, 300);
    for (const double radius : {1e4, 1e6, 1e9, 1e12}) {
        // Through the middle of the plot area, with the centre far to the left, below, and at 45
        // degrees above to the right.
        const QImage left =
            PaintedCircles(plot, {CirclePlace{200 - radius, 150, radius, radius}, {}});
        const QImage below =
            PaintedCircles(plot, {CirclePlace{200, 150 + radius, radius, radius}, {}});
        const double leg = radius * std::sqrt(0.5);
        const QImage above =
            PaintedCircles(plot, {CirclePlace{200 + leg, 150 - leg, radius, radius}, {}});
        for (int offset = -100; offset <= 100; offset += 10) {
            const double sag = offset * offset / 2.0 / radius;
            EXPECT_TRUE(IsNear(left, 200.0 - sag, 150.0 + offset)) << radius;
            EXPECT_TRUE(IsNear(below, 200.0 + offset, 150.0 + sag)) << radius;
            EXPECT_TRUE(IsNear(above, 200.0 + offset + sag, 150.0 + offset - sag)) << radius;
        }
    }
}

TEST(PaintCircles, AFlatEllipseIsPaintedToItsTip) {
    // Nearly two parallels, 40 pixels apart, which meet 1e6 pixels to the left and right.
    const QRect plot(0, 0, 400, 300);
    const QImage middle = PaintedCircles(plot, {CirclePlace{200, 150, 1e9, 20}, {}});
    for (int x = 1; x < 399; ++x) {
        EXPECT_TRUE(IsNear(middle, x, 130)) << x;
        EXPECT_TRUE(IsNear(middle, x, 170)) << x;
    }
    const QImage tip = PaintedCircles(plot, {CirclePlace{200 - 1e4, 150, 1e4, 1000}, {}});
    for (const double dy : {-100.0, -50.0, 0.0, 50.0, 100.0}) {
        EXPECT_TRUE(IsNear(tip, 200.0 - 1e4 * (1.0 - std::sqrt(1.0 - dy * dy / 1e6)), 150.0 + dy));
    }
}

TEST(PaintCircles, ACircleAroundOrBesideThePlotAreaIsNotSeen) {
    const QRect plot(0, 0, 400, 300);
    for (const CirclePlace& place :
         {CirclePlace{200, 150, 1e9, 1e9}, CirclePlace{200, 150, 260, 260},
          CirclePlace{2000, 150, 100, 100}, CirclePlace{-1e11, -1e11, 1e11, 1e11}}) {
        EXPECT_EQ(PaintedPixels(PaintedCircles(plot, {place, place})), 0) << place.x;
    }
}

TEST(PaintCircles, TheColorStandsOutFromTheCurve) {
    for (const QColor& background : {QColor(16, 20, 24), QColor(Qt::white), QColor(Qt::black)}) {
        const FrameColors colors(background);
        for (const QColor& curve :
             {colors.circle, colors.other_circle, QColor(255, 255, 0), QColor(0, 0, 255),
              QColor(255, 0, 0), QColor(0, 255, 0), QColor(Qt::white), QColor(Qt::black)}) {
            const QColor circle = CircleColor(colors, curve);
            const int distance = std::abs(circle.red() - curve.red()) +
                                 std::abs(circle.green() - curve.green()) +
                                 std::abs(circle.blue() - curve.blue());
            EXPECT_GT(distance, 150) << curve.name().toStdString();
        }
    }
}

}  // namespace
}  // namespace wavo
