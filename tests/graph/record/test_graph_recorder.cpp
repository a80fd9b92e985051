// What a graph takes of its streams, step by step, without a picture.
#include "graph/record/graph_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "graph/values/missing_value.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using ::testing::IsNan;

constexpr double kRecordedCycle = 0.25;

void AddTriggeredAxis(WavoGraph& graph, const std::string& name,
                      TriggerTypeCode trigger = TriggerTypeCode::kNone, double limit = 0.0,
                      std::int32_t derivation = 0) {
    graph.YCoorAxName.push_back(name);
    graph.YCoorAxColor.push_back(0);
    graph.YCoorAxDerivation.push_back(derivation);
    graph.Triggers.push_back({trigger, limit, name});
    graph.YScales.push_back({ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 1.0});
}

WavoGraph GraphOverTime(double range) {
    WavoGraph graph;
    graph.XCoorType = CoorType::kTime;
    graph.XScale = {ScaleTypeCode::kTime, range, ScaleAxCode{}, 0.0, 0.0};
    graph.FadeOutTime = 1.0;
    return graph;
}

WavoGraph GraphWithTrigger(TriggerTypeCode trigger, double limit, double range = 1.0) {
    WavoGraph graph = GraphOverTime(range);
    AddTriggeredAxis(graph, "X", trigger, limit);
    return graph;
}

WavoGraph GraphOverAxis(TriggerTypeCode trigger, double limit) {
    WavoGraph graph = GraphWithTrigger(trigger, limit);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "A";
    graph.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 0.0, 1.0};
    return graph;
}

/// A recorder with its buffers, fed and stepped as a view does it.
class Tape {
 public:
    explicit Tape(WavoGraph of, double buffer_range = 1.0) : graph(std::move(of)) {
        GraphStreams streams;
        for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
            streams.y.push_back(&buffers.emplace_back(graph.YCoorAxName[i], kRecordedCycle,
                                                      buffer_range, graph.YCoorAxDerivation[i]));
        }
        if (graph.XCoorType == CoorType::kAxis) {
            streams.x = &buffers.emplace_back(graph.XCoorAxName, kRecordedCycle, buffer_range, 0);
        }
        recorder = std::make_unique<GraphRecorder>(graph, kRecordedCycle, streams);
    }

    void Set(const std::vector<std::vector<double>>& batches) {
        for (std::size_t i = 0; i < batches.size(); ++i) {
            for (const double value : batches[i]) {
                buffers[i].SetValue(value);
            }
        }
    }

    TriggerEvent Step(const std::vector<std::vector<double>>& batches = {}) {
        Set(batches);
        recorder->Discard();
        refilled = recorder->TakeNewest();
        const TriggerEvent event = recorder->TestTriggers();
        recorder->LeaveOutUnderived();
        for (GraphValue& buffer : buffers) {
            buffer.EmptyNewValues();
        }
        return event;
    }

    [[nodiscard]] const std::vector<double>& Taken(std::size_t stream = 0) const {
        return recorder->Taken(stream).values;
    }

    WavoGraph graph;
    std::deque<GraphValue> buffers;
    std::unique_ptr<GraphRecorder> recorder;
    bool refilled = false;
};

TEST(Recorder, TakesWhatIsNewAndItsTime) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kNone, 0.0));
    EXPECT_EQ(tape.Step({{1, 2}}), TriggerEvent::kNone);
    EXPECT_THAT(tape.Taken(), ElementsAre(1, 2));
    EXPECT_EQ(tape.recorder->Taken(0).start_time, 0.0);
    tape.Step({{3}});
    EXPECT_THAT(tape.Taken(), ElementsAre(3));
    EXPECT_EQ(tape.recorder->Taken(0).start_time, 0.5);
    EXPECT_EQ(tape.recorder->State(), RunState::kRunning);
    EXPECT_FALSE(tape.refilled);
    tape.Step();
    EXPECT_THAT(tape.Taken(), IsEmpty());
}

TEST(Recorder, TakesWhatWasHeldBeforeWithoutWhatIsNew) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kNone, 0.0));
    tape.Set({{1, 2, 3}});
    tape.buffers[0].EmptyNewValues();
    tape.Set({{4}});
    tape.recorder->TakeHeld();
    EXPECT_THAT(tape.Taken(), ElementsAre(1, 2, 3));
}

