#include <gtest/gtest.h>

#include <limits>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/graph_draw.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::CountingHost;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Scope;
using testing::TimeGraph;

TEST(Hostile, EverySampleOnEveryScaleIsDrawn) {
    const std::vector<double> samples{0.0,  kNaN,  1.0,    kInf, -kInf,  kMax, -kMax, kNaN,
                                      kNaN, 1e300, 1e-300, -0.0, 5e-324, -1.0, 1e-7};
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        for (const ScaleDefinition& scale :
             {AutomaticScale(), ManualScale(0.0, 0.0), ManualScale(-kMax, kMax),
              ManualScale(0.0, 1e-300), ManualScale(1e300, 1e300), ManualScale(5.0, -5.0),
              ManualScale(kNaN, kNaN), ManualScale(-kInf, kInf)}) {
            WavoGraph graph = TimeGraph(10.0, mode);
            graph.ZeroLines = true;
            AddAxis(graph, "X", scale);
            Scope scope(graph);
            for (int round = 0; round < 6; ++round) {
                scope.Feed({samples});
            }
            EXPECT_EQ(scope.Line().Size(), 41U);
        }
    }
}

TEST(Hostile, EverySampleOverAnAxisIsDrawn) {
    const std::vector<double> samples{0.0, kNaN, 1.0, kInf, -kInf, kMax, -kMax, 1e-300};
    std::vector<double> reversed(samples.rbegin(), samples.rend());
    for (const AxisDrawMode mode : {AxisDrawMode::kLines, AxisDrawMode::kPoints}) {
        WavoGraph graph = AxisGraph(4.0, AutomaticScale(), AutomaticScale());
        graph.ModeAx = mode;
        graph.ZeroLines = true;
        Scope scope(graph);
        for (int round = 0; round < 4; ++round) {
            scope.Feed({samples, reversed});
        }
        EXPECT_EQ(scope.Line().Size(), 17U);
    }
}

TEST(Hostile, AConstantSignalHasAVisibleCurve) {
    for (const double value : {0.0, 1e-300, 1e300, -7.0}) {
        WavoGraph graph = TimeGraph(10.0);
        AddAxis(graph, "X", AutomaticScale());
        Scope scope(graph);
        scope.Feed({std::vector<double>(20, value)});
        scope.Feed({std::vector<double>(20, value)});
        EXPECT_NEAR(scope.Line().Point(3).y, scope.draw->PlotArea().center().y(), 1) << value;
    }
}

TEST(Hostile, RectanglesOfEverySizeWork) {
    WavoGraph graph = TimeGraph(1.0);
    graph.ZeroLines = true;
    AddAxis(graph, "X", AutomaticScale());
    AddAxis(graph, "Y", ManualScale(-1.0, 1.0));
    for (const QRect& rectangle :
         {QRect(), QRect(0, 0, 0, 0), QRect(0, 0, 1, 1), QRect(5, 5, 2, 2), QRect(0, 0, 400, 1),
          QRect(0, 0, 1, 200), QRect(10, 10, -20, -20), QRect(-5000, -5000, 20000, 20000),
          QRect(0, 0, 60, 12), QRect(-30, -30, 80, 60)}) {
        Scope scope(graph, 0.25, rectangle);
        scope.Feed({{1, 2, kNaN, 4}, {1, -1, kInf, 0}});
        EXPECT_EQ(scope.Line().Size(), 4U) << "the steps go on without room";
        scope.draw->SetRectangle(QRect(0, 0, 400, 200));
        scope.Draw();
        EXPECT_GT(scope.Count(QColor(255, 255, 0)), 20);
    }
}

TEST(Hostile, EveryTimeRangeAndCycleTimeWorks) {
    for (const double range : {0.0, -1.0, 1e-300, 0.0001, 1e300, kInf, kNaN}) {
        for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
            WavoGraph graph = TimeGraph(range, mode);
            AddAxis(graph, "X", AutomaticScale());
            Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 1.0);
            scope.Feed({{1}});
            scope.Feed({{2}});
            scope.Draw(true);
            EXPECT_EQ(scope.draw->State(), RunState::kRunning);
        }
    }
    for (const double cycle_time : {0.0, -0.25, 1e-300, kInf, kNaN}) {
        CountingHost host;
        WavoGraph graph = TimeGraph(1.0);
        AddAxis(graph, "X", ManualScale(0.0, 1.0), TriggerTypeCode::kStartAbove, 0.5);
        QImage image(100, 100, QImage::Format_RGB32);
        GraphDraw draw(QRect(0, 0, 100, 100), graph, host, {}, cycle_time, 5, 3,
                       {{nullptr}, nullptr});
        draw.DrawGraph(image, false);
        EXPECT_EQ(draw.State(), RunState::kWaitingForStart);
    }
}

TEST(Hostile, ADefinitionWithMissingEntriesIsCompleted) {
    WavoGraph graph = TimeGraph(1.0);
    graph.YCoorAxName = {"X", "Y"};
    graph.YScales = {ManualScale(0.0, 1.0)};
    CountingHost host;
    QImage image(400, 200, QImage::Format_RGB32);
    // Once for the curve and once for the spacing text.
    const ExpectErrorLog expected({"GraphDefineGetMinMaxValue(): invalid ScaleType",
                                   "GraphDefineGetMinMaxValue(): invalid ScaleType"});
    GraphDraw draw(QRect(0, 0, 400, 200), graph, host, {}, 0.25, 5, 3,
                   {{nullptr, nullptr}, nullptr});
    draw.DrawGraph(image, false);
    EXPECT_EQ(draw.Graph().YCoorAxColor, (std::vector<ColorRef>{0xFFFFFF, 0xFFFFFF}));
    EXPECT_EQ(draw.Graph().YCoorAxDerivation, (std::vector<std::int32_t>{0, 0}));
    EXPECT_EQ(draw.Graph().Triggers[1].TriggerType, TriggerTypeCode::kNone);
    EXPECT_EQ(YText(draw.Graph(), 1), "?");
}

TEST(Hostile, AnEntryMoreInTheYScalesIsLegal) {
    WavoGraph graph = TimeGraph(1.0);
    graph.YScales = {ManualScale(7.0, 8.0)};
    AddAxis(graph, "X", ManualScale(0.0, 1.0));
    Scope scope(graph);
    scope.Feed({{7.5, 7.5}});
    EXPECT_EQ(YText(scope.draw->Graph(), 0), "Y: X=(7.0 ... 8.0)");
}

TEST(Hostile, AnyNumberOfScaleLinesWorks) {
    const std::int32_t most = std::numeric_limits<std::int32_t>::max();
    WavoGraph graph = TimeGraph(1.0);
    AddAxis(graph, "X", ManualScale(0.0, 1.0));
    CountingHost host;
    QImage image(400, 200, QImage::Format_RGB32);
    image.fill(Qt::black);
    GraphDraw draw(QRect(0, 0, 400, 200), graph, host, {}, 0.25, most, most, {{nullptr}, nullptr});
    draw.DrawGraph(image, false);
    const QRect plot = draw.PlotArea();
    EXPECT_EQ(image.pixelColor(plot.center()), QColor(Qt::black))
        << "lines that cannot be told apart are left out";
}

}  // namespace
}  // namespace wavo
