// What the editor does to a record, without any window.
#include "ui/graph_editor/graph_edits.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

namespace wavo {
namespace {

/// X over Y with manual scales, round circles and one y axis.
WavoGraph OverAxis() {
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    graph.AutoCircle = true;
    graph.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -10.0, 30.0};
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -5.0, 5.0}};
    return graph;
}

constexpr PlotSize kPlot{400, 100};

TEST(GraphEdits, AnXScaleOfTimeHasARangeThatCanBeShown) {
    WavoGraph graph = OverAxis();
    SetXScale(graph, {true, 2.5});
    EXPECT_EQ(graph.XScale.ScaleType, ScaleTypeCode::kTime);
    EXPECT_EQ(graph.XScale.TimeRange, 2.5);
    SetXScale(graph, {true, std::nullopt});
    EXPECT_EQ(graph.XScale.TimeRange, 2.5) << "as it is";
    for (const double none : {0.0, -1.0, kMinTimeRange, std::numeric_limits<double>::quiet_NaN()}) {
        SetXScale(graph, {true, none});
        EXPECT_EQ(graph.XScale.TimeRange, kDefaultTimeRange) << none;
    }
}

TEST(GraphEdits, AManualXScaleThatGoesDownBecomesAutomatic) {
    WavoGraph graph = OverAxis();
    SetXScale(graph, {false, {}, true, -1.0, 1.0});
    EXPECT_EQ(graph.XScale,
              (ScaleDefinition{ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -1.0, 1.0}));
    SetXScale(graph, {false, {}, true, 3.0, 3.0});
    EXPECT_EQ(graph.XScale.ScaleAx, ScaleAxCode::kManual);
    SetXScale(graph, {false, {}, true, 4.0, 3.0});
    EXPECT_EQ(graph.XScale,
              (ScaleDefinition{ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kAutomatic, 3.0, 3.0}));
    SetXScale(graph, {false, {}, false, -7.0, 7.0});
    EXPECT_EQ(graph.XScale.Minimum, 3.0) << "bounds of an automatic scale stay";
}

TEST(GraphEdits, ABoundOfXKeepsCirclesRound) {
    WavoGraph graph = OverAxis();
    // 400 by 100 pixels: x spans four times the 10 of y.
    const BoundChange minimum = SetXBound(graph, true, 2.0, kPlot);
    EXPECT_TRUE(minimum.is_taken && minimum.goes_up);
    EXPECT_EQ(graph.XScale.Minimum, 2.0);
    EXPECT_EQ(graph.XScale.Maximum, 42.0);
    EXPECT_TRUE(SetXBound(graph, true, 50.0, kPlot).goes_up) << "a maximum is found for it";
    EXPECT_EQ(graph.XScale.Maximum, 90.0);
    const BoundChange maximum = SetXBound(graph, false, 40.0, kPlot);
    EXPECT_TRUE(maximum.is_taken);
    EXPECT_FALSE(maximum.goes_up);
    EXPECT_EQ(graph.XScale.Maximum, 40.0) << "waits for a minimum below it";
}

TEST(GraphEdits, ABoundOfYMovesTheEndOfX) {
    WavoGraph graph = OverAxis();
    const BoundChange change = SetYBound(graph, 0, false, 15.0, kPlot);
    EXPECT_TRUE(change.is_taken && change.goes_up && change.moved_x);
    EXPECT_EQ(graph.YScales[0].Maximum, 15.0);
    EXPECT_EQ(graph.XScale.Maximum, 70.0);
    graph.AutoCircle = false;
    EXPECT_FALSE(SetYBound(graph, 0, false, 25.0, kPlot).moved_x);
    EXPECT_EQ(graph.XScale.Maximum, 70.0);
    EXPECT_FALSE(SetYBound(graph, 0, true, 26.0, kPlot).goes_up);
    EXPECT_FALSE(SetYBound(graph, 1, true, 0.0, kPlot).is_taken) << "there is no such axis";
}

TEST(GraphEdits, BoundsAreForManualScalesAndHaveALimit) {
    WavoGraph graph = OverAxis();
    graph.AutoCircle = false;
    SetXBound(graph, true, -1e300, kPlot);
    SetXBound(graph, false, 1e300, kPlot);
    EXPECT_EQ(graph.XScale.Minimum, -kLargestBound);
    EXPECT_EQ(graph.XScale.Maximum, kLargestBound);
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    graph.YScales[0].ScaleAx = ScaleAxCode::kAutomatic;
    const WavoGraph before = graph;
    EXPECT_FALSE(SetXBound(graph, true, 1.0, kPlot).is_taken);
    EXPECT_FALSE(SetYBound(graph, 0, true, 1.0, kPlot).is_taken);
    EXPECT_EQ(graph.XScale, before.XScale);
    EXPECT_EQ(graph.YScales, before.YScales);
}

TEST(GraphEdits, RoundCirclesNeedManualScales) {
    WavoGraph graph = OverAxis();
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    graph.YScales[0].ScaleAx = ScaleAxCode::kAutomatic;
    SetAutoCircle(graph, false, 0);
    EXPECT_FALSE(graph.AutoCircle);
    EXPECT_FALSE(IsManual(graph.XScale));
    SetAutoCircle(graph, true, std::nullopt);
    EXPECT_TRUE(graph.AutoCircle && IsManual(graph.XScale));
    EXPECT_FALSE(IsManual(graph.YScales[0]));
    SetAutoCircle(graph, true, 0);
    EXPECT_TRUE(IsManual(graph.YScales[0]));
    SetAutoCircle(graph, true, 1);  // no such axis
}

TEST(GraphEdits, CirclesAreForOneAxisOverAnother) {
    WavoGraph graph = OverAxis();
    EXPECT_TRUE(SetCircle(graph, true, 2.5));
    EXPECT_TRUE(SetCircle(graph, false, 4.0));
    EXPECT_EQ(graph.InnerGuidingCircleDX, 2.5);
    EXPECT_EQ(graph.OuterGuidingCircleDX, 4.0);
    graph.UpdateGuidingCircles();
    EXPECT_TRUE(SetCircle(graph, true, std::nullopt));
    EXPECT_EQ(RadiusOf(graph.InnerGuidingCircleDX), std::nullopt);
    EXPECT_EQ(RadiusOf(graph.InnerGuidingCircleDY), std::nullopt);
    EXPECT_EQ(graph.OuterGuidingCircleDX, 4.0);
    graph.YScales.push_back(graph.YScales[0]);
    EXPECT_FALSE(SetCircle(graph, false, 5.0));
    graph.YScales.pop_back();
    MakeXTime(graph);
    EXPECT_FALSE(SetCircle(graph, false, 5.0));
    EXPECT_EQ(graph.OuterGuidingCircleDX, 4.0);
}

TEST(GraphEdits, AFadeOutTimeIsAboveZeroAndAnother) {
    WavoGraph graph = OverAxis();
    graph.FadeOutTime = 1.0;
    for (const double time : {0.0, -2.0, 1.0005, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(SetFadeOutTime(graph, time)) << time;
    }
    EXPECT_EQ(graph.FadeOutTime, 1.0);
    EXPECT_TRUE(SetFadeOutTime(graph, 1.002));
    EXPECT_EQ(graph.FadeOutTime, 1.002);
}

}  // namespace
}  // namespace wavo
