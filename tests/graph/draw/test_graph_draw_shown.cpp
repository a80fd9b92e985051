// What a recording, a zoom and a restart owe to the user, sample for sample.
#include <gtest/gtest.h>

#include <vector>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/graph_draw.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::CountingHost;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

const QRect kRectangle(0, 0, 400, 200);

WavoGraph ShownTwoSeconds(TriggerTypeCode trigger, GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph = TimeGraph(2.0, mode);
    AddAxis(graph, "X", ManualScale(0.0, 100.0), trigger, 50.0);
    return graph;
}

/// A finished recording of 60 to 68 in a buffer with room for more.
void Record(Scope& scope) {
    scope.Feed({{60}});
    scope.Feed({Ramp(61, 10)});
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    scope.Draw();
    ASSERT_EQ(scope.Shown(), Ramp(60, 9));
}

TEST(WhatIsShown, AGraphBuiltOnAFilledBufferShowsNothingWhileItWaits) {
    GraphValue value("X", 0.25, 2.0, 0);
    for (const double sample : {1.0, 90.0, 3.0, 40.0}) {
        value.SetValue(sample);
    }
    value.EmptyNewValues();
    CountingHost host;
    GraphDraw draw(kRectangle, ShownTwoSeconds(TriggerTypeCode::kStartAbove), host, {}, 0.25, 5, 3,
                   {{&value}, nullptr});
    QImage image(400, 200, QImage::Format_RGB32);
    draw.DrawGraph(image, false);
    EXPECT_EQ(draw.Lines()[0]->Size(), 0U);
}

TEST(WhatIsShown, ADroppedZoomLeavesAFinishedRecordingAlone) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, kRectangle, 100.0);
    Record(scope);
    scope.draw->SetZoomRange(0.5, 1.0);
    {
        const ExpectErrorLog expected({"GraphDraw::SetZoomRange(): invalid zoom time"});
        scope.draw->SetZoomRange(1.0, 0.5);
    }
    scope.Draw();
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.Shown(), Ramp(60, 9));
}

TEST(WhatIsShown, GoingBackToNoZoomLeavesAFinishedRecordingAlone) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, kRectangle, 100.0);
    Record(scope);
    scope.draw->RestoreZoom(scope.draw->Zoom());
    scope.Draw();
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.Shown(), Ramp(60, 9));
}

TEST(WhatIsShown, GoingBackToNoZoomDoesNotShortenARecording) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, kRectangle, 100.0);
    scope.Feed({Ramp(0, 8)});
    scope.Feed({{60}});
    scope.draw->RestoreZoom(scope.draw->Zoom());
    scope.Feed({{61}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.Shown(), Ramp(60, 2));
}

TEST(WhatIsShown, AGraphOverAnAxisIsNotFilledAnewByAZoom) {
    WavoGraph graph = AxisGraph(1.0, ManualScale(0.0, 100.0), ManualScale(0.0, 100.0));
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 5.0, "Y"};
    Scope scope(graph);
    scope.Feed({{1, 7, 9}, {10, 20, 30}});
    scope.draw->SetZoomRange(0.0, 0.5);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 7}));
}

TEST(WhatIsShown, AZoomOfARecordingIsRightForEveryBuffer) {
    // The second buffer is younger: it was made when the graph got another axis.
    WavoGraph graph = ShownTwoSeconds(TriggerTypeCode::kStartAbove);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0));
    GraphValue x("X", 0.25, 100.0, 0);
    GraphValue y("Y", 0.25, 100.0, 0);
    for (int i = 0; i < 20; ++i) {
        x.SetValue(1.0);
    }
    x.EmptyNewValues();
    CountingHost host;
    GraphDraw draw(kRectangle, graph, host, {}, 0.25, 5, 3, {{&x, &y}, nullptr});
    QImage image(400, 200, QImage::Format_RGB32);
    const auto feed = [&](const std::vector<double>& values) {
        for (const double value : values) {
            x.SetValue(value);
            y.SetValue(value);
        }
        draw.DrawGraph(image, false);
        x.EmptyNewValues();
        y.EmptyNewValues();
    };
    feed({1, 2, 3});
    feed({60});
    feed(Ramp(61, 10));
    feed({5, 6});
    ASSERT_EQ(draw.State(), RunState::kStoppedAfterStart);
    draw.SetZoomRange(0.5, 1.0);
    feed({});
    std::vector<double> shown;
    draw.Lines()[0]->GetYValues(shown);
    EXPECT_EQ(shown, Ramp(62, 2));
    draw.Lines()[1]->GetYValues(shown);
    EXPECT_EQ(shown, Ramp(62, 2));
}

