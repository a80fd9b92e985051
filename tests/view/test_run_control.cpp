#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "cycle_fixture.h"
#include "edit_graph.h"
#include "session/run_control.h"

namespace wavo {
namespace {

using ::testing::Contains;
using testing::EditGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kNewValues;

class RunControlTest : public testing::CycleFixture {
 protected:
    /// A graph of X1 with a trigger, which the batch stops.
    void Stopped(TriggerTypeCode trigger, double limit = 5.0) {
        AddGraph("X1");
        EditGraph(m_graphs, 0, [&](WavoGraph& graph) {
            graph.Triggers = {{trigger, limit, "X1"}};
            graph.XScale.TimeRange = 0.004 * 2;
        });
        ASSERT_TRUE(m_cycle.Connect(true));
        for (int batch = 0; batch < 4; ++batch) {
            m_fifo->Write(10.0);
            m_fifo->Write(10.0);
            ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
        }
        m_host.Take();
        m_editor.happened.clear();
    }
    [[nodiscard]] RunState State() const { return m_board.Drawers().front()->State(); }

    /// What the status bar was told since the last call; empty texts: what is known of the link.
    std::vector<std::string> Hints() {
        std::vector<std::string> hints = std::exchange(m_host.messages, {});
        std::replace(hints.begin(), hints.end(),
                     std::string("Connected to the master process (Dorvane)"), std::string());
        return hints;
    }

    RunControl& m_control = m_session.Run();
};

TEST_F(RunControlTest, OnlyTheOtherOfStartAndStopIsOffered) {
    EXPECT_FALSE(m_control.CanStart());
    EXPECT_TRUE(m_control.CanStop());
    m_control.Stop();
    EXPECT_TRUE(m_control.CanStart());
    EXPECT_FALSE(m_control.CanStop());
    EXPECT_THAT(m_host.Take(), ElementsAre("title stopped", "changed"));
    EXPECT_THAT(m_editor.happened, ElementsAre("acquisition stands"));
    m_editor.happened.clear();
    m_control.Start();
    EXPECT_FALSE(m_control.CanStart());
    EXPECT_THAT(m_host.Take(), ElementsAre("title running", "forget zooms", "restart", "changed"));
    EXPECT_THAT(m_editor.happened, ElementsAre("acquisition runs"));
}

TEST_F(RunControlTest, StartEnablesTheBuffersAndEmptiesThem) {
    Stopped(TriggerTypeCode::kStopAbove);
    ASSERT_EQ(State(), RunState::kStoppedAfterStop);
    ASSERT_FALSE(m_streams.Registry().Values()[0].Enabled());
    m_control.Start();
    EXPECT_TRUE(m_streams.Registry().Values()[0].Enabled());
    EXPECT_EQ(m_streams.Registry().Values()[0].StoredCount(), 0U);
    EXPECT_EQ(State(), RunState::kWaitingForStop);
}

TEST_F(RunControlTest, StartAfterTriggerNeedsAGraphThatItsTriggerStopped) {
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
    AddGraph("X1");
    EditGraph(m_graphs, 0, [](WavoGraph& graph) {
        graph.Triggers = {{TriggerTypeCode::kStopAbove, 100.0, "X1"}};
    });
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(1.0);
    ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ASSERT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
    m_fifo->Write(101.0);
    ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ASSERT_EQ(State(), RunState::kStoppedAfterStop);
    EXPECT_TRUE(m_control.CanStartAfterTrigger());
}

TEST_F(RunControlTest, AfterAStopTriggerTheGraphAndItsBufferBeginAnew) {
    Stopped(TriggerTypeCode::kStopAbove);
    m_control.StartAfterTrigger();
    EXPECT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_EQ(m_streams.Registry().Values()[0].StoredCount(), 0U);
    EXPECT_TRUE(m_streams.Registry().Values()[0].Enabled());
    EXPECT_THAT(m_host.Take(), ElementsAre("leave zooms", "redraw", "changed"));
    EXPECT_THAT(m_editor.happened, ElementsAre("acquisition runs"));
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
}

TEST_F(RunControlTest, AfterAStartTriggerTheGraphWaitsAgainAndItsBufferStays) {
    Stopped(TriggerTypeCode::kStartAbove);
    ASSERT_EQ(State(), RunState::kStoppedAfterStart);
    const std::uint64_t stored = m_streams.Registry().Values()[0].StoredCount();
    ASSERT_GT(stored, 0U);
    m_control.StartAfterTrigger();
    EXPECT_EQ(State(), RunState::kWaitingForStart);
    EXPECT_EQ(m_streams.Registry().Values()[0].StoredCount(), stored);
    EXPECT_TRUE(m_streams.Registry().Values()[0].Enabled());
}

TEST_F(RunControlTest, StartAfterTriggerLeavesAStoppedViewStopped) {
    Stopped(TriggerTypeCode::kStopAbove);
    m_control.Stop();
    m_host.Take();
    m_editor.happened.clear();
    m_control.StartAfterTrigger();
    EXPECT_FALSE(m_cycle.IsRunning());
    EXPECT_THAT(m_host.Take(), ElementsAre("leave zooms", "redraw", "changed"));
    EXPECT_THAT(m_editor.happened, ElementsAre("acquisition runs"));
}

TEST_F(RunControlTest, AVelocityTriggerDoesNotFireAcrossTheSamplesThatItsBufferMissed) {
    AddGraph("X1", 1);
    EditGraph(m_graphs, 0, [](WavoGraph& graph) {
        graph.Triggers = {{TriggerTypeCode::kStartAbove, 100.0, "X1"}};
        graph.XScale.TimeRange = 0.004 * 2;
    });
    ASSERT_TRUE(m_cycle.Connect(true));
    const auto batch = [&](double first, double second) {
        m_fifo->Write(first);
        m_fifo->Write(second);
        ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    };
    batch(0.0, 10.0);
    batch(10.0, 10.0);
    batch(10.0, 10.0);
    batch(900.0, 900.0);  // missed
    ASSERT_EQ(State(), RunState::kStoppedAfterStart);
    m_control.StartAfterTrigger();
    batch(900.0, 900.0);
    EXPECT_EQ(State(), RunState::kWaitingForStart);
    batch(900.0, 950.0);
    EXPECT_EQ(State(), RunState::kRunningAfterStart);
}

TEST_F(RunControlTest, AGraphMadeAnewAfterItsTriggerSaysWhatItNeeds) {
    Stopped(TriggerTypeCode::kStopAbove);
    m_control.OnGraphsRebuilt();
    EXPECT_THAT(Hints(), IsEmpty());  // still stopped: Start after trigger is offered
    m_session.RebuildGraphs();
    m_control.OnGraphsRebuilt();
    ASSERT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
    EXPECT_THAT(Hints(), ElementsAre("A graph was made anew after its trigger had stopped it: Run "
                                     "control > Stop, then Start to go on"));
    m_control.Stop();
    EXPECT_THAT(Hints(), ElementsAre("A graph was made anew after its trigger had stopped it: Run "
                                     "control > Start to go on"));
    m_control.Start();
    EXPECT_THAT(Hints(), ElementsAre(""));
    EXPECT_TRUE(m_streams.Registry().Values()[0].Enabled());
}

TEST_F(RunControlTest, GraphsThatGetTheirValuesNeedNoHint) {
    ConnectAndTakeFirstBatch();
    m_control.OnGraphsRebuilt();
    m_control.Stop();
    m_control.Start();
    EXPECT_THAT(Hints(), IsEmpty());
}

}  // namespace
}  // namespace wavo
