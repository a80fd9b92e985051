// The acquisition cycle and what can go wrong around it: damaged FIFOs, a master that hangs,
// hostile info blocks, lost lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "cycle_fixture.h"
#include "cycle_texts.h"
#include "edit_graph.h"
#include "expect_errors.h"
#include "hostile_values.h"
#include "support/diagnostics_output.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using platform::SegmentState;
using platform::SendStatus;
using testing::EditGraph;
using ::testing::ElementsAre;
using testing::ExpectAnyErrorLog;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using testing::kLinkEnded;
using testing::kNewValues;
using testing::kOverrun;
using testing::kReady;

constexpr char kDamagedText[] =
    "The value fifo is damaged, see the error log: Machine Data > Connect to go on";
constexpr char kHungText[] = "The master process (Dorvane) does not respond";

class CycleFaults : public testing::CycleFixture {
 protected:
    [[nodiscard]] std::string Message() { return m_host.panes[StatusPane::kMessage]; }
};

// ---- a FIFO that cannot be relied on ----

struct Damage {
    const char* name;
    void (*make)(testing::FifoSegment& fifo);
    const char* entry;
};

class DamagedFifo : public CycleFaults, public ::testing::WithParamInterface<Damage> {};

TEST_P(DamagedFifo, EndsTheLinkWithItsEntryKeepsTheGraphsAndConnectsAgain) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    GetParam().make(*m_fifo);
    {
        const ExpectErrorLog expected({GetParam().entry, kReadFailed});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    }
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_THAT(m_host.Take(), ElementsAre("box Prg.error, input buffer for axis values to small"));
    EXPECT_EQ(Message(), kDamagedText);
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    EXPECT_EQ(m_cycle.Counters().links_broken, 1U);

    NewFifo();
    m_cycle.ConnectByUser();
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
    m_fifo->Write(7.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect, kReady));
    EXPECT_THAT(Held("X1"), ElementsAre(7.0)) << "nothing is joined across the loss";
    EXPECT_EQ(m_cycle.Counters().links, 2U);
    ExpectAllAccountedFor();
}

#define READ_TEXT "AxValueReader::Read(): "

INSTANTIATE_TEST_SUITE_P(
    Kinds, DamagedFifo,
    ::testing::Values(
        Damage{"Cut",
               [](testing::FifoSegment&) {
                   testing::SetFakeState("MValues_4711", SegmentState::kResized);
               },
               READ_TEXT "value fifo MValues_4711 has changed its size"},
        Damage{"CutWhileItIsRead",
               [](testing::FifoSegment&) {
                   testing::SetFakeState("MValues_4711", SegmentState::kResized, 1);
               },
               READ_TEXT "value fifo MValues_4711 has changed its size"},
        Damage{"Removed",
               [](testing::FifoSegment&) {
                   testing::SetFakeState("MValues_4711", SegmentState::kRemoved);
               },
               READ_TEXT "value fifo MValues_4711 was removed or replaced"},
        Damage{"LineSize", [](testing::FifoSegment& fifo) { fifo.header().line_size = 8; },
               READ_TEXT "the header of value fifo MValues_4711 is damaged"},
        Damage{"ReaderMark", [](testing::FifoSegment& fifo) { fifo.header().reader_mark = 0; },
               READ_TEXT "the header of value fifo MValues_4711 is damaged"},
        Damage{"ReadIndex", [](testing::FifoSegment& fifo) { fifo.header().read_index = 0; },
               READ_TEXT "the header of value fifo MValues_4711 is damaged"},
        Damage{"WriteIndex", [](testing::FifoSegment& fifo) { fifo.header().write_index = 99; },
               READ_TEXT "the header of value fifo MValues_4711 is damaged"}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- lost lines ----

TEST_F(CycleFaults, AfterAnOverrunTheCurvesBeginAnew) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0));
    NewFifo();
    m_cycle.ConnectByUser();
    m_fifo->Write(50.0);
    m_fifo->Write(51.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(50.0, 51.0));
    EXPECT_EQ(m_cycle.Counters().overruns, 1U);
    EXPECT_EQ(m_cycle.Counters().lines_read, 4U);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, OverrunsWhileTheirBoxIsShownOpenNoOther) {
    ConnectAndTakeFirstBatch();
    m_host.on_box = [this] {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
        }
    };
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_THAT(m_host.Take(),
                ElementsAre("box overrun value fifo (main -> wavo.) from master proc. detected"));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_EQ(m_cycle.Counters().overruns, 1001U);
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(m_host.Take().size(), 1U) << "the next one is told again";
}

