// Connecting, and the way of a batch.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "cycle_fixture.h"
#include "expect_errors.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::CollectReports;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using testing::kNewValues;
using testing::kReady;

using Cycle = testing::CycleFixture;

// ---- Connect ----

TEST_F(Cycle, ConnectTakesTheAxesInitialisesTheEditorAndPosts) {
    EXPECT_TRUE(m_cycle.Connect(true));
    EXPECT_THAT(m_cycle.AxisNames(), ElementsAre("X1", "Y1"));
    EXPECT_EQ(m_cycle.CycleTime(), 0.004);
    EXPECT_EQ(m_host.panes[StatusPane::kCycleTime], "cycl. time=0.00400s");
    EXPECT_THAT(m_editor.happened, ElementsAre("not initialised", "reset selection", "init 0 2"));
    EXPECT_EQ(m_editor.cycle, 0.004);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
    EXPECT_FALSE(m_cycle.CanConnect());
}

TEST_F(Cycle, ConnectWithoutPostSaysNothingToTheMaster) {
    EXPECT_TRUE(m_cycle.Connect(false));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(Cycle, AFailedConnectEmptiesTheAxesAndShowsNoBox) {
    ASSERT_TRUE(m_cycle.Connect(false));
    testing::RemoveFakeSegment("MachineTools_InfoData");
    EXPECT_FALSE(m_cycle.Connect(true));
    EXPECT_THAT(m_cycle.AxisNames(), IsEmpty());
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(m_host.Take(), IsEmpty());
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(Cycle, ConnectByTheUserShowsABoxWhenThereIsNoMaster) {
    testing::RemoveFakeSegment("MachineTools_InfoData");
    m_cycle.ConnectByUser();
    EXPECT_THAT(m_host.Take(), ElementsAre("box Master process (Dorvane) not present."));
}

TEST_F(Cycle, ADeadMastersInfoBlockCountsAsNone) {
    m_channel.alive.clear();
    EXPECT_FALSE(m_cycle.Connect(true));
    EXPECT_FALSE(m_cycle.IsMasterKnown());
}

TEST_F(Cycle, ARefusedInfoBlockEndsInTheErrorLogAndTheStatusBar) {
    PublishInfo({"X1"}, std::numeric_limits<double>::quiet_NaN());
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: the cycle time is not a positive "
         "number"});
    EXPECT_FALSE(m_cycle.Connect(true));
    EXPECT_EQ(m_host.panes[StatusPane::kMessage],
              "The master's info block is not valid, see the error log");
}

TEST_F(Cycle, AnotherCycleTimeDropsAllBuffers) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_streams.Registry().Values().size(), 1U);
    EXPECT_TRUE(m_cycle.Connect(false));
    EXPECT_EQ(m_streams.Registry().Values().size(), 1U);
    PublishInfo({"X1", "Y1"}, 0.002);
    EXPECT_TRUE(m_cycle.Connect(false));
    EXPECT_THAT(m_streams.Registry().Values(), IsEmpty());
    EXPECT_THAT(m_streams.DistributionLists(), IsEmpty());
}

// ---- batches ----

TEST_F(Cycle, EveryLineOfABatchReachesTheBuffersInOrderAndIsAnsweredOnce) {
    AddGraph("X1");
    AddGraph("Y1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(10.0);
    m_fifo->Write(20.0);
    m_fifo->Write(30.0);
    m_channel.Take();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(10.0, 20.0, 30.0));
    EXPECT_THAT(Held("Y1"), ElementsAre(11.0, 21.0, 31.0));
    EXPECT_EQ(m_cycle.TotalLines(), 3U);
    EXPECT_EQ(m_host.panes[StatusPane::kTotalLines], "3");
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", "draw"));

    m_fifo->Write(40.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(10.0, 20.0, 30.0, 40.0));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_THAT(m_host.Take(), ElementsAre("draw"));
}

TEST_F(Cycle, AnEmptyBatchIsAnsweredToo) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
}

TEST_F(Cycle, DerivedStreamsOfAnAxisGetItsValuesToo) {
    AddGraph("X1");
    AddGraph("X1", 1);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(0.0);
    m_fifo->Write(0.4);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1", 1), ElementsAre(0.0, 0.4 / 0.004));
    EXPECT_EQ(m_streams.DistributionLists()[0].size(), 2U);
    EXPECT_EQ(m_streams.DistributionLists()[1].size(), 0U);
}

TEST_F(Cycle, AStoppedViewDrainsCountsAndAnswersAtOnceWithoutDrawing) {
    ConnectAndTakeFirstBatch();
    m_cycle.SetRunning(false);
    m_fifo->Write(2.0);
    m_fifo->Write(3.0);
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(Service::kTrace);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_THAT(m_host.Take(), IsEmpty());
    EXPECT_EQ(m_cycle.TotalLines(), 3U);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    EXPECT_THAT(traces.Texts(),
                ElementsAre("AxValueReader::ReadFromFifo(): read 2 lines from main prg.",
                            "DrawingGraphsValue(): --- tx msg. 'ready for new values'"));
}

