#include <gtest/gtest.h>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/graph_draw.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

WavoGraph Triggered(TriggerTypeCode type, double limit, double range = 1.0) {
    WavoGraph graph = TimeGraph(range);
    AddAxis(graph, "X", ManualScale(0.0, 100.0), type, limit);
    return graph;
}

TEST(Trigger, WithoutOneTheGraphRuns) {
    Scope scope(Triggered(TriggerTypeCode::kNone, 0.0));
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
    scope.Feed({{1, 2}});
    scope.Draw(true);
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
    std::uint64_t index = 0;
    EXPECT_FALSE(scope.draw->IsTrigger(index));
}

TEST(Trigger, StartFiresAtTheValueAndKeepsItAndWhatFollows) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    EXPECT_EQ(scope.draw->Recorder().RestartState(), RunState::kWaitingForStart);
    scope.Feed({{1, 3, 7, 9}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{7, 9}));
    EXPECT_EQ(scope.Line().Point(0).x_value, 0.0);
    EXPECT_EQ(scope.draw->Recorder().ElapsedAfterTrigger(), 0.0)
        << "the paint that fires counts nothing";
}

TEST(Trigger, StartTestsLevelsNotCrossings) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    scope.Feed({{1, 2}});
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    scope.Feed({{6, 7}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{6, 7}));
}

TEST(Trigger, StartBelow) {
    Scope scope(Triggered(TriggerTypeCode::kStartBelow, 5.0));
    scope.Feed({{9, 7, 3, 1}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{3, 1}));
}

TEST(Trigger, ASingleValueStaysEvenThoughAnotherAxisFiredLater) {
    WavoGraph graph = Triggered(TriggerTypeCode::kStartAbove, 5.0);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0));
    AddAxis(graph, "Z", ManualScale(0.0, 100.0));
    Scope scope(graph);
    scope.Feed({{1, 3, 7}, {50}, {10, 20, 30}});
    EXPECT_EQ(scope.Shown(0), (std::vector<double>{7}));
    EXPECT_EQ(scope.Shown(1), (std::vector<double>{50}));
    EXPECT_EQ(scope.Shown(2), (std::vector<double>{30}));
}

TEST(Trigger, WhileWaitingNothingIsDrawn) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    scope.Feed({{1, 2, 3, 4}});
    EXPECT_EQ(scope.Line().Size(), 0U);
    EXPECT_EQ(scope.Count(QColor(255, 255, 0)), 0);
    EXPECT_TRUE(scope.values[0].Enabled());
}

TEST(Trigger, StartTakesNoSpanAgain) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    scope.Feed({{1, 2, 3}});
    scope.Feed({{4, 6}});
    scope.Feed({{7}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{6, 7}));
}

TEST(Trigger, TheRecordingEndsAfterTheTimeRangeAndIsCut) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));  // 1 s of 0.25 s
    scope.Feed({{6}});
    scope.Feed({{7, 8}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.draw->Recorder().ElapsedAfterTrigger(), 0.5);
    EXPECT_EQ(scope.host.ended, 0);
    scope.Feed({{9, 10, 11, 12}});  // 1.5 s: two too many
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.host.ended, 1);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{6, 7, 8, 9, 10}));
    EXPECT_TRUE(scope.values[0].Enabled()) << "the paint that ends it does not stop the buffers";
    scope.Feed({{13}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{6, 7, 8, 9, 10}));
    EXPECT_FALSE(scope.values[0].Enabled());
    EXPECT_EQ(scope.host.ended, 1);
}

TEST(Trigger, AnAxisWithFewerValuesThanTheCutKeepsThem) {
    WavoGraph graph = Triggered(TriggerTypeCode::kStartAbove, 5.0);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0));
    Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 10.0);
    scope.Feed({{6}, {1}});
    scope.Feed({{7, 8, 9, 10, 11, 12}, {2}});  // cut of 2
    EXPECT_EQ(scope.Shown(0), (std::vector<double>{6, 7, 8, 9, 10}));
    EXPECT_EQ(scope.Shown(1), (std::vector<double>{1, 2}));
}

TEST(Trigger, ElapsedTimeHasATolerance) {
    WavoGraph graph = Triggered(TriggerTypeCode::kStartAbove, 5.0, 1.0);
    Scope scope(graph, 0.1);
    scope.Feed({{6}});
    for (int i = 0; i < 10; ++i) {
        scope.Feed({{7}});  // the sum of ten tenths is below 1
    }
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
}