TEST_F(CycleFaults, LinesReadWhileTheBoxOfAnOverrunIsShownAreNotJoined) {
    ConnectAndTakeFirstBatch();
    m_host.on_box = [this] {
        m_fifo->Write(50.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
        EXPECT_THAT(Held("X1"), ElementsAre(50.0));
    };
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, BatchesRefusedWhileTheirBoxIsShownOpenNoOther) {
    ConnectAndTakeFirstBatch();
    m_host.drawing = true;
    m_host.on_box = [this] {
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
        }
    };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre("box Fatal prg. error, can not take new mvalues.\n All "
                                           "ax. values out of sync."));
    EXPECT_EQ(m_cycle.Counters().batches_refused, 1001U);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, LinesThatWaitWhenTheLinkEndsAreCounted) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_fifo->Write(3.0);
    EXPECT_EQ(m_cycle.OnMessage(kLinkEnded), 1);
    EXPECT_EQ(m_cycle.Counters().lines_left, 2U);
    EXPECT_EQ(m_cycle.Counters().lines_read, 1U);
}

TEST_F(CycleFaults, SlotsThatAreTooSmallForTheAxesEndTheLink) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage(kLinkEnded), 1);
    m_channel.Take();
    m_host.Take();
    NewFifo(8, 1);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(2.0);
    {
        const ExpectErrorLog expected(
            {READ_TEXT "lines of 16 bytes do not fit into slots of 8 bytes", kReadFailed});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    }
    EXPECT_EQ(Message(), kDamagedText);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect, kDisconnect));
    EXPECT_TRUE(m_cycle.CanConnect());
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, AnInfoBlockThatNamesTheViewersOwnWindowIsNoMaster) {
    MasterInfoBlock block{};
    block.master_window = testing::FakeMasterChannel::kViewer;
    block.cycle_time = 0.004;
    block.fifo_lines = 8;
    m_channel.alive.insert(block.master_window);
    std::memcpy(testing::AddFakeSegment("MachineTools_InfoData", sizeof block), &block,
                sizeof block);
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: its window is the viewer's own"});
    EXPECT_FALSE(m_cycle.Connect(true));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(Message(), "The master's info block is not valid, see the error log");
}

TEST_F(CycleFaults, AfterARestartOfTheMasterTheCurvesBeginAnew) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage(kLinkEnded), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    NewFifo();
    m_cycle.ConnectByUser();
    m_fifo->Write(50.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(50.0));
    EXPECT_EQ(m_cycle.Counters().lines_shown, 2U);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, LinesThatWereThrownAwayAreCountedAndNothingIsJoinedAcrossThem) {
    // A FIFO that holds more than the info block tells of.
    AddGraph("X1");
    PublishInfo({"X1", "Y1"}, 0.004, 2);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(1.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    for (const double value : {2.0, 3.0, 4.0}) {
        m_fifo->Write(value);
    }
    {
        const ExpectErrorLog expected({kReadFailed});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    }
    EXPECT_EQ(m_cycle.Counters().lines_thrown_away, 3U);
    EXPECT_EQ(m_cycle.Counters().batches_drained, 1U);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    m_fifo->Write(5.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(5.0));
    m_fifo->Write(6.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(5.0, 6.0));
    EXPECT_EQ(m_cycle.Counters().lines_read, 3U);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, EveryLineAndBatchIsCountedByWhatBecameOfIt) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_cycle.OnMessage(kNewValues);
    m_cycle.SetRunning(false);
    m_fifo->Write(3.0);
    m_fifo->Write(4.0);
    m_cycle.OnMessage(kNewValues);
    m_host.drawing = true;
    m_cycle.OnMessage(kNewValues);
    m_host.drawing = false;
    m_channel.send_status = SendStatus::kNoAnswer;
    m_fifo->Write(5.0);
    m_cycle.OnMessage(kNewValues);
    LinkCounters expected;
    expected.lines_read = 5;
    expected.lines_shown = 2;
    expected.lines_not_shown = 3;
    expected.batches_announced = 5;
    expected.batches_answered = 3;
    expected.batches_unanswered = 1;
    expected.batches_refused = 1;
    expected.links = 1;
    EXPECT_EQ(m_cycle.Counters(), expected);
    ExpectAllAccountedFor();
}