TEST_F(Cycle, ARunningBatchTracesTheSettingOfValuesAndTheReady) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    std::vector<std::string> texts;
    {
        _MTrace_SetLevel("default", 4);
        const CollectReports traces(Service::kTrace);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
        texts = traces.Texts();
    }
    EXPECT_THAT(texts, Contains("OnMessageFromMainNewMValues(): --- start to set values"));
    EXPECT_THAT(texts, Contains("OnMessageFromMainNewMValues(): --- end of set values"));
    EXPECT_EQ(texts.back(), "OnDraw(): --- tx msg. 'ready for new values'");
}

TEST_F(Cycle, ABatchDuringDrawingIsRefusedUnread) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_host.drawing = true;
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(),
                ElementsAre("box Fatal prg. error, can not take new mvalues.\n All ax. values out "
                            "of sync."));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
    EXPECT_EQ(m_fifo->header().read_index, 1U);
}

TEST_F(Cycle, ABatchAnnouncedWhileTheReadyIsBeingSentIsTakenAndAnsweredOnce) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_channel.on_send = [this](ToMaster, std::uint64_t) {
        m_channel.on_send = nullptr;
        m_fifo->Write(3.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady, kReady));
    const LinkCounters counters = m_cycle.Counters();
    EXPECT_EQ(counters.lines_read, 3U);
    EXPECT_EQ(counters.batches_announced, 3U);
    EXPECT_EQ(counters.batches_answered, 3U);
    ExpectAllAccountedFor();
}

TEST_F(Cycle, AReadyThatIsOnItsWayIsNotSentAgainByADrawingStep) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_channel.on_send = [this](ToMaster, std::uint64_t) {
        m_channel.on_send = nullptr;
        m_cycle.SendPendingReady();  // a resize, say, while a box is shown
    };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    m_fifo->Write(3.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_EQ(m_cycle.Counters().batches_answered, 3U);
    EXPECT_EQ(m_cycle.Counters().lines_shown, 3U);
    ExpectAllAccountedFor();
}

TEST_F(Cycle, AReaderThatCannotBeOpenedDoesNotStopTheStepsThatFollow) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    testing::RemoveFakeSegment("MValues_4711");
    const ExpectErrorLog expected(
        {"CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Open() failed",
         "Write(): interface is not open",
         "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() failed"});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("box Can not open mvales fifo", "rebuild",
                                           "box Prg.error, input buffer for axis values to small"));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(Cycle, AViewThatEndsWhileABatchWaitsForItsBoxSaysNothingAfterwards) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    testing::RemoveFakeSegment("MValues_4711");
    m_host.on_box = [this] { m_cycle.End(); };
    const ExpectErrorLog expected(
        {"CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Open() failed"});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("box Can not open mvales fifo"));
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    m_cycle.End();
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
}

TEST_F(Cycle, ConnectStartsANewLinkEvenWhenTheReaderOfAFailedOneIsStillOpen) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    PublishInfo({"X1", "Y1"}, std::numeric_limits<double>::infinity());
    {
        const ExpectErrorLog expected(
            {"ReadMasterInfo(): MachineTools_InfoData refused: the cycle time is not a positive "
             "number",
             "CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available"});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    }
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    PublishInfo({"X1", "Y1"});
    NewFifo();
    m_channel.Take();
    m_cycle.ConnectByUser();
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    m_fifo->Write(2.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(2.0));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect, kReady));
}

TEST_F(Cycle, AMasterThatDiedBehindItsFirstAnnouncementIsGoneWithoutABox) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(1.0);
    m_channel.alive.clear();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), IsEmpty());
    EXPECT_EQ(m_host.panes[StatusPane::kMessage],
              "The master process (Dorvane) has gone: Machine Data > Connect when it is back");
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.CanConnect());
}

TEST_F(Cycle, AMasterWithoutAxesGetsTheBoxOnEveryBatch) {
    PublishInfo({});
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    const std::string text = "Prg.error, value input buffer is not available";
    const std::string log =
        "CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available";
    const ExpectErrorLog expected({log, log});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", "box " + text));
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("box " + text));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(Cycle, AMasterWithoutFifoLinesGetsBothBoxes) {
    PublishInfo({"X1", "Y1"}, 0.004, 0);
    ASSERT_TRUE(m_cycle.Connect(true));
    const ExpectErrorLog expected(
        {"CWavoView::OnMessageFromMainNewMValues(): Prg. error, number of fifo lines=0",
         "CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available"});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("box Prg. error, number of fifo lines=0", "rebuild",
                                           "box Prg.error, value input buffer is not available"));
}

TEST_F(Cycle, AnAbsurdNumberOfFifoLinesGivesNoBuffer) {
    PublishInfo({"X1", "Y1"}, 0.004, std::numeric_limits<std::uint64_t>::max());
    ASSERT_TRUE(m_cycle.Connect(true));
    const ExpectErrorLog expected(
        {"CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available"});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
}