TEST(Recorder, AStreamThatMissedLinesHasNoSampleThere) {
    WavoGraph graph = GraphWithTrigger(TriggerTypeCode::kNone, 0.0);
    AddTriggeredAxis(graph, "Y");
    Tape tape(graph);
    tape.buffers[0].ExpectLine(10);
    tape.buffers[1].ExpectLine(11);
    tape.Step({{1, 2}, {7}});
    EXPECT_THAT(tape.Taken(0), ElementsAre(1, 2));
    ASSERT_EQ(tape.Taken(1).size(), 2U);
    EXPECT_TRUE(IsNoSample(tape.Taken(1)[0]));
    EXPECT_EQ(tape.Taken(1)[1], 7);
}

TEST(Recorder, TriggersSeeTheZerosOfADerivativeAndCurvesDoNot) {
    // Y is younger than X: its zero stands where the picture goes further back.
    WavoGraph graph = GraphOverTime(1.0);
    AddTriggeredAxis(graph, "X");
    AddTriggeredAxis(graph, "Y", TriggerTypeCode::kStopBelow, 1.0, 1);
    Tape tape(graph);
    tape.buffers[0].ExpectLine(0);
    tape.buffers[1].ExpectLine(1);
    tape.Step({{1, 2, 3}, {5, 6}});
    EXPECT_EQ(tape.recorder->State(), RunState::kStoppedAfterStop);
    EXPECT_THAT(tape.Taken(0), ElementsAre(1, 2)) << "up to the zero of Y";
    ASSERT_EQ(tape.Taken(1).size(), 2U);
    EXPECT_THAT(tape.Taken(1)[1], IsNan());
}

TEST(Recorder, AStartTriggerKeepsItsValueAndWhatFollows) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStartAbove, 5.0));
    EXPECT_EQ(tape.Step({{1, 2}}), TriggerEvent::kNone);
    EXPECT_THAT(tape.Taken(), IsEmpty());
    EXPECT_EQ(tape.Step({{1, 3, 7, 9}}), TriggerEvent::kStarted);
    EXPECT_THAT(tape.Taken(), ElementsAre(7, 9));
    EXPECT_EQ(tape.recorder->Taken(0).start_time, 0.0);
    EXPECT_EQ(tape.recorder->State(), RunState::kRunningAfterStart);
}

TEST(Recorder, ARecordingEndsWithItsTimeRange) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStartAbove, 5.0));
    tape.Step({{6}});
    EXPECT_EQ(tape.Step({{1, 2}}), TriggerEvent::kNone);
    EXPECT_EQ(tape.recorder->ElapsedAfterTrigger(), 0.5);
    EXPECT_EQ(tape.Step({{3, 4, 5, 6}}), TriggerEvent::kEnded);
    EXPECT_THAT(tape.Taken(), ElementsAre(3, 4));
    EXPECT_EQ(tape.recorder->State(), RunState::kStoppedAfterStart);
    EXPECT_TRUE(tape.buffers[0].Enabled());
    EXPECT_EQ(tape.Step({{7}}), TriggerEvent::kNone) << "it ends once";
    EXPECT_THAT(tape.Taken(), IsEmpty());
    EXPECT_FALSE(tape.buffers[0].Enabled());
}

TEST(Recorder, OverAnAxisARecordingEndsUncutAndXLosesTheSameValues) {
    Tape tape(GraphOverAxis(TriggerTypeCode::kStartBelow, 5.0));
    EXPECT_EQ(tape.Step({{9, 4, 3}, {10, 20, 30}}), TriggerEvent::kStarted);
    EXPECT_THAT(tape.Taken(), ElementsAre(4, 3));
    EXPECT_THAT(tape.recorder->Taken(tape.recorder->Axes()).values, ElementsAre(20, 30));
    EXPECT_EQ(tape.Step({{1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}}), TriggerEvent::kEnded);
    EXPECT_EQ(tape.Taken().size(), 5U);
}

TEST(Recorder, AStopTriggerEndsWithItsValue) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStopAbove, 5.0));
    EXPECT_EQ(tape.Step({{1, 3, 7, 9}}), TriggerEvent::kNone);
    EXPECT_THAT(tape.Taken(), ElementsAre(1, 3, 7));
    EXPECT_EQ(tape.recorder->State(), RunState::kStoppedAfterStop);
    EXPECT_FALSE(tape.buffers[0].Enabled());
}