TEST_F(CycleFaults, ABatchFarLongerThanAShortTimeRangeIsAnsweredAndDoesNotFloodTheLog) {
    constexpr int kLines = 150'000;
    constexpr double kCycle = 0.001;
    const testing::TemporaryFolder folder;
    diagnostics::SetLogFolder(folder.path());
    AddGraph("X1");
    EditGraph(m_graphs, 0, [](WavoGraph& graph) { graph.XScale.TimeRange = 100 * kCycle; });
    PublishInfo({"X1", "Y1"}, kCycle, kLines + 1);
    NewFifo(kLines + 1);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    for (int i = 0; i < kLines; ++i) {
        m_fifo->Write(i);
    }
    const std::string entry = "GraphValue::SetValue(): overrun last value fifo";
    {
        // The new values take one more than the time range; each one beyond is reported.
        const ExpectErrorLog expected(std::vector<std::string>(kLines - 101, entry));
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    }
    diagnostics::SetLogFolder({});
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_EQ(Held("X1").back(), kLines - 1.0);
    const std::vector<std::string> lines = folder.Lines("wavo_error.log");
    EXPECT_LT(lines.size(), 100U);
    ASSERT_GE(lines.size(), 2U);
    EXPECT_TRUE(lines.front().ends_with(entry)) << lines.front();
    EXPECT_TRUE(lines.back().ends_with(" times more")) << lines.back();
    ExpectAllAccountedFor();
}

// ---- a master that hangs ----

class HungMaster : public CycleFaults {
 protected:
    /// Connected, with capabilities, and the answer to the last batch was not taken.
    void Hang() {
        PublishLimits(-50.0, 250.0);
        ConnectAndTakeFirstBatch();
        m_cycle.OnMessage({0x52F, 0, 0});
        ASSERT_TRUE(m_cycle.Capabilities().FindAxis("X1"));
        m_channel.Take();
        m_channel.send_status = SendStatus::kNoAnswer;
    }
    /// Messages that the window waited for.
    [[nodiscard]] static std::size_t Waits(const std::vector<std::string>& said) {
        return static_cast<std::size_t>(
            std::count_if(said.begin(), said.end(),
                          [](const std::string& message) { return message.starts_with("send"); }));
    }
};

TEST_F(HungMaster, IsToldInTheStatusBarByALookupOfLimitsToo) {
    Hang();
    const auto found = m_cycle.Capabilities().FindAxis("X1");
    ASSERT_TRUE(found) << "what is known stays known";
    EXPECT_EQ(found->upper_limit, 250.0);
    EXPECT_EQ(Message(), kHungText);
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    EXPECT_EQ(Waits(m_channel.Take()), 1U);
}

TEST_F(HungMaster, CostsOneWaitWhateverIsDoneAfterwards) {
    Hang();
    m_fifo->Write(2.0);
    m_cycle.OnMessage(kNewValues);
    EXPECT_EQ(Message(), kHungText);
    EXPECT_EQ(Waits(m_channel.Take()), 1U);
    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(m_cycle.Capabilities().FindAxis("X1"));
    }
    m_cycle.LeaveMaster();  // as opening a graph file does
    m_cycle.JoinMaster();
    EXPECT_TRUE(m_cycle.Connect(true));
    EXPECT_EQ(Message(), kHungText);
    m_cycle.OnMessage(kOverrun);
    m_cycle.End();
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 815 52c 1", kConnect, kConnect,
                                              "post 815 52c 1", "post 815 52c 1"));
}