TEST(WhatIsShown, AZoomOfACurveThatIsNotFullShowsWhatItsLabelSays) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kNone));
    scope.Feed({Ramp(0, 4)});  // at 0 to 0.75
    scope.draw->SetZoomRange(0.5, 1.5);
    scope.Draw();
    ASSERT_EQ(scope.draw->DisplayedWindow(), (TimeWindow{0.5, 1.5}));
    EXPECT_EQ(scope.Shown(), Ramp(2, 2));
}

TEST(WhatIsShown, AZoomOfAStoppedRecordingIsRightThoughItsBufferRanOn) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStopAbove));  // 8 samples
    scope.Feed({Ramp(1, 8)});
    scope.Feed({{60, 2, 3, 4}});  // on the screen: 1 to 8, 60
    ASSERT_EQ(scope.Shown(), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 60}));
    scope.draw->SetZoomRange(1.0, 2.0);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), Ramp(5, 4));
}

TEST(WhatIsShown, AZoomOfARecordingThatIsStillSeenWhileWaitingShowsIt) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, kRectangle, 100.0);
    Record(scope);
    scope.draw->RestartAfterTrigger();
    scope.values[0].SetEnabled(true);
    scope.Feed({Ramp(0, 30)});
    ASSERT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    ASSERT_EQ(scope.Shown(), Ramp(60, 9));
    scope.draw->SetZoomRange(0.5, 1.0);
    scope.Draw();
    EXPECT_EQ(scope.Shown(), Ramp(62, 2));
}

TEST(WhatIsShown, AZoomDirectlyAfterTheEndOfARecordingStillStopsTheBuffers) {
    Scope scope(ShownTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, kRectangle, 100.0);
    scope.Feed({{60}});
    scope.Feed({Ramp(61, 8)});
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    scope.draw->SetZoomRange(0.5, 1.0);
    scope.Draw();
    EXPECT_FALSE(scope.values[0].Enabled());
}

TEST(WhatIsShown, AConstantSignalStandsInTheMiddleAfterARestartToo) {
    WavoGraph graph = TimeGraph(2.0);
    AddAxis(graph, "X", AutomaticScale());
    Scope scope(graph);
    scope.Feed({{0.0, 10.0, 5.0, 9.0}});
    scope.draw->SetRestartFlag();
    scope.Draw();
    scope.Feed({{9.0, 9.0}});
    EXPECT_NEAR(scope.Line().Point(0).y, scope.draw->PlotArea().center().y(), 1);
}

TEST(WhatIsShown, OverAnAxisAConstantSignalStandsInTheMiddleAfterARestartToo) {
    Scope scope(AxisGraph(2.0, AutomaticScale(), AutomaticScale()));
    scope.Feed({{0.0, 10.0, 5.0, 9.0}, {0.0, 10.0, 5.0, 9.0}});
    scope.draw->SetRestartFlag();
    scope.Draw();
    scope.Feed({{9.0, 9.0}, {9.0, 9.0}});
    EXPECT_NEAR(scope.Line().Point(0).y, scope.draw->PlotArea().center().y(), 1);
    EXPECT_NEAR(scope.Line().Point(0).x, scope.draw->PlotArea().center().x(), 1);
}

}  // namespace
}  // namespace wavo
