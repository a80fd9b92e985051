// The acquisition cycle around message boxes, which run an event loop, and around masters that take
// the place of others: what happens meanwhile is met when the cycle goes on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cycle_fixture.h"
#include "cycle_texts.h"
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

class CycleBoxes : public testing::CycleFixture {
 protected:
    [[nodiscard]] std::string Message() { return m_host.panes[StatusPane::kMessage]; }

    /// Connected to a master whose FIFO is not there.
    void ConnectWithoutFifo() {
        AddGraph("X1");
        ASSERT_TRUE(m_cycle.Connect(true));
        m_channel.Take();
        testing::RemoveFakeSegment("MValues_4711");
    }
    /// Connected to a master that tells of one line while its FIFO holds more.
    void ConnectWithASmallBuffer() {
        AddGraph("X1");
        PublishInfo({"X1", "Y1"}, 0.004, 1);
        ASSERT_TRUE(m_cycle.Connect(true));
        m_channel.Take();
    }
    /// Announces a batch as soon as a box is shown, and again while each further one is.
    void AnnounceWhileBoxesAreShown() {
        m_host.on_box = [this] {
            EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
            ++m_announced;
            AnnounceWhileBoxesAreShown();
        };
    }
    int m_announced = 0;
};

// ---- batches that are announced while a box waits ----