TEST_F(HungMaster, CostsOneWaitWhenALookupForTheFirstGraphAndTheAnswerMeetIt) {
    m_channel.send_status = SendStatus::kNoAnswer;
    ASSERT_TRUE(m_cycle.Connect(true));
    m_cycle.OnMessage({0x52F, 0, 0});
    m_fifo->Write(1.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(m_graphs.Graphs().size(), 1U);
    EXPECT_EQ(Message(), kHungText);
    const std::vector<std::string> said = m_channel.Take();
    EXPECT_EQ(Waits(said), 1U);
    EXPECT_EQ(said.back(), "post 815 52d 0") << "the master finds its answer when it wakes up";
    EXPECT_EQ(m_cycle.Counters().batches_answered, 1U);
}

TEST_F(HungMaster, IsNotHeardOfInMessagesThatMayHaveWaited) {
    Hang();
    m_cycle.Capabilities().FindAxis("X1");
    for (const std::uint32_t number : {0x52FU, 0x530U}) {
        m_cycle.OnMessage({number, 0, 0});
        EXPECT_EQ(Message(), kHungText);
    }
}

TEST_F(HungMaster, ThatIsHeardOfAgainIsAskedAgain) {
    Hang();
    m_cycle.Capabilities().FindAxis("X1");
    m_channel.Take();
    m_channel.send_status = SendStatus::kDone;
    m_fifo->Write(2.0);
    m_cycle.OnMessage(kNewValues);
    EXPECT_EQ(Message(), kConnectedText);
    m_cycle.Capabilities().FindAxis("X1");
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady, "send 815 52e 0", "send 815 52f 0"));
}

TEST_F(HungMaster, WhoseSuccessorIsAnotherProcessIsForgotten) {
    Hang();
    m_cycle.Capabilities().FindAxis("X1");
    EXPECT_EQ(Message(), kHungText);
    m_channel.send_status = SendStatus::kDone;
    m_channel.alive.clear();
    m_cycle.OnPeerGone(testing::FakeMasterChannel::kMaster);
    PublishAnotherMaster();
    EXPECT_TRUE(m_cycle.Connect(true));
    EXPECT_EQ(Message(), kConnectedText);
}

TEST_F(HungMaster, IsSparedByLookupsAlsoWhenItsInfoBlockIsNotValidAnyMore) {
    Hang();
    m_cycle.Capabilities().FindAxis("X1");
    PublishInfo({"X1", "Y1"}, 0.0);
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: the cycle time is not a positive "
         "number"});
    EXPECT_FALSE(m_cycle.Connect(true));
    m_channel.Take();
    EXPECT_TRUE(m_cycle.Capabilities().FindAxis("X1")) << "what is known stays known";
    EXPECT_EQ(Waits(m_channel.Take()), 0U);
}

TEST_F(HungMaster, ThatDiesDuringALookupIsForgotten) {
    Hang();
    m_channel.alive.clear();
    const ExpectAnyErrorLog expected;
    m_cycle.Capabilities().FindAxis("X1");
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_EQ(Message(),
              "The master process (Dorvane) has gone: Machine Data > Connect when it is back");
}

// ---- hostile info blocks, up to the graphs ----

class HostileCycle : public CycleFaults {
 protected:
    /// What the status bar has to say of the block.
    static const char* Verdict(const MasterInfoBlock& block) {
        if (block.master_window != testing::FakeMasterChannel::kMaster) {
            return "Master process (Dorvane) not present";
        }
        const auto ends = static_cast<std::uint64_t>(
            std::count(std::begin(block.axis_names), std::end(block.axis_names), '\0'));
        const bool sound =
            std::isfinite(block.cycle_time) && block.cycle_time > 0.0 && block.axis_count <= ends;
        return sound ? kConnectedText : "The master's info block is not valid, see the error log";
    }

