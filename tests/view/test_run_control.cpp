#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cycle_fixture.h"
#include "view/run_control.h"

namespace wavo {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kNewValues;

class RunControlTest : public testing::CycleFixture, public RunControlHost {
 protected:
    void ShowRunTitle() override { m_host.ShowRunTitle(); }
    void ForgetZooms() override { m_host.happened.emplace_back("forget zooms"); }
    void LeaveZooms() override { m_host.happened.emplace_back("leave zooms"); }
    void Redraw(bool restart) override {
        m_host.happened.emplace_back(restart ? "restart" : "redraw");
        QImage image(400, 200, QImage::Format_RGB32);
        if (restart) {
            m_board.ResetBuffers();
        }
        m_board.DrawAll(image, restart);
    }
    void ShowRunHint(const std::string& text) override { m_hints.push_back(text); }
    void RunStateChanged() override { m_host.happened.emplace_back("changed"); }

    /// A graph of X1 with a trigger, which the batch stops.
    void Stopped(TriggerTypeCode trigger, double limit = 5.0) {
        AddGraph("X1");
        WavoGraph& graph = m_board.Graphs().back();
        graph.Triggers = {{trigger, limit, "X1"}};
        graph.XScale.TimeRange = 0.004 * 2;
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

    RunControl m_control{m_cycle, m_board, m_editor, *this};
    std::vector<std::string> m_hints;
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
    ASSERT_FALSE(m_board.Registry().Values()[0].Enabled());
    m_control.Start();
    EXPECT_TRUE(m_board.Registry().Values()[0].Enabled());
    EXPECT_EQ(m_board.Registry().Values()[0].StoredCount(), 0U);
    EXPECT_EQ(State(), RunState::kWaitingForStop);
}

TEST_F(RunControlTest, StartAfterTriggerNeedsAGraphThatItsTriggerStopped) {
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
    AddGraph("X1");
    m_board.Graphs().back().Triggers = {{TriggerTypeCode::kStopAbove, 100.0, "X1"}};
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
    EXPECT_EQ(m_board.Registry().Values()[0].StoredCount(), 0U);
    EXPECT_TRUE(m_board.Registry().Values()[0].Enabled());
    EXPECT_THAT(m_host.Take(), ElementsAre("leave zooms", "redraw", "changed"));
    EXPECT_THAT(m_editor.happened, ElementsAre("acquisition runs"));
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
}

TEST_F(RunControlTest, AfterAStartTriggerTheGraphWaitsAgainAndItsBufferStays) {
    Stopped(TriggerTypeCode::kStartAbove);
    ASSERT_EQ(State(), RunState::kStoppedAfterStart);
    const std::uint64_t stored = m_board.Registry().Values()[0].StoredCount();
    ASSERT_GT(stored, 0U);
    m_control.StartAfterTrigger();
    EXPECT_EQ(State(), RunState::kWaitingForStart);
    EXPECT_EQ(m_board.Registry().Values()[0].StoredCount(), stored);
    EXPECT_TRUE(m_board.Registry().Values()[0].Enabled());
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
    WavoGraph& graph = m_board.Graphs().back();
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 100.0, "X1"}};
    graph.XScale.TimeRange = 0.004 * 2;
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
    EXPECT_THAT(m_hints, IsEmpty());  // still stopped: Start after trigger is offered
    m_host.RebuildGraphs();
    m_control.OnGraphsRebuilt();
    ASSERT_EQ(State(), RunState::kWaitingForStop);
    EXPECT_FALSE(m_control.CanStartAfterTrigger());
    EXPECT_THAT(m_hints, ElementsAre("A graph was made anew after its trigger had stopped it: Run "
                                     "control > Stop, then Start to go on"));
    m_hints.clear();
    m_control.Stop();
    EXPECT_THAT(m_hints, ElementsAre("A graph was made anew after its trigger had stopped it: Run "
                                     "control > Start to go on"));
    m_hints.clear();
    m_control.Start();
    EXPECT_THAT(m_hints, ElementsAre(""));
    EXPECT_TRUE(m_board.Registry().Values()[0].Enabled());
}

TEST_F(RunControlTest, GraphsThatGetTheirValuesNeedNoHint) {
    ConnectAndTakeFirstBatch();
    m_control.OnGraphsRebuilt();
    m_control.Stop();
    m_control.Start();
    EXPECT_THAT(m_hints, IsEmpty());
}

}  // namespace
}  // namespace wavo