TEST_F(Cycle, ABatchThatIsTooLargeIsDrainedAndItsBoxShownOnceUntilABatchSucceeds) {
    PublishInfo({"X1", "Y1"}, 0.004, 1);  // the buffer takes one line, the FIFO holds seven
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    const std::string log =
        "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() failed";
    const std::string box = "box Prg.error, input buffer for axis values to small";
    const auto two_lines = [this] {
        m_fifo->Write(1.0);
        m_fifo->Write(2.0);
        return m_cycle.OnMessage(kNewValues);
    };
    {
        const ExpectErrorLog expected({log, log});
        EXPECT_EQ(two_lines(), 0);
        EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", box));
        EXPECT_EQ(m_fifo->header().read_index, 2U);
        EXPECT_EQ(two_lines(), 0);
        EXPECT_THAT(m_host.Take(), IsEmpty());
        EXPECT_THAT(m_channel.Take(), IsEmpty());
    }
    m_fifo->Write(3.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
    m_host.Take();
    const ExpectErrorLog expected({log});
    EXPECT_EQ(two_lines(), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre(box));
}

// ---- the default graph ----

struct DefaultAxis {
    std::vector<std::string> axes;
    std::string chosen;
};

class DefaultGraph : public Cycle, public ::testing::WithParamInterface<DefaultAxis> {};

TEST_P(DefaultGraph, IsAddedForTheFirstAxisNamedXYZOrC) {
    const std::size_t axes = GetParam().axes.size();
    PublishInfo(GetParam().axes);
    NewFifo(8, axes);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(5.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ASSERT_EQ(m_graphs.Graphs().size(), 1U);
    const WavoGraph& graph = m_graphs.Graphs().front();
    EXPECT_EQ(graph.GraphNumber, 1U);
    EXPECT_THAT(graph.YCoorAxName, ElementsAre(GetParam().chosen));
    EXPECT_THAT(graph.YCoorAxColor, ElementsAre(0xFFFFFFU));  // contrasts with black
    EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", "title running", "rebuild", "draw"));
    EXPECT_TRUE(m_editor.initialised);
    EXPECT_EQ(Held(GetParam().chosen).size(), 1U);  // the batch that brought the graph counts
}

INSTANTIATE_TEST_SUITE_P(Axes, DefaultGraph,
                         ::testing::Values(DefaultAxis{{"A", "y", "x"}, "y"},
                                           DefaultAxis{{"A", "B", "c"}, "c"},
                                           DefaultAxis{{"X", "Y", "z"}, "z"},
                                           DefaultAxis{{"X", "Y"}, "X"},
                                           DefaultAxis{{"x1", "xy"}, "x1"}));

TEST_F(Cycle, TheDefaultGraphIsScaledToTheLimitsThatTheMasterTells) {
    std::byte* const module = testing::AddFakeSegment("DataModCap4711", CapabilityRecordOffset(1));
    const std::int32_t count = 1;
    CapabilityRecord record{"X1", 250.0, -50.0, 0.0, 0.0, 0.001};
    std::memcpy(module, &count, sizeof count);
    std::memcpy(module + CapabilityRecordOffset(0), &record, sizeof record);
    ASSERT_TRUE(m_cycle.Connect(true));
    EXPECT_EQ(m_cycle.OnMessage({0x52F, 0, 0}), 1);
    m_channel.Take();
    m_fifo->Write(1.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ASSERT_EQ(m_graphs.Graphs().size(), 1U);
    EXPECT_EQ(m_graphs.Graphs()[0].YScales[0].Minimum, -50.0);
    EXPECT_EQ(m_graphs.Graphs()[0].YScales[0].Maximum, 250.0);
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "send 815 52f 0", kReady));
}

TEST_F(Cycle, AFailedInitOfTheEditorIsShownAndTheBatchGoesOn) {
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    m_editor.fails = true;
    m_fifo->Write(1.0);
    const ExpectErrorLog expected(
        {"CWavoView::OnMessageFromMainNewMValues(): m_GraphAxSelect.Init() failed"});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_host.Take(), Contains("box Prg.error, can not display graph data"));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
}

TEST_F(Cycle, WithoutAMasterWindowNoDefaultGraphIsAdded) {
    ConnectAndTakeFirstBatch();
    m_graphs.Replace({}, GraphList::Telling::kSilent);
    m_editor.initialised = false;
    // The info block is gone, the open reader still has a line.
    testing::RemoveFakeSegment("MachineTools_InfoData");
    EXPECT_FALSE(m_cycle.Connect(false));
    m_fifo->Write(2.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_host.Take(), Contains("box Prg.error, m_MasterInfoData==NULL"));
    EXPECT_THAT(m_graphs.Graphs(), IsEmpty());
}

}  // namespace
}  // namespace wavo