TEST(Recorder, ARestartBeginsInTheFirstStateAndTakesTheWholeRange) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStopAbove, 5.0));
    tape.Step({{1, 7}});
    tape.recorder->Restart();
    EXPECT_EQ(tape.recorder->State(), RunState::kWaitingForStop);
    tape.Step();
    EXPECT_TRUE(tape.refilled);
    EXPECT_EQ(tape.buffers[0].StoredCount(), 2U) << "asked for nothing more";
    tape.recorder->AskForRestart();
    EXPECT_TRUE(tape.recorder->IsRestartAsked());
    tape.recorder->Restart();
    EXPECT_FALSE(tape.recorder->IsRestartAsked());
    EXPECT_EQ(tape.buffers[0].StoredCount(), 0U);
}

TEST(Recorder, OnlyAStoppedOneRestartsAfterItsTrigger) {
    Tape start(GraphWithTrigger(TriggerTypeCode::kStartAbove, 5.0));
    start.Step({{6}});
    start.recorder->RestartAfterTrigger();
    EXPECT_EQ(start.recorder->State(), RunState::kRunningAfterStart);
    start.Step({{1, 1, 1, 1}});
    start.recorder->RestartAfterTrigger();
    EXPECT_EQ(start.recorder->State(), RunState::kWaitingForStart);
    EXPECT_FALSE(start.recorder->IsRestartAsked());

    Tape stop(GraphWithTrigger(TriggerTypeCode::kStopAbove, 5.0));
    stop.Step({{6}});
    stop.recorder->RestartAfterTrigger();
    EXPECT_EQ(stop.recorder->State(), RunState::kWaitingForStop);
    EXPECT_TRUE(stop.recorder->IsRestartAsked());
}

TEST(Recorder, AZoomLeavesTheTriggersForGood) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStopAbove, 5.0));
    tape.Step({{6}});
    tape.buffers[0].SetEnabled(true);
    tape.recorder->LeaveTriggers();
    EXPECT_FALSE(tape.buffers[0].Enabled()) << "what was stopped stays so";
    EXPECT_EQ(tape.recorder->State(), RunState::kRunning);
    tape.recorder->Restart();
    EXPECT_EQ(tape.recorder->State(), RunState::kRunning);
}

TEST(Recorder, ATriggerOfNoKnownTypeIsReportedWithEachTest) {
    WavoGraph graph = GraphWithTrigger(TriggerTypeCode::kStopAbove, 5.0);
    AddTriggeredAxis(graph, "Y", static_cast<TriggerTypeCode>(9), 0.0);
    Tape tape(graph);
    EXPECT_EQ(tape.recorder->State(), RunState::kWaitingForStop);
    const ExpectErrorLog expected(
        {"GraphDraw::IsTrigger(): m_TriggerData[i].pTestTriggerEvent undefined"});
    tape.Step({{1}, {100}});
    EXPECT_EQ(tape.recorder->State(), RunState::kWaitingForStop);
}

TEST(Recorder, KnowsTheLinesOfItsRows) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kStartAbove, 5.0));
    tape.buffers[0].ExpectLine(70);
    tape.Step({{1, 1, 9, 1}});
    EXPECT_EQ(tape.recorder->TakenRows(), 2U);
    EXPECT_EQ(tape.recorder->TakenLines().LineOf(0), 72);
    tape.buffers[0].ExpectLine(80);
    tape.Step({{1}});
    EXPECT_EQ(tape.recorder->TakenRows(), 3U);
    EXPECT_EQ(tape.recorder->TakenLines().LineOf(1), 73);
    EXPECT_EQ(tape.recorder->TakenLines().LineOf(2), 80);
    tape.Step({{1, 1, 1, 1}});
    ASSERT_EQ(tape.recorder->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(tape.recorder->TakenRows(), 6U) << "what is cut off is no row";
    tape.recorder->AskForRestart();
    tape.recorder->Restart();
    tape.Step();
    EXPECT_EQ(tape.recorder->TakenRows(), 0U);
}

TEST(Recorder, WithoutBuffersItTakesNothing) {
    Tape tape(GraphWithTrigger(TriggerTypeCode::kNone, 0.0));
    tape.Step({{1}});
    EXPECT_EQ(LatestTime(*tape.recorder), kRecordedCycle);
    tape.recorder->Detach();
    tape.recorder->Restart();
    tape.Step({{2}});
    EXPECT_FALSE(tape.refilled);
    EXPECT_THAT(tape.Taken(), IsEmpty());
    EXPECT_THAT(tape.recorder->Values(), IsEmpty());
    EXPECT_EQ(tape.recorder->BuffersGiven(), 1U);
}

}  // namespace
}  // namespace wavo