TEST(Trigger, StopKeepsTheValueThatFired) {
    Scope scope(Triggered(TriggerTypeCode::kStopAbove, 5.0));
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStop);
    scope.Feed({{1, 3, 7, 9}});
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 3, 7}));
    EXPECT_FALSE(scope.values[0].Enabled());
    EXPECT_EQ(scope.host.ended, 0);
    scope.Feed({{1, 1}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 3, 7}));
    EXPECT_EQ(scope.values[0].PushedCount(), 4.0);
}

TEST(Trigger, StopBelow) {
    Scope scope(Triggered(TriggerTypeCode::kStopBelow, 5.0));
    scope.Feed({{9, 8}});
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStop);
    scope.Feed({{7, 4, 3}});
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{9, 8, 7, 4}));
}

TEST(Trigger, TheFirstEntryInAxisOrderWins) {
    WavoGraph graph = Triggered(TriggerTypeCode::kStopAbove, 5.0);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0), TriggerTypeCode::kStopAbove, 5.0);
    Scope scope(graph);
    scope.Feed({{1, 1, 6, 1}, {9, 1, 1, 1}});
    EXPECT_EQ(scope.Shown(0), (std::vector<double>{1, 1, 6})) << "though Y fired earlier";
    EXPECT_EQ(scope.Shown(1), (std::vector<double>{9, 1, 1}));
}

TEST(Trigger, TheLastAxisWithATriggerDecidesTheState) {
    WavoGraph graph = Triggered(TriggerTypeCode::kStartAbove, 5.0);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0), TriggerTypeCode::kStopAbove, 5.0);
    AddAxis(graph, "Z", ManualScale(0.0, 100.0));
    EXPECT_EQ(Scope(graph).draw->State(), RunState::kWaitingForStop);
}

TEST(Trigger, AnUnknownTypeIsReportedAtEachTestAndNeverFires) {
    WavoGraph graph = Triggered(static_cast<TriggerTypeCode>(6), -1e9);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0), TriggerTypeCode::kStartAbove, 5.0);
    Scope scope(graph);
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    const std::string text = "GraphDraw::IsTrigger(): m_TriggerData[i].pTestTriggerEvent undefined";
    {
        const ExpectErrorLog expected({text, text});
        scope.Feed({{1, 2}, {1, 2}});
        scope.Feed({{1, 2}, {1, 6}});
    }
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.Shown(1), (std::vector<double>{6}));
}

TEST(Trigger, AnUnknownTypeAloneLeavesTheGraphRunning) {
    Scope scope(Triggered(static_cast<TriggerTypeCode>(6), 0.0));
    EXPECT_EQ(scope.draw->State(), RunState::kRunning);
    scope.Feed({{1, 2}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 2}));
}

TEST(Trigger, OverAnAxisTheXValuesAreCutAlike) {
    WavoGraph graph = AxisGraph(1.0, ManualScale(0.0, 100.0), ManualScale(0.0, 100.0));
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 5.0, "Y"};
    Scope scope(graph);
    scope.Feed({{1, 3, 7, 9}, {10, 20, 30, 40}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{7, 9}));
    EXPECT_EQ(scope.Line().Point(0).x_value, 30.0);
    EXPECT_EQ(scope.draw->Graph().XScale.TimeRange, 1.0) << "the fade-out time";
    scope.Feed({{1, 2, 3}, {50, 60, 70}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    scope.Feed({{4, 5, 6}, {80, 90, 95}});  // past the fade-out time: not cut
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.host.ended, 1);
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3, 4, 5, 6}));
    scope.Feed({{8}, {8}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3, 4, 5, 6}));
}

TEST(Trigger, OverAnAxisStopCutsX) {
    WavoGraph graph = AxisGraph(10.0, ManualScale(0.0, 100.0), ManualScale(0.0, 100.0));
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 5.0, "Y"};
    Scope scope(graph);
    scope.Feed({{1, 7, 9}, {10, 20, 30}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{1, 7}));
    EXPECT_EQ(scope.Line().Point(1).x_value, 20.0);
    scope.Feed({{9}, {30}});
    EXPECT_EQ(scope.Line().Size(), 2U);
}

