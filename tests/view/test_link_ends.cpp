// How a link ends: by the master, by the viewer, by an overrun, and with a master that dies or
// hangs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cycle_fixture.h"
#include "expect_errors.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FakeMasterChannel;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using testing::kLinkEnded;
using testing::kNewValues;
using testing::kOverrun;
using testing::kReady;

using LinkEnds = testing::CycleFixture;

// ---- the end of a link ----

TEST_F(LinkEnds, TheLinkEndClosesTheReaderForgetsTheMasterAndResetsTheTotal) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage(kLinkEnded), 1);
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_EQ(m_cycle.TotalLines(), 0U);
    EXPECT_EQ(m_fifo->header().reader_mark, 0U);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(m_host.panes[StatusPane::kTotalLines], "0");
    EXPECT_TRUE(m_cycle.CanConnect());
}

TEST_F(LinkEnds, OtherNoticesAreIgnored) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    for (const std::uint64_t notice : {0ULL, 3ULL, 0xFFFFFFFFFFFFFFFFULL}) {
        EXPECT_EQ(m_cycle.OnMessage({0x52C, notice, 0}), 1);
    }
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
}

TEST_F(LinkEnds, UnknownMessagesAreIgnored) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage({0x530, 1, 0}), 0);
    EXPECT_THAT(m_host.Take(), IsEmpty());
}

TEST_F(LinkEnds, AnOverrunSendsTheDisconnectThenShowsTheBoxThenCloses) {
    ConnectAndTakeFirstBatch();
    m_host.on_box = [this] {
        EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
        EXPECT_TRUE(m_cycle.IsReaderOpen());
    };
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_THAT(m_host.Take(),
                ElementsAre("box overrun value fifo (main -> wavo.) from master proc. detected"));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
    EXPECT_TRUE(m_cycle.CanConnect());

    m_cycle.ConnectByUser();
    EXPECT_FALSE(m_cycle.CanConnect());
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
}

TEST_F(LinkEnds, AnOverrunWithoutAMasterOnlyShowsTheBox) {
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_THAT(m_host.Take(),
                ElementsAre("box overrun value fifo (main -> wavo.) from master proc. detected"));
}

TEST_F(LinkEnds, QuitDisconnectsAndEndsTheProcess) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnMessage({0x52E, 0, 0});
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_THAT(m_host.Take(), ElementsAre("end process"));
    m_cycle.End();  // the view's end says nothing a second time
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(LinkEnds, TheViewsEndDisconnectsAndCloses) {
    ConnectAndTakeFirstBatch();
    m_cycle.End();
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    m_fifo->Write(2.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_FALSE(m_cycle.IsReaderOpen());
}

TEST_F(LinkEnds, ChangedCapabilitiesAreFetchedAtTheNextLookup) {
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    EXPECT_EQ(m_cycle.OnMessage({0x52F, 0, 0}), 1);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    const ExpectErrorLog expected(
        {"SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): failed to link data module "
         "[DataModCap4711]"});
    EXPECT_FALSE(m_cycle.Capabilities().FindAxis("X1"));
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "send 815 52f 0"));
}

// ---- a master that dies or hangs ----

TEST_F(LinkEnds, AMasterThatVanishesIsForgottenAndTheGraphsStay) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
    EXPECT_EQ(m_graphs.Graphs().size(), 1U);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    EXPECT_EQ(m_host.panes[StatusPane::kMessage],
              "The master process (Dorvane) has gone: Machine Data > Connect when it is back");
    EXPECT_TRUE(m_cycle.CanConnect());
}

TEST_F(LinkEnds, AnotherWindowThatVanishesChangesNothing) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnPeerGone(99);
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
}

TEST_F(LinkEnds, AMasterThatWroteWhatIsNoMessageIsNoLongerConnected) {
    ConnectAndTakeFirstBatch();
    {
        const ExpectErrorLog expected(
            {"AcquisitionCycle::OnPeerRefused(): the master's connection was closed, it wrote a "
             "second hello"});
        m_cycle.OnPeerRefused(FakeMasterChannel::kMaster, "a second hello");
        m_cycle.OnPeerRefused(FakeMasterChannel::kMaster, "more of it");
    }
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
    EXPECT_EQ(m_host.panes[StatusPane::kMessage],
              "The master process (Dorvane) wrote what is no message, see the error log: "
              "Machine Data > Connect to go on");
    ASSERT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(m_host.Take(), IsEmpty());
    m_cycle.ConnectByUser();
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
    NewFifo();
    m_fifo->Write(2.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(2.0));
    EXPECT_EQ(m_host.panes[StatusPane::kMessage], "Connected to the master process (Dorvane)");
    EXPECT_FALSE(m_cycle.CanConnect());
}

TEST_F(LinkEnds, AnotherWindowThatWroteWhatIsNoMessageChangesNothing) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnPeerRefused(99, "garbage");
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    EXPECT_FALSE(m_cycle.CanConnect());
}

TEST_F(LinkEnds, AMasterThatIsGoneWhenTheReadyIsSentIsForgotten) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_channel.alive.clear();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_FALSE(m_cycle.IsMasterKnown());
}

TEST_F(LinkEnds, AMasterThatVanishesDuringTheDrawingGetsNoReady) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_host.on_draw = [this] { m_cycle.OnPeerGone(FakeMasterChannel::kMaster); };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(LinkEnds, AHungMasterIsReportedAndTheLinkStaysUntilItAnswersAgain) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(m_host.panes[StatusPane::kMessage], "The master process (Dorvane) does not respond");
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));

    m_channel.send_status = platform::SendStatus::kDone;
    m_fifo->Write(3.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(m_host.panes[StatusPane::kMessage], "Connected to the master process (Dorvane)");
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
}

TEST_F(LinkEnds, AMasterThatEndsTheLinkInsteadOfAnsweringIsNotCalledHung) {
    ConnectAndTakeFirstBatch();
    m_fifo->Write(2.0);
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    m_channel.on_send = [this](ToMaster, std::uint64_t) { m_cycle.OnMessage(kLinkEnded); };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    const std::string ended = "The master process (Dorvane) has ended the link";
    EXPECT_EQ(m_host.panes[StatusPane::kMessage], ended);
    m_cycle.OnMessage({0x52F, 0, 0});
    EXPECT_EQ(m_host.panes[StatusPane::kMessage], ended);
}

TEST_F(LinkEnds, AnOverrunOfAHungMasterIsNotCalledConnectedWhenItSpeaksAgain) {
    ConnectAndTakeFirstBatch();
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    m_cycle.OnMessage({0x52F, 0, 0});
    EXPECT_EQ(m_host.panes[StatusPane::kMessage],
              "The value fifo ran over: Machine Data > Connect to go on");
}

}  // namespace
}  // namespace wavo
