#include <gtest/gtest.h>

#include <limits>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/graph_draw.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

/// 2 s of 0.25 s per value.
WavoGraph TwoSeconds(GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph = TimeGraph(2.0, mode);
    AddAxis(graph, "X", ManualScale(0.0, 100.0));
    return graph;
}

TEST(Zoom, BackwardsIsReportedAndSwitchesItOff) {
    Scope scope(TwoSeconds());
    scope.draw->SetZoomRange(0.5, 1.5);
    EXPECT_TRUE(scope.draw->Zoom().active);
    const ExpectErrorLog expected({"GraphDraw::SetZoomRange(): invalid zoom time"});
    scope.draw->SetZoomRange(3.0, 1.0);
    EXPECT_FALSE(scope.draw->Zoom().active);
    EXPECT_EQ(scope.draw->Zoom().start, 0.5);
}

TEST(Zoom, TooSmallIsReportedAndChangesNothing) {
    Scope scope(TwoSeconds());
    scope.draw->SetZoomRange(0.5, 1.5);
    const ExpectErrorLog expected({"GraphDraw::SetZoomRange(): zoom range to small",
                                   "GraphDraw::SetZoomRange(): zoom range to small"});
    scope.draw->SetZoomRange(2.0, 2.00005);
    scope.draw->SetZoomRange(2.0, 2.0);
    EXPECT_TRUE(scope.draw->Zoom().active);
    EXPECT_EQ(scope.draw->Zoom().start, 0.5);
    EXPECT_EQ(scope.draw->Zoom().end, 1.5);
    EXPECT_EQ(scope.draw->Zoom().offset, 0.0);
}

TEST(Zoom, TimesThatAreNoNumbersAreInvalid) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    Scope scope(TwoSeconds());
    const std::string text = "GraphDraw::SetZoomRange(): invalid zoom time";
    const ExpectErrorLog expected({text, text, text});
    scope.draw->SetZoomRange(nan, 1.0);
    scope.draw->SetZoomRange(0.0, nan);
    scope.draw->SetZoomRange(0.0, inf);
    EXPECT_FALSE(scope.draw->Zoom().active);
}

TEST(Zoom, OffsetAccumulatesTheEarlierStarts) {
    Scope scope(TwoSeconds());
    scope.draw->SetZoomRange(1.0, 3.0);
    EXPECT_EQ(scope.draw->Zoom().offset, 0.0);
    EXPECT_FALSE(scope.draw->Zoom().first);
    scope.draw->SetZoomRange(0.5, 1.0);
    EXPECT_EQ(scope.draw->Zoom().offset, 1.0);
    EXPECT_EQ(scope.draw->Zoom().start, 0.5);
    EXPECT_EQ(scope.draw->Zoom().end, 1.0);
    scope.draw->SetZoomRange(0.1, 0.2);
    EXPECT_EQ(scope.draw->Zoom().offset, 1.5);
    EXPECT_EQ(scope.draw->Zoom().graph_number, 7U);
    EXPECT_EQ(scope.draw->Zoom().definition, scope.draw->Graph());
}

TEST(Zoom, ShowsItsWindowFromTheLeft) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3, 4, 5}));
    EXPECT_EQ(scope.Line().Point(1).x_value, 0.25);
    EXPECT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{0.5, 1.5}));
    const QRect plot = scope.draw->PlotArea();
    EXPECT_DOUBLE_EQ(scope.draw->PixelToTime(plot.left()), 0.0);
    EXPECT_DOUBLE_EQ(scope.draw->PixelToTime(plot.right()), 1.0);
    EXPECT_EQ(scope.Line().XLines().back().value, 1.0);
}

TEST(Zoom, InsideAZoomIsRelativeToIt) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    scope.draw->SetZoomRange(0.25, 0.75);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{3, 4}));
    EXPECT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{0.75, 1.25}));
}

TEST(Zoom, IsMovedByWhatALongerSharedBufferHoldsMore) {
    Scope scope(TwoSeconds(), 0.25, QRect(0, 0, 400, 200), 4.0);
    scope.Feed({Ramp(0, 8)});
    scope.Feed({Ramp(8, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{10, 11, 12, 13}));
    EXPECT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{0.5, 1.5}));
}

TEST(Zoom, AWindowBeyondTheBufferIsMovedBack) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(1.5, 2.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{4, 5, 6, 7}));
    EXPECT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{1.0, 2.0}));
}

TEST(Zoom, AWindowLongerThanTheBufferBeginsAtItsStart) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(-1.0, 9.0);
    scope.Draw();
    EXPECT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{0.0, 10.0}));
    EXPECT_EQ(scope.Line().Point(0).x_value, 0.0);
}

TEST(Zoom, AClassicGraphShowsItInTheOrderOfTime) {
    Scope scope(TwoSeconds(GraphMode::kClassic));
    for (int i = 0; i < 13; ++i) {
        scope.Feed({{static_cast<double>(i)}});
    }
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), Ramp(7, 4)) << "the buffer holds 5 to 12";
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(scope.Line().Point(i).x_value, static_cast<double>(i) * 0.25);
    }
}