TEST(Restart, EmptiesTheCurveAndGoesBackToTheFirstState) {
    Scope scope(Triggered(TriggerTypeCode::kStopAbove, 5.0));
    scope.Feed({{1, 7}});
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStop);
    scope.values[0].SetEnabled(true);
    scope.draw->SetRestartFlag();
    scope.Draw();
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStop);
    EXPECT_EQ(scope.Line().Size(), 0U);
    EXPECT_EQ(scope.values[0].StoredCount(), 0U) << "with the flag, the buffers are reset";
    scope.Feed({{2, 3}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3}));
    scope.Feed({{4}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{2, 3, 4})) << "the flag serves once";
}

TEST(Restart, BuffersAreResetBeforeTheValuesAreTaken) {
    Scope scope(Triggered(TriggerTypeCode::kNone, 0.0));
    scope.Feed({{1, 2}});
    scope.Set({{3, 4}});
    scope.draw->SetRestartFlag();
    scope.Draw();
    EXPECT_EQ(scope.Line().Size(), 0U);
}

TEST(Restart, ByArgumentLeavesTheBuffersToTheCaller) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    scope.Feed({{6, 7}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    scope.Draw(true);
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    EXPECT_EQ(scope.Line().Size(), 0U);
}

TEST(Restart, AfterATriggerReturnsToWaitingForTheStart) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 5.0));
    scope.Feed({{6}});
    scope.draw->RestartAfterTrigger();
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart) << "it has not stopped";
    scope.Feed({{7, 8, 9, 10}});
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    scope.Feed({{1}});
    scope.draw->RestartAfterTrigger();
    scope.values[0].SetEnabled(true);
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    scope.Feed({{1, 2}});
    EXPECT_EQ(scope.Shown(), Ramp(6, 5)) << "the recording stays until the next one begins";
    scope.Feed({{3, 20}});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{20}));
}

TEST(Restart, AfterAStopTriggerResetsTheBuffers) {
    Scope scope(Triggered(TriggerTypeCode::kStopAbove, 5.0));
    scope.Feed({{1, 7}});
    scope.draw->RestartAfterTrigger();
    scope.values[0].SetEnabled(true);
    scope.Draw();
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStop);
    EXPECT_EQ(scope.values[0].StoredCount(), 0U);
    EXPECT_EQ(scope.Line().Size(), 0U);
}

TEST(SharedSamples, ARunningCurveLooksAtItsBufferHoweverItIsShown) {
    WavoGraph graph = Triggered(TriggerTypeCode::kNone, 0.0, 100.0);
    AddAxis(graph, "V", ManualScale(-100.0, 100.0), TriggerTypeCode::kNone, 0.0, 1);
    Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 300.0);
    const auto expect_shared = [&scope](const char* when) {
        for (std::size_t axis = 0; axis < 2; ++axis) {
            EXPECT_EQ(&scope.Line(axis).OverTime()->Shown().buffer, &scope.values[axis].Values())
                << when;
        }
    };
    for (int i = 0; i < 50; ++i) {
        scope.Feed({Ramp(i, 70), Ramp(i, 70)});
    }
    expect_shared("in steps");
    EXPECT_EQ(scope.Line().Size(), 401U);
    const ZoomState whole = scope.draw->Zoom();
    scope.draw->SetZoomRange(10.0, 20.0);
    scope.Feed({Ramp(0, 70), Ramp(0, 70)});
    expect_shared("zoomed");
    scope.draw->RestoreZoom(whole);
    scope.Feed({Ramp(0, 70), Ramp(0, 70)});
    expect_shared("after a zoom");
    scope.Draw(true);
    scope.Feed({Ramp(0, 70), Ramp(0, 70)});
    expect_shared("after a restart");
}

TEST(SharedSamples, ARecordingStaysWhileItsBufferRunsOn) {
    Scope scope(Triggered(TriggerTypeCode::kStartAbove, 90.0, 50.0));
    scope.Feed({Ramp(0, 95)});
    for (int i = 0; i < 3; ++i) {
        scope.Feed({Ramp(i, 70)});
    }
    ASSERT_TRUE(IsStopped(scope.draw->State()));
    const std::vector<double> recording = scope.Shown();
    ASSERT_EQ(recording.size(), 201U);
    scope.draw->RestartAfterTrigger();
    scope.values[0].SetEnabled(true);
    for (int i = 0; i < 30; ++i) {
        scope.Feed({Ramp(i, 59)});
        ASSERT_EQ(scope.draw->State(), RunState::kWaitingForStart);
        ASSERT_EQ(scope.Shown(), recording) << i;
    }
    scope.Feed({Ramp(80, 15)});
    EXPECT_EQ(scope.Shown(), Ramp(91, 4)) << "the next recording";
}

}  // namespace
}  // namespace wavo