    /// Takes two batches of a master with this block, which was taken when `is_taken`.
    void TakeTwoBatches(const MasterInfoBlock& block, bool is_taken) {
        const LinkCounters before = m_cycle.Counters();
        for (const double value : {1.0, 2.0}) {
            m_fifo->Write(value);
            m_cycle.OnMessage(kNewValues);
        }
        const LinkCounters after = m_cycle.Counters();
        const std::uint64_t answered = after.batches_answered - before.batches_answered;
        const std::uint64_t failed = after.batches_failed - before.batches_failed;
        EXPECT_EQ(after.batches_announced - before.batches_announced, 2U);
        EXPECT_EQ(answered + failed, 2U);
        // Lines of two axes stand in the FIFO.
        const bool readable =
            is_taken && block.axis_count >= 1 && block.axis_count <= 2 && block.fifo_lines >= 1;
        if (!readable) {
            EXPECT_EQ(failed, 2U);
        } else if (block.fifo_lines <= std::numeric_limits<std::size_t>::max() / 8 / 2) {
            EXPECT_EQ(answered, 2U);
        }
        const std::vector<std::string> said = m_channel.Take();
        EXPECT_EQ(static_cast<std::uint64_t>(std::count(said.begin(), said.end(), kReady)),
                  answered);
    }

    /// Connects to a master with this block, takes two batches, leaves.
    void Try(const MasterInfoBlock& block) {
        const ExpectAnyErrorLog announced;
        std::memcpy(testing::AddFakeSegment("MachineTools_InfoData", sizeof block), &block,
                    sizeof block);
        NewFifo();
        m_cycle.ConnectByUser();
        const std::string verdict = Verdict(block);
        const bool is_taken = verdict == kConnectedText;
        EXPECT_EQ(Message(), verdict);
        EXPECT_EQ(m_cycle.IsMasterKnown(), is_taken);
        const std::vector<std::string> said = m_channel.Take();
        const std::vector<std::string> boxes = m_host.Take();
        if (is_taken) {
            EXPECT_THAT(said, ElementsAre(kConnect));
            EXPECT_THAT(boxes, IsEmpty());
        } else {
            EXPECT_THAT(said, IsEmpty());
            EXPECT_THAT(boxes, ElementsAre("box Master process (Dorvane) not present."));
        }
        TakeTwoBatches(block, is_taken);
        m_cycle.OnMessage(kLinkEnded);
        m_channel.Take();
        m_host.Take();
        ++(is_taken ? m_taken : m_refused);
    }
    int m_taken = 0;
    int m_refused = 0;  ///< or not seen as a master's
};

TEST_F(HostileCycle, EveryInfoBlockIsRefusedOrTakenAndTheNextGoodOneWorks) {
    AddGraph("X1");
    AddGraph("Y1", 2);
    MasterInfoBlock block{};
    block.master_window = testing::FakeMasterChannel::kMaster;
    block.cycle_time = 0.004;
    block.axis_count = 2;
    block.fifo_lines = 8;
    std::memcpy(block.axis_names, "X1\0Y1", 6);
    const MasterInfoBlock good = block;
    int checks = testing::ForEachTurnedBit(&block, 48, [&](std::size_t) { Try(block); });
    checks += testing::ForEachHostileField(
        &block, {{"cycle_time", 8, 8}, {"axis_count", 24, 8}, {"fifo_lines", 32, 8}},
        [&](const std::string&) { Try(block); });
    EXPECT_GE(checks, 48 * 8 + 3 * 13);
    EXPECT_EQ(m_taken + m_refused, checks);
    EXPECT_GT(m_taken, 200);
    EXPECT_GT(m_refused, 100);
    ExpectAllAccountedFor();
    std::memcpy(testing::AddFakeSegment("MachineTools_InfoData", sizeof good), &good, sizeof good);
    NewFifo();
    m_cycle.ConnectByUser();
    m_fifo->Write(3.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect, kReady));
    EXPECT_THAT(Held("X1"), ElementsAre(3.0));
}

TEST_F(HostileCycle, ValuesThatAreNoNumbersAreDrawnAndAnswered) {
    AddGraph("X1");
    AddGraph("X1", 1);
    AddGraph("X1", 2);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    for (const testing::HostileValue& value : testing::HostileValues()) {
        SCOPED_TRACE(value.name);
        double number = 0.0;
        std::memcpy(&number, &value.bits, sizeof number);
        m_fifo->Write(number);
        m_fifo->Write(1.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
        EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    }
    EXPECT_THAT(m_host.Take(), ::testing::Not(IsEmpty()));
}

}  // namespace
}  // namespace wavo