TEST(Zoom, SetsRunStateOneForGood) {
    WavoGraph graph = TwoSeconds();
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 50.0, "X"};
    Scope scope(graph);
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStop) << "until its values are taken";
    scope.Draw();
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
    scope.draw->SetRestartFlag();
    scope.Draw();
    EXPECT_FALSE(scope.draw->Zoom().active);
    EXPECT_TRUE(scope.draw->Zoom().first);
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
    scope.Feed({{99}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
}

TEST(Zoom, EndsWithARestart) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    scope.draw->SetRestartFlag();
    scope.Draw();
    EXPECT_EQ(scope.draw->DisplayedWindow(), TimeWindow{});
    EXPECT_EQ(scope.Line().XLines().back().value, 2.0);
    scope.Feed({Ramp(3, 2)});
    EXPECT_EQ(scope.Shown(), Ramp(3, 2));
}

TEST(Zoom, GoingBackShowsTheMostRecentSpanAgain) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    const ZoomState before = scope.draw->Zoom();
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    const ZoomState first = scope.draw->Zoom();
    scope.draw->SetZoomRange(0.25, 0.75);
    scope.Draw();
    scope.draw->RestoreZoom(first);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3, 4, 5}));
    scope.draw->RestoreZoom(before);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), Ramp(0, 8));
    EXPECT_EQ(scope.draw->DisplayedWindow(), TimeWindow{});
    EXPECT_EQ(scope.Line().XLines().back().value, 2.0);
    scope.Feed({{8}});
    EXPECT_EQ(scope.Shown(), Ramp(0, 9)) << "the refill was for once";
}

TEST(Zoom, WhileRunningItMovesWithTheOldestSampleHeld) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Feed({Ramp(8, 2)});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{4, 5, 6, 7}));
}

TEST(Zoom, OfAFinishedRecordingStaysOnTheRecording) {
    WavoGraph graph = TwoSeconds();
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 50.0, "X"};
    Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 20.0);
    scope.Feed({Ramp(0, 8)});
    scope.Feed({{1, 60}});
    scope.Feed({Ramp(61, 12)});  // 2 s, and 4 values cut
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    scope.Feed({Ramp(0, 5)});  // arrive before the buffers are stopped
    ASSERT_EQ(scope.Shown(), Ramp(60, 9));
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), Ramp(62, 4));
}

TEST(Zoom, AutomaticScaleFollowsTheWindow) {
    WavoGraph graph = TimeGraph(2.0);
    AddAxis(graph, "X", AutomaticScale());
    Scope scope(graph);
    scope.Feed({Ramp(0, 8)});
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_DOUBLE_EQ(scope.draw->Graph().YScales[0].Maximum, 5.15);
    EXPECT_DOUBLE_EQ(scope.draw->Graph().YScales[0].Minimum, 1.85);
    EXPECT_DOUBLE_EQ(scope.Line().YLines().back().value, 5.15);
}

TEST(Zoom, ShowsTheSpacingOfTheDisplayedSpan) {
    // The end of the top line, where the spacing stands.
    const auto spacing = [](const Scope& scope) {
        return scope.Image().copy(300, 0, 100, scope.draw->PlotArea().top());
    };
    WavoGraph graph = TwoSeconds();
    Scope zoomed(graph);
    zoomed.Feed({Ramp(0, 8)});
    const QImage full = spacing(zoomed);
    zoomed.draw->SetZoomRange(0.5, 1.5);
    zoomed.Draw();
    graph.XScale.TimeRange = 1.0;
    Scope short_range(graph);
    short_range.Draw();
    EXPECT_EQ(spacing(zoomed), spacing(short_range));
    EXPECT_NE(spacing(zoomed), full);
}

TEST(Zoom, OnlyTheDisplayedSpanIsZoomedNotTheDefinition) {
    Scope scope(TwoSeconds());
    scope.Feed({Ramp(0, 8)});
    const WavoGraph before = scope.draw->Graph();
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    EXPECT_EQ(scope.draw->Graph(), before);
}

TEST(Zoom, AGraphOverAnAxisHasNone) {
    Scope scope(AxisGraph(1.0, ManualScale(0.0, 10.0), ManualScale(0.0, 10.0)));
    scope.Feed({{1, 2}, {3, 4}});
    scope.draw->SetZoomRange(0.0, 0.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 2}));
    EXPECT_EQ(scope.draw->DisplayedWindow(), TimeWindow{});
    EXPECT_EQ(scope.draw->PixelToTime(200), -1.0);
}

TEST(Zoom, PixelsOutsideThePlotAreaHaveNoTime) {
    Scope scope(TwoSeconds());
    const QRect plot = scope.draw->PlotArea();
    EXPECT_EQ(scope.draw->PixelToTime(plot.left() - 1), -1.0);
    EXPECT_EQ(scope.draw->PixelToTime(plot.right() + 1), -1.0);
    EXPECT_NEAR(scope.draw->PixelToTime(plot.center().x()), 1.0, 0.01);
}

}  // namespace
}  // namespace wavo