TEST_F(CycleBoxes, ABatchThatIsAnnouncedWhileTheBoxOfAFailedOneWaitsIsTakenWhenItCloses) {
    ConnectWithoutFifo();
    m_host.on_box = [this] {
        NewFifo();
        m_fifo->Write(1.0);
        m_fifo->Write(2.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
        EXPECT_THAT(m_channel.Take(), IsEmpty());
        EXPECT_EQ(m_cycle.TotalLines(), 0U);
    };
    const ExpectErrorLog expected({kOpenFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre(kOpenBox, "rebuild", "draw"));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0));
    EXPECT_EQ(m_cycle.Counters().batches_failed, 1U);
    EXPECT_EQ(m_cycle.Counters().batches_answered, 1U);
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, WhatWaitsInTheFifoIsTakenBehindABatchThatWasDrainedToo) {
    ConnectWithASmallBuffer();
    m_fifo->Write(1.0);
    m_fifo->Write(2.0);
    m_host.on_box = [this] {
        m_fifo->Write(3.0);
        for (int i = 0; i < 3; ++i) {  // each second, say
            EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
        }
    };
    const ExpectErrorLog expected({kReadFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady)) << "one answer";
    EXPECT_THAT(Held("X1"), ElementsAre(3.0));
    EXPECT_EQ(m_cycle.Counters().batches_drained, 1U);
    EXPECT_EQ(m_cycle.Counters().batches_answered, 1U);
    EXPECT_EQ(m_cycle.Counters().batches_refused, 2U) << "the same batch, announced again";
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, ABatchThatIsAnnouncedBehindTheBoxOfAGoodOneIsAnsweredToo) {
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    m_editor.fails = true;
    m_fifo->Write(1.0);
    m_host.on_box = [this] {
        m_fifo->Write(2.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    };
    const ExpectErrorLog expected({kInitFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady, kReady));
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0));
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, AStoppedViewTakesAndAnswersWhatWaitsToo) {
    ConnectWithoutFifo();
    m_cycle.SetRunning(false);
    m_host.on_box = [this] {
        NewFifo();
        m_fifo->Write(1.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    };
    const ExpectErrorLog expected({kOpenFailed});
    m_cycle.OnMessage(kNewValues);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
}

TEST_F(CycleBoxes, ABatchThatFailsAgainBehindItsBoxDoesNotShowTheSameBoxAgain) {
    ConnectWithoutFifo();
    AnnounceWhileBoxesAreShown();
    const ExpectErrorLog expected(
        {kOpenFailed, kOpenFailed, kNotOpen, kReadFailed, kOpenFailed, kNotOpen, kReadFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre(kOpenBox, "rebuild", kTooSmallBox, "rebuild"));
    EXPECT_EQ(m_announced, 2);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(m_cycle.Counters().batches_failed, 3U);
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, AMasterWithoutAxesThatGoesOnAnnouncingGetsOneBoxForEachThatWasClosed) {
    PublishInfo({});
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    AnnounceWhileBoxesAreShown();
    for (int i = 0; i < 2; ++i) {
        const ExpectErrorLog expected({kNoBuffer, kNoBuffer});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
        EXPECT_EQ(m_announced, i + 1);
    }
    EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", kNoBufferBox, kNoBufferBox));
    ExpectAllAccountedFor();
}

// ---- the link ends while a box waits ----

TEST_F(CycleBoxes, ALinkThatEndsWhileTheFifoCannotBeOpenedStaysEnded) {
    ConnectWithoutFifo();
    m_host.on_box = [this] { m_cycle.OnMessage(kLinkEnded); };
    const ExpectErrorLog expected({kOpenFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre(kOpenBox));
    EXPECT_EQ(Message(), kEndedText);
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, ABatchThatTheLinkEndedBehindIsNotTaken) {
    ConnectWithoutFifo();
    m_host.on_box = [this] {
        NewFifo();
        m_fifo->Write(1.0);
        m_cycle.OnMessage(kNewValues);
        m_cycle.OnMessage(kLinkEnded);
    };
    const ExpectErrorLog expected({kOpenFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_EQ(Message(), kEndedText);
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_EQ(m_cycle.Counters().batches_failed, 2U);
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, AMasterThatVanishesWhileABoxWaitsStaysGoneAlsoWhenAnotherIsThere) {
    ConnectWithoutFifo();
    m_host.on_box = [this] {
        m_channel.alive.clear();
        m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
        PublishAnotherMaster();
    };
    const ExpectErrorLog expected({kOpenFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_EQ(Message(),
              "The master process (Dorvane) has gone: Machine Data > Connect when it is back");
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(CycleBoxes, ALinkThatEndsWhileTheBoxOfAFifoWithoutLinesWaitsGetsNoOtherBox) {
    PublishInfo({"X1", "Y1"}, 0.004, 0);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    m_host.on_box = [this] { m_cycle.OnMessage(kLinkEnded); };
    const ExpectErrorLog expected({kNoLines});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_host.Take(), ElementsAre(kNoLinesBox));
    EXPECT_EQ(Message(), kEndedText);
    EXPECT_TRUE(m_cycle.CanConnect());
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, ALinkThatEndsWhileAnOtherwiseGoodBatchWaitsGetsNoAnswer) {
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    m_editor.fails = true;
    m_fifo->Write(1.0);
    m_host.on_box = [this] { m_cycle.OnMessage(kLinkEnded); };
    const ExpectErrorLog expected({kInitFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(Message(), kEndedText);
    EXPECT_TRUE(m_cycle.CanConnect());
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, ABatchIsHandedOutAsItWasReadWhateverLinkBeginsMeanwhile) {
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    m_editor.fails = true;
    m_fifo->Write(1.0);
    m_host.on_box = [this] {
        m_cycle.OnMessage(kLinkEnded);
        PublishInfo({"X1", "Y1", "Z1", "A1", "B1", "C1"});
        m_cycle.ConnectByUser();
    };
    const ExpectErrorLog expected({kInitFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect)) << "the new link owes nothing";
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, ALinkThatEndsWhileTheBoxOfAnOverrunWaitsStaysEnded) {
    ConnectAndTakeFirstBatch();
    m_host.on_box = [this] { m_cycle.OnMessage(kLinkEnded); };
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(Message(), kEndedText);
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_TRUE(m_cycle.CanConnect());
    NewFifo();
    m_cycle.ConnectByUser();
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
}

TEST_F(CycleBoxes, ALinkThatBeginsWhileTheBoxOfAnOverrunWaitsIsNotBroken) {
    ConnectAndTakeFirstBatch();
    m_host.on_box = [this] {
        m_cycle.OnMessage(kLinkEnded);
        NewFifo();
        m_cycle.ConnectByUser();
        m_fifo->Write(50.0);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    };
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect, kConnect, kReady));
    ExpectAllAccountedFor();
}

// ---- values that flow again ----

TEST_F(CycleBoxes, TheTextOfAnOverrunGoesWhenValuesFlowAgain) {
    ConnectAndTakeFirstBatch();
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(Message(), kOverrunText);
    // Opening a graph file leaves the master and joins it again.
    m_cycle.LeaveMaster();
    m_cycle.JoinMaster();
    NewFifo();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(Message(), kOverrunText) << "no values so far";
    m_fifo->Write(50.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_THAT(Held("X1"), ElementsAre(50.0));
    EXPECT_TRUE(m_cycle.CanConnect());
    ExpectAllAccountedFor();

    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(Message(), kOverrunText) << "the next one is told again";
    m_cycle.ConnectByUser();
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
}

TEST_F(CycleBoxes, TheTextOfADamagedFifoGoesWhenValuesFlowAgain) {
    ConnectAndTakeFirstBatch();
    m_fifo->header().read_index = 5;
    {
        const ExpectErrorLog expected(
            {"AxValueReader::Read(): the header of value fifo MValues_4711 is damaged",
             kReadFailed});
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    }
    NewFifo();
    m_fifo->Write(50.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(Message(), kConnectedText);
}

TEST_F(CycleBoxes, TheTextOfAnOverrunStaysForBatchesThatAreTakenWhileItsBoxWaits) {
    ConnectAndTakeFirstBatch();
    for (int i = 0; i < 2; ++i) {  // the second time the link is broken already
        NewFifo();
        m_host.on_box = [this] {
            m_fifo->Write(50.0);
            EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
        };
        EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
        EXPECT_EQ(Message(), kOverrunText);
        EXPECT_TRUE(m_cycle.CanConnect());
    }
}

TEST_F(CycleBoxes, AMasterThatHungAndSpeaksAgainBehindAnOverrunIsConnectedWhenValuesFlow) {
    ConnectAndTakeFirstBatch();
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    EXPECT_EQ(m_cycle.OnMessage(kOverrun), 1);
    EXPECT_EQ(Message(), kOverrunText);
    m_channel.send_status = platform::SendStatus::kDone;
    NewFifo();
    m_fifo->Write(50.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_EQ(Message(), kConnectedText);
}

// ---- another master ----

TEST_F(CycleBoxes, LimitsAreThoseOfTheMasterThatTookTheDeadOnesPlace) {
    PublishLimits(-50.0, 250.0);
    ConnectAndTakeFirstBatch();
    m_cycle.OnMessage({0x52F, 0, 0});
    EXPECT_EQ(m_cycle.Capabilities().FindAxis("X1")->upper_limit, 250.0);
    m_channel.alive.clear();
    m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
    PublishAnotherMaster();
    PublishLimits(-7.0, 7.0);
    m_channel.Take();
    m_cycle.ConnectByUser();
    EXPECT_EQ(m_cycle.Capabilities().FindAxis("X1")->upper_limit, 7.0);
    EXPECT_THAT(m_channel.Take(),
                ElementsAre("post 816 52c 2", "send 816 52e 0", "send 816 52f 0"));
    EXPECT_TRUE(m_cycle.IsMasterKnown());
}

TEST_F(CycleBoxes, AnotherMasterThatIsMetWhenTheFifoIsOpenedIsAnnouncedTo) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
    m_fifo->Write(1.0);
    m_channel.alive.clear();
    PublishAnotherMaster();
    m_channel.on_post = [this] {
        EXPECT_FALSE(m_cycle.IsReaderOpen()) << "closed first";
        EXPECT_EQ(m_fifo->header().reader_mark, 0U);
    };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 816 52c 2"));
    EXPECT_EQ(Message(), kConnectedText);
    EXPECT_FALSE(m_cycle.CanConnect());
    EXPECT_EQ(m_cycle.Counters().batches_failed, 1U);
    EXPECT_EQ(m_cycle.Counters().lines_left, 1U);

    NewFifo();
    m_fifo->Write(7.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 816 52d 0"));
    EXPECT_THAT(Held("X1"), ElementsAre(7.0));
    ExpectAllAccountedFor();
}

TEST_F(CycleBoxes, AMasterThatStillLivesIsLeftForTheOther) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.Take();
    PublishAnotherMaster();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect, "post 816 52c 2"));
}

TEST_F(CycleBoxes, AMasterThatHangsIsLeftForTheOtherWithoutWaiting) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_cycle.OnMessage({0x52F, 0, 0});
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    m_cycle.Capabilities().FindAxis("X1");
    m_channel.Take();
    testing::RemoveFakeSegment("MValues_4711");
    PublishAnotherMaster();
    m_host.on_box = [this] {  // it does not speak again before it is left
        m_cycle.Capabilities().FindAxis("X1");
        m_channel.Take();
    };
    const ExpectErrorLog expected({kOpenFailed});
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 815 52c 1", "post 816 52c 2"));
    EXPECT_EQ(Message(), kConnectedText);
}

TEST_F(CycleBoxes, AnotherMasterThatTheUserConnectsToGetsAFifoOfItsOwnRead) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnMessage(kOverrun);
    NewFifo();
    m_fifo->Write(2.0);
    m_cycle.OnMessage(kNewValues);
    ASSERT_TRUE(m_cycle.IsReaderOpen());
    ASSERT_TRUE(m_cycle.CanConnect());
    m_channel.Take();
    m_channel.alive.clear();
    PublishAnotherMaster();
    m_cycle.ConnectByUser();
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 816 52c 2"));
    NewFifo();
    m_fifo->Write(7.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(7.0));
}

TEST_F(CycleBoxes, AnotherMasterThatEndsAtOnceIsForgotten) {
    AddGraph("X1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_channel.alive.clear();
    PublishAnotherMaster();
    m_channel.on_post = [this] { m_channel.alive.clear(); };
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_EQ(Message(), "Master process (Dorvane) not present");
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_TRUE(m_cycle.CanConnect());

    m_channel.on_post = nullptr;
    PublishAnotherMaster();
    m_channel.Take();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0) << "it was not told of the viewer yet";
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 816 52c 2"));
}

TEST_F(CycleBoxes, AnAnnouncementThatWasLeftOfAnEndedLinkLeadsToTheOtherMasterToo) {
    ConnectAndTakeFirstBatch();
    m_cycle.OnMessage(kLinkEnded);
    m_channel.alive.clear();
    PublishAnotherMaster();
    NewFifo();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 816 52c 2"));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
}

TEST_F(CycleBoxes, AMasterThatAnnouncesToAViewerThatNeverDidIsTaken) {
    AddGraph("X1");
    m_fifo->Write(1.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
    EXPECT_THAT(Held("X1"), ElementsAre(1.0));
}

}  // namespace
}  // namespace wavo
