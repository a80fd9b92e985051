// What becomes of the link to the master while a recording is open.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "cycle_fixture.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using std::chrono::milliseconds;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::FakeMasterChannel;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using testing::kLinkEnded;
using testing::kNewValues;
using ::testing::Not;

constexpr platform::Message kMasterHere{0x530, 0, 0};
constexpr platform::Message kQuitNow{0x52E, 0, 0};
constexpr char kConnectToOther[] = "post 816 52c 2";

class PastLink : public testing::CycleFixture {
 protected:
    /// Connected, with a graph that holds 1, 2, 3; then a recording is open.
    void SetUp() override {
        m_source.SetComesBack(true);
        m_session.Source().SetComesBack(true);
        m_session.Values().SetClock([this] { return m_now; });
        AddGraph("X1");
        ASSERT_TRUE(m_cycle.Connect(true));
        Write({1.0, 2.0, 3.0});
        ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
        Forget();
        const std::string path = m_folder.File("night.mcap");
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(2), std::nullopt);
        ASSERT_TRUE(writer.HasValue());
        testing::Append(**writer, 0, testing::MakeLines(2, 100, 1));
        testing::RequireNoFault((*writer)->Finish());
        auto recording = OpenRecording::Open({path});
        ASSERT_TRUE(recording.HasValue());
        m_session.Recordings().Show(std::move(*recording), "night.mcap");
    }
    void Write(const std::vector<double>& values) {
        for (const double value : values) {
            m_fifo->Write(value);
        }
    }
    void Forget() {
        m_channel.Take();
        m_host.Take();
        m_editor.happened.clear();
    }
    void Close() { m_session.Recordings().Close(); }
    void TakeFirstBatch(const std::vector<double>& values) {
        testing::RemoveFakeSegment("MValues_4711");
        NewFifo();
        Write(values);
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    }
    /// The graph goes on behind a gap.
    void ExpectGap(double last) {
        const std::vector<double> held = Held("X1");
        ASSERT_GE(held.size(), 5U);
        EXPECT_EQ(held[0], 1.0);
        EXPECT_EQ(held[2], 3.0);
        EXPECT_TRUE(std::isnan(held[3]));
        EXPECT_EQ(held.back(), last);
    }
    [[nodiscard]] std::string Message() { return m_host.panes[StatusPane::kMessage]; }

    const testing::TemporaryFolder m_folder;
};

TEST_F(PastLink, IsLeftAndTakenUpAgain) {
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    const GraphDraw* const shown = m_board.Drawers()[0].get();
    EXPECT_TRUE(shown->Recorder().Values().empty() || shown->Recorder().Taken(0).value == nullptr);
    m_now += milliseconds(400);
    Close();
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0, 3.0));
    TakeFirstBatch({7.0});
    ExpectGap(7.0);
    EXPECT_EQ(Held("X1").size(), 3U + 99U + 1U) << "as long as the link was away";
    ExpectAllAccountedFor();
}

TEST_F(PastLink, WhatTheMasterStillSaysIsNotTaken) {
    Forget();
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 0);
    EXPECT_EQ(m_session.Values().TotalLines(), 3U);
    EXPECT_THAT(m_host.Take(), IsEmpty());
    ExpectAllAccountedFor();
}

TEST_F(PastLink, AMasterThatTellsOfItselfIsNotConnectedTo) {
    m_channel.alive.clear();
    m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
    Forget();
    PublishAnotherMaster();
    m_now += milliseconds(5000);
    m_cycle.OnMessage(kMasterHere);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_THAT(m_host.Take(), IsEmpty());
    Close();
    EXPECT_THAT(m_channel.Take(), Contains(kConnectToOther));
    TakeFirstBatch({7.0});
    ExpectGap(7.0);
}

TEST_F(PastLink, AMasterThatEndedTheLinkIsMissedAtTheEnd) {
    m_cycle.OnMessage(kLinkEnded);
    m_channel.alive.clear();
    testing::RemoveFakeSegment("MachineTools_InfoData");
    Forget();
    Close();
    EXPECT_EQ(Message(), "Master process (Dorvane) not present");
    EXPECT_TRUE(m_cycle.CanConnect());
    EXPECT_THAT(m_host.happened, Not(Contains(::testing::StartsWith("box")))) << "no box";
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0, 3.0));
    // It comes back by itself later.
    PublishAnotherMaster();
    m_now += milliseconds(5000);
    m_cycle.OnMessage(kMasterHere);
    EXPECT_THAT(m_channel.Take(), Contains(kConnectToOther));
    TakeFirstBatch({7.0});
    ExpectGap(7.0);
}

TEST_F(PastLink, AMasterThatComesAndGoesLeavesNoTrace) {
    for (int i = 0; i < 3; ++i) {
        m_cycle.OnMessage(kLinkEnded);
        m_cycle.OnMessage(kMasterHere);
        m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
        m_cycle.OnMessage(kMasterHere);
    }
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect));
    Close();
    TakeFirstBatch({7.0});
    ExpectGap(7.0);
    ExpectAllAccountedFor();
}

TEST_F(PastLink, AnotherCycleTimeBeginsTheGraphsAnew) {
    Forget();
    PublishInfo({"X1", "Y1"}, 0.002);
    Close();
    TakeFirstBatch({7.0});
    EXPECT_THAT(Held("X1"), ElementsAre(7.0));
    EXPECT_EQ(m_host.panes[StatusPane::kCycleTime], "cycl. time=0.00200s");
}

TEST_F(PastLink, TheMasterEndsTheProgramAllTheSame) {
    Forget();
    m_cycle.OnMessage(kQuitNow);
    EXPECT_THAT(m_host.Take(), ElementsAre("end process"));
}

}  // namespace
}  // namespace wavo
