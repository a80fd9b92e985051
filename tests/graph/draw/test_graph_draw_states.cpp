// Every run state of a graph, and what restart, zoom and reading of its values do in each.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/graph_draw.h"
#include "support/diagnostics.h"

namespace wavo {

/// How a run state appears in messages of failed tests.
void PrintTo(RunState state, std::ostream* out) {
    *out << "run state " << static_cast<int>(state);
}

namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::CollectReports;
using testing::CountingHost;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;
using testing::TimeScale;

/// 2 s of 0.25 s per value; triggers at 50.
WavoGraph TriggeredTwoSeconds(TriggerTypeCode trigger) {
    WavoGraph graph = TimeGraph(2.0);
    AddAxis(graph, "X", ManualScale(0.0, 100.0), trigger, 50.0);
    return graph;
}

TriggerTypeCode TriggerOf(RunState state) {
    switch (state) {
        case RunState::kRunning:
            return TriggerTypeCode::kNone;
        case RunState::kWaitingForStart:
        case RunState::kRunningAfterStart:
        case RunState::kStoppedAfterStart:
            return TriggerTypeCode::kStartAbove;
        case RunState::kWaitingForStop:
        case RunState::kStoppedAfterStop:
            return TriggerTypeCode::kStopAbove;
    }
    return TriggerTypeCode::kNone;
}

/// A graph brought to a state by its values. Its buffers hold far more than its range.
std::unique_ptr<Scope> ScopeIn(RunState state) {
    auto scope = std::make_unique<Scope>(TriggeredTwoSeconds(TriggerOf(state)), 0.25,
                                         QRect(0, 0, 400, 200), 100.0);
    scope->Feed({Ramp(0, 8)});
    if (state == RunState::kRunningAfterStart || state == RunState::kStoppedAfterStart) {
        scope->Feed({{9, 60}});
        scope->Feed({Ramp(61, 4)});
    }
    if (state == RunState::kStoppedAfterStart) {
        scope->Feed({Ramp(65, 7)});  // 3 too many
        scope->Feed({Ramp(72, 2)});  // arrive before the buffers are stopped
    }
    if (state == RunState::kStoppedAfterStop) {
        scope->Feed({{8, 60, 61, 62}});
        scope->Draw();
    }
    EXPECT_EQ(scope->draw->State(), state);
    return scope;
}

/// What the curve shows in each state.
std::vector<double> ShownIn(RunState state) {
    switch (state) {
        case RunState::kRunning:
        case RunState::kWaitingForStop:
            return Ramp(0, 8);
        case RunState::kWaitingForStart:
            return {};
        case RunState::kRunningAfterStart:
            return Ramp(60, 5);
        case RunState::kStoppedAfterStart:
            return Ramp(60, 9);
        case RunState::kStoppedAfterStop:
            return {1, 2, 3, 4, 5, 6, 7, 8, 60};
    }
    return {};
}

class EachState : public ::testing::TestWithParam<RunState> {};

INSTANTIATE_TEST_SUITE_P(All, EachState,
                         ::testing::Values(RunState::kRunning, RunState::kWaitingForStart,
                                           RunState::kRunningAfterStart,
                                           RunState::kStoppedAfterStart, RunState::kWaitingForStop,
                                           RunState::kStoppedAfterStop),
                         [](const auto& parameter) {
                             return "RunState" + std::to_string(static_cast<int>(parameter.param));
                         });

TEST_P(EachState, ShowsItsValues) {
    const auto scope = ScopeIn(GetParam());
    EXPECT_EQ(scope->Shown(), ShownIn(GetParam()));
    EXPECT_EQ(scope->values[0].Enabled(), !IsStopped(GetParam()));
    EXPECT_EQ(scope->host.ended, GetParam() == RunState::kStoppedAfterStart ? 1 : 0);
}

TEST_P(EachState, APaintWithoutNewValuesChangesNothing) {
    const auto scope = ScopeIn(GetParam());
    scope->Draw();
    const QImage before = scope->Image();
    const double elapsed = scope->draw->Recorder().ElapsedAfterTrigger();
    scope->Draw();
    EXPECT_EQ(scope->draw->State(), GetParam());
    EXPECT_EQ(scope->Shown(), ShownIn(GetParam()));
    EXPECT_EQ(scope->draw->Recorder().ElapsedAfterTrigger(), elapsed);
    EXPECT_EQ(scope->Image(), before);
}

TEST_P(EachState, RestartLeadsToTheFirstStateOfItsRoad) {
    for (const bool by_flag : {false, true}) {
        const auto scope = ScopeIn(GetParam());
        const RunState first = scope->draw->Recorder().RestartState();
        if (by_flag) {
            scope->draw->SetRestartFlag();
        }
        scope->Draw(!by_flag);
        EXPECT_EQ(scope->draw->State(), first);
        EXPECT_EQ(scope->Line().Size(), 0U);
        EXPECT_EQ(scope->values[0].PushedCount(), 0.0);
        EXPECT_EQ(scope->draw->Recorder().ElapsedAfterTrigger(), 0.0);
        scope->values[0].SetEnabled(true);
        scope->Feed({{10, 70, 80}});
        switch (first) {
            case RunState::kWaitingForStart:
                EXPECT_EQ(scope->draw->State(), RunState::kRunningAfterStart);
                EXPECT_EQ(scope->Shown(), (std::vector<double>{70, 80}));
                break;
            case RunState::kWaitingForStop:
                EXPECT_EQ(scope->draw->State(), RunState::kStoppedAfterStop);
                EXPECT_EQ(scope->Shown(), (std::vector<double>{10, 70}));
                break;
            default:
                EXPECT_EQ(scope->draw->State(), RunState::kRunning);
                EXPECT_EQ(scope->Shown(), (std::vector<double>{10, 70, 80}));
        }
    }
}

TEST_P(EachState, ARestartWhileTheBuffersAreStoppedLeavesThatToTheCaller) {
    const auto scope = ScopeIn(GetParam());
    scope->values[0].SetEnabled(false);
    scope->draw->SetRestartFlag();
    scope->Draw();
    EXPECT_FALSE(scope->values[0].Enabled());
}

TEST_P(EachState, StartingAgainLeavesOnlyAFinishedRecording) {
    const auto scope = ScopeIn(GetParam());
    const std::vector<double> shown = scope->Shown();
    scope->draw->RestartAfterTrigger();
    EXPECT_EQ(scope->draw->State(),
              IsStopped(GetParam()) ? scope->draw->Recorder().RestartState() : GetParam());
    scope->Draw();
    const bool reset = GetParam() == RunState::kStoppedAfterStop;
    EXPECT_EQ(scope->Shown(), reset ? std::vector<double>() : shown);
    EXPECT_EQ(scope->values[0].StoredCount() == 0, reset);
}

TEST_P(EachState, AZoomSetsRunStateOneOnceItsValuesAreTaken) {
    const auto scope = ScopeIn(GetParam());
    scope->draw->SetZoomRange(0.25, 0.75);
    EXPECT_EQ(scope->draw->State(), GetParam());
    scope->Draw();
    EXPECT_EQ(scope->draw->State(), RunState::kRunning);
    EXPECT_STREQ(StatusText(scope->draw->State()), "");
    const RunState first = scope->draw->Recorder().RestartState();
    scope->draw->RestartAfterTrigger();
    EXPECT_EQ(scope->draw->State(), RunState::kRunning);
    scope->draw->SetRestartFlag();
    scope->Draw();
    EXPECT_EQ(scope->draw->State(), RunState::kRunning) << "a restart does not bring it back";
    EXPECT_EQ(scope->draw->Recorder().RestartState(), first);
    scope->values[0].SetEnabled(true);
    scope->Feed({{10, 70, 80}});
    EXPECT_EQ(scope->Shown(), (std::vector<double>{10, 70, 80})) << "no trigger any more";
    EXPECT_TRUE(scope->values[0].Enabled());
}

TEST_P(EachState, AZoomShowsThatPartOfWhatIsOnTheScreen) {
    if (GetParam() == RunState::kWaitingForStart) {
        return;  // nothing is on the screen
    }
    const auto scope = ScopeIn(GetParam());
    const std::vector<double> shown = ShownIn(GetParam());
    scope->draw->SetZoomRange(0.25, 1.0);
    scope->Draw();
    EXPECT_EQ(scope->Shown(), std::vector<double>(shown.begin() + 1, shown.begin() + 4));
    EXPECT_EQ(XText(scope->draw->Graph(), scope->draw->DisplayedWindow()), "T: (0.25 ... 1.0)s");
    scope->draw->SetZoomRange(0.25, 0.5);
    scope->Draw();
    EXPECT_EQ(scope->Shown(), std::vector<double>(shown.begin() + 2, shown.begin() + 3));
    EXPECT_EQ(XText(scope->draw->Graph(), scope->draw->DisplayedWindow()), "T: (0.5 ... 0.75)s");
}

TEST_P(EachState, ARestartEndsTheZoomAndForgetsItsOffset) {
    const auto scope = ScopeIn(GetParam());
    scope->draw->SetZoomRange(0.25, 1.75);
    scope->Draw();
    scope->draw->SetZoomRange(0.5, 1.0);
    scope->Draw();
    EXPECT_EQ(scope->draw->Zoom().offset, 0.25);
    scope->Draw(true);
    EXPECT_FALSE(scope->draw->Zoom().active);
    EXPECT_TRUE(scope->draw->Zoom().first);
    EXPECT_EQ(XText(scope->draw->Graph(), scope->draw->DisplayedWindow()), "T: (0 ... 2.0)s");
    EXPECT_EQ(scope->Line().XLines().back().value, 2.0);
    scope->draw->SetZoomRange(0.5, 1.0);
    EXPECT_EQ(scope->draw->Zoom().offset, 0.0);
}

TEST_P(EachState, GivesItsValues) {
    const auto scope = ScopeIn(GetParam());
    std::vector<double> values;
    EXPECT_TRUE(scope->draw->GetAxValues("X", values));
    switch (GetParam()) {
        case RunState::kRunningAfterStart:
            EXPECT_EQ(values, (std::vector<double>{6, 7, 9, 60, 61, 62, 63, 64}));
            break;
        case RunState::kStoppedAfterStart:
        case RunState::kStoppedAfterStop:
            EXPECT_EQ(values, ShownIn(GetParam())) << "the recording";
            break;
        default:
            EXPECT_EQ(values, Ramp(0, 8)) << "the most recent span";
    }
    scope->draw->SetZoomRange(0.25, 1.0);
    scope->Draw();
    EXPECT_TRUE(scope->draw->GetAxValues("X", values));
    EXPECT_EQ(values, scope->Shown()) << "the zoom window";
    EXPECT_EQ(values.size(), 3U);
}

TEST_P(EachState, TracesTheSameSteps) {
    const auto scope = ScopeIn(GetParam());
    scope->Set({{1, 2}});
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(diagnostics::Service::kTrace);
    scope->Draw();
    _MTrace_SetLevel("default", 1);
    EXPECT_EQ(
        traces.Texts(),
        (std::vector<std::string>{
            "DrawGraph(): --- starting to get act. valus", "DrawGraph(): --- end of get act values",
            "DrawGraph(): --- starting test trigger condition",
            "DrawGraph(): --- end of test trigger condition", "CheckYScaleValue(): --- starting",
            "CheckYScaleValue(): --- leaving", "DrawGraph(): --- starting to draw graphs",
            "DrawAllLinesXIsTime(): --- starting", "DrawAllLinesXIsTime(): --- leaving",
            "DrawGraph(): --- end of drawing graphs"}));
}

TEST_P(EachState, AStoppedGraphStopsItsBuffersAtEachPaint) {
    const auto scope = ScopeIn(GetParam());
    scope->values[0].SetEnabled(true);
    scope->Feed({{1, 2}});
    EXPECT_EQ(scope->values[0].Enabled(), !IsStopped(GetParam()));
    EXPECT_EQ(scope->draw->State(), GetParam());
    if (IsStopped(GetParam())) {
        EXPECT_EQ(scope->Shown(), ShownIn(GetParam()));
    }
}

TEST(RunStateChanges, APaintThatFiresAndOneThatEndsAreTwo) {
    Scope scope(TriggeredTwoSeconds(TriggerTypeCode::kStartAbove), 0.25, QRect(0, 0, 400, 200),
                100.0);
    std::vector<double> batch = Ramp(60, 9);  // the whole range at once
    scope.Feed({batch});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.host.ended, 0);
    scope.Feed({{}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    scope.Feed({{99}});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(scope.draw->Recorder().ElapsedAfterTrigger(), 0.25);
}

TEST(RunStateChanges, ATimeRangeThatIsReachedExactlyIsNotCut) {
    Scope scope(TriggeredTwoSeconds(TriggerTypeCode::kStartAbove));
    scope.Feed({{60}});
    scope.Feed({Ramp(61, 7)});
    EXPECT_EQ(scope.draw->State(), RunState::kRunningAfterStart);
    scope.Feed({{68}});
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.Shown(), Ramp(60, 9));
}

TEST(RunStateChanges, TheSampleHalfACycleBeyondTheRangeIsCutTheOneBeforeNot) {
    // The range ends between two samples: 3 cycles and a part.
    for (const double part : {0.125, 0.1, 0.2}) {
        WavoGraph graph = TimeGraph(0.75 + part);
        AddAxis(graph, "X", ManualScale(0.0, 100.0), TriggerTypeCode::kStartAbove, 50.0);
        Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 100.0);
        scope.Feed({{60}});
        scope.Feed({Ramp(61, 4)});  // 1 s
        EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
        const double last = part > 0.125 ? 64.0 : 63.0;
        EXPECT_EQ(scope.Shown().back(), last) << part;
    }
}

TEST(RunStateChanges, OverAnAxisWithATimeScaleBothCoordinatesAreCut) {
    WavoGraph graph = AxisGraph(1.0, TimeScale(10.0), ManualScale(0.0, 100.0));
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 50.0, "Y"};
    Scope scope(graph, 0.25, QRect(0, 0, 400, 200), 100.0);
    scope.Feed({{60}, {1}});
    scope.Feed({Ramp(61, 6), Ramp(2, 6)});  // 1.5 s of 1
    EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.Shown(), Ramp(60, 5));
    EXPECT_EQ(scope.Line().Point(4).x_value, 5.0);
}

TEST(RunStateChanges, NaNFiresNothingAndInfinityDoes) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    Scope start(TriggeredTwoSeconds(TriggerTypeCode::kStartAbove));
    start.Feed({{nan, -inf, nan}});
    EXPECT_EQ(start.draw->State(), RunState::kWaitingForStart);
    start.Feed({{nan, inf, nan}});
    EXPECT_EQ(start.draw->State(), RunState::kRunningAfterStart);
    EXPECT_EQ(start.Line().Size(), 2U);
    Scope stop(TriggeredTwoSeconds(TriggerTypeCode::kStopBelow));
    stop.Feed({{nan, 99}});
    EXPECT_EQ(stop.draw->State(), RunState::kWaitingForStop);
    stop.Feed({{99, -inf, 99}});
    EXPECT_EQ(stop.draw->State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(stop.Line().Size(), 4U);
}

TEST(RunStateChanges, AStopTriggerStopsTheBuffersOfAllAxes) {
    WavoGraph graph = TriggeredTwoSeconds(TriggerTypeCode::kStopAbove);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0));
    graph.YCoorAxDerivation[1] = 2;
    Scope scope(graph);
    scope.Feed({{1, 60, 2}, {1, 2, 3}});
    EXPECT_FALSE(scope.values[0].Enabled());
    EXPECT_FALSE(scope.values[1].Enabled());
    EXPECT_EQ(scope.Line(1).Size(), 2U);
}

TEST(RunStateChanges, AnUnknownTypeIsReportedOnlyWhileATriggerIsWaitedFor) {
    const std::string text = "GraphDraw::IsTrigger(): m_TriggerData[i].pTestTriggerEvent undefined";
    for (const int code : {0, -1, 6}) {
        WavoGraph graph = TriggeredTwoSeconds(TriggerTypeCode::kStopAbove);
        AddAxis(graph, "Y", ManualScale(0.0, 100.0), static_cast<TriggerTypeCode>(code));
        graph.Triggers = {graph.Triggers[1], graph.Triggers[0]};
        Scope scope(graph);
        {
            const ExpectErrorLog expected({text, text, text});
            scope.Feed({{1}, {1}});
            scope.Draw();
            scope.Feed({{1}, {60}});
        }
        EXPECT_EQ(scope.draw->State(), RunState::kStoppedAfterStop);
        scope.Draw();  // reports nothing any more
    }
}

TEST(RunStateChanges, TheLastAxisWithATestDecidesWhateverComesAfterIt) {
    WavoGraph graph = TriggeredTwoSeconds(TriggerTypeCode::kStopAbove);
    AddAxis(graph, "Y", ManualScale(0.0, 100.0), TriggerTypeCode::kStartBelow, -1.0);
    AddAxis(graph, "Z", ManualScale(0.0, 100.0), static_cast<TriggerTypeCode>(9));
    const Scope scope(graph);
    EXPECT_EQ(scope.draw->State(), RunState::kWaitingForStart);
    EXPECT_EQ(scope.draw->Recorder().RestartState(), RunState::kWaitingForStart);
}

TEST(RunStateChanges, AGraphThatWaitsForItsStopTakesUpWhatItsBufferHolds) {
    GraphValue value("X", 0.25, 2.0, 0);
    for (const double sample : {1.0, 2.0, 3.0}) {
        value.SetValue(sample);
    }
    value.EmptyNewValues();
    CountingHost host;
    GraphDraw draw(QRect(0, 0, 400, 200), TriggeredTwoSeconds(TriggerTypeCode::kStopAbove), host,
                   {}, 0.25, 5, 3, {{&value}, nullptr});
    value.SetValue(60.0);
    value.SetValue(4.0);
    QImage image(400, 200, QImage::Format_RGB32);
    draw.DrawGraph(image, false);
    std::vector<double> shown;
    draw.Lines()[0]->GetYValues(shown);
    EXPECT_EQ(shown, (std::vector<double>{1, 2, 3, 60}));
}

TEST(RunStateChanges, ValuesHeldBeforeAGraphWasBuiltFireNothing) {
    GraphValue value("X", 0.25, 2.0, 0);
    for (const double sample : {60.0, 61.0, 3.0}) {
        value.SetValue(sample);
    }
    value.EmptyNewValues();
    CountingHost host;
    GraphDraw draw(QRect(0, 0, 400, 200), TriggeredTwoSeconds(TriggerTypeCode::kStartAbove), host,
                   {}, 0.25, 5, 3, {{&value}, nullptr});
    QImage image(400, 200, QImage::Format_RGB32);
    draw.DrawGraph(image, false);
    EXPECT_EQ(draw.State(), RunState::kWaitingForStart);
    value.SetValue(70.0);
    draw.DrawGraph(image, false);
    EXPECT_EQ(draw.State(), RunState::kRunningAfterStart);
    std::vector<double> shown;
    draw.Lines()[0]->GetYValues(shown);
    EXPECT_EQ(shown, (std::vector<double>{70}));
}

}  // namespace
}  // namespace wavo
