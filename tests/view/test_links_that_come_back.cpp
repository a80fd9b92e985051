// A master that tells of itself is connected to without being asked for; what the user looks at
// stays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <cmath>

#include "cycle_fixture.h"
#include "edit_graph.h"
#include "expect_errors.h"
#include "support/mini_data.h"
#include "system_facts.h"

namespace wavo {
namespace {

using std::chrono::milliseconds;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FakeMasterChannel;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kLinkEnded;
using testing::kNewValues;
using testing::kReady;

constexpr platform::Message kHere{0x530, 0, 0};
constexpr char kPostToOther[] = "post 816 52c 2";
constexpr char kReadyToOther[] = "send 816 52d 0";

class ComeBack : public testing::CycleFixture {
 protected:
    ComeBack() {
        m_source.SetComesBack(true);
        m_session.Values().SetClock([this] { return m_now; });
    }

    /// Connected, with one graph of X1 over 10 s that holds the values 1, 2, 3.
    void ShowThreeValues() {
        AddGraph("X1");
        ASSERT_TRUE(m_cycle.Connect(true));
        for (const double value : {1.0, 2.0, 3.0}) {
            m_fifo->Write(value);
        }
        ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
        Forget();
    }
    void Forget() {
        m_channel.Take();
        m_host.Take();
        m_editor.happened.clear();
    }
    /// The master dies, and another one is there after some time.
    void ReplaceMaster(milliseconds after, const std::vector<std::string>& axes = {"X1", "Y1"},
                       double cycle_time = 0.004) {
        m_channel.alive = {kOther};
        m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
        testing::RemoveFakeSegment("MValues_4711");
        m_now += after;
        PublishInfo(axes, cycle_time, 8, kOther);
    }
    /// The first batch of the other master.
    void TakeBatch(const std::vector<double>& values) {
        NewFifo();
        for (const double value : values) {
            m_fifo->Write(value);
        }
        EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    }
    [[nodiscard]] std::string Message() { return m_host.panes[StatusPane::kMessage]; }
    [[nodiscard]] std::size_t MissingIn(const std::vector<double>& values) {
        std::size_t missing = 0;
        for (const double value : values) {
            missing += std::isnan(value) ? 1 : 0;
        }
        return missing;
    }
};

TEST_F(ComeBack, AViewerWithoutAMasterConnectsToOneThatTellsOfItself) {
    testing::RemoveFakeSegment("MachineTools_InfoData");
    EXPECT_FALSE(m_cycle.Connect(true));
    PublishInfo({"X1", "Y1"});
    EXPECT_EQ(m_cycle.OnMessage(kHere), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kConnect));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_FALSE(m_cycle.CanConnect());
    EXPECT_THAT(m_editor.happened, Contains("init 0 2"));
    EXPECT_THAT(m_host.Take(), IsEmpty()) << "no box";
    m_fifo->Write(1.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
}

TEST_F(ComeBack, AViewerWithALivingMasterLooksAndIgnoresTheOther) {
    ShowThreeValues();
    PublishAnotherMaster();
    EXPECT_EQ(m_cycle.OnMessage(kHere), 1);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    m_fifo->Write(4.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0, 3.0, 4.0));
}

TEST_F(ComeBack, AMasterWhoseEndWasNotNoticedIsReplaced) {
    ShowThreeValues();
    m_channel.alive = {kOther};
    PublishInfo({"X1", "Y1"}, 0.004, 8, kOther);
    m_now += milliseconds(2000);
    EXPECT_EQ(m_cycle.OnMessage(kHere), 1);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kPostToOther));
    TakeBatch({7.0});
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReadyToOther));
}

TEST_F(ComeBack, CurvesGoOnBehindAGapAsLongAsTheClockSays) {
    ShowThreeValues();
    const GraphDraw* const drawer = m_board.Drawers()[0].get();
    ReplaceMaster(milliseconds(400));
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0, 8.0});
    // 100 lines since, of which two came.
    const std::vector<double> held = Held("X1");
    ASSERT_EQ(held.size(), 3U + 98U + 2U);
    EXPECT_EQ(MissingIn(held), 98U);
    EXPECT_EQ(held[2], 3.0);
    EXPECT_TRUE(std::isnan(held[3]));
    EXPECT_EQ(held[101], 7.0);
    EXPECT_EQ(held[102], 8.0);
    EXPECT_EQ(m_board.Drawers()[0].get(), drawer) << "nothing was made anew";
    EXPECT_THAT(m_host.Take(), ElementsAre("draw", "draw"));
    EXPECT_THAT(m_editor.happened, IsEmpty());
    EXPECT_THAT(m_channel.Take(), ElementsAre(kPostToOther, kReadyToOther));
    ExpectAllAccountedFor();
}

TEST_F(ComeBack, NothingIsJoinedHoweverShortTheGap) {
    ShowThreeValues();
    ReplaceMaster(milliseconds(0));
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    EXPECT_EQ(MissingIn(Held("X1")), 1U);
}

TEST_F(ComeBack, AGapIsAtMostAsLongAsWhatABufferHolds) {
    AddGraph("X1");
    testing::EditGraph(m_graphs, 0, [](WavoGraph& graph) { graph.XScale.TimeRange = 0.2; });
    AddGraph("Y1");
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(1.0);
    ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ReplaceMaster(std::chrono::hours(24 * 365));
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    const std::vector<double> short_one = Held("X1");
    ASSERT_EQ(short_one.size(), 50U);
    EXPECT_EQ(MissingIn(short_one), 49U);
    EXPECT_EQ(short_one.back(), 7.0);
    EXPECT_EQ(Held("Y1").size(), 2500U);
    EXPECT_EQ(MissingIn(Held("Y1")), 2499U);
}

TEST_F(ComeBack, ADerivativeAfterTheGapHasNoEarlierSample) {
    AddGraph("X1", 1);
    ASSERT_TRUE(m_cycle.Connect(true));
    m_fifo->Write(1.0);
    m_fifo->Write(2.0);
    ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ReplaceMaster(milliseconds(0));
    m_cycle.OnMessage(kHere);
    TakeBatch({900.0, 901.0});
    const std::vector<double> held = Held("X1", 1);
    ASSERT_EQ(held.size(), 5U);
    EXPECT_TRUE(std::isnan(held[2]));
    EXPECT_TRUE(std::isnan(held[3])) << "no jump";
    EXPECT_NEAR(held[4], 250.0, 1e-9);
}

TEST_F(ComeBack, WithOtherAxesOrAnotherCycleTimeAllBeginsAnew) {
    struct Row {
        std::vector<std::string> axes;
        double cycle_time;
    };
    ShowThreeValues();
    platform::WindowHandle last = FakeMasterChannel::kMaster;
    for (const Row& row : {Row{{"X1", "Z1"}, 0.004}, Row{{"X1", "Z1"}, 0.002}}) {
        m_channel.alive = {last + 1};
        m_cycle.OnPeerGone(last);
        testing::RemoveFakeSegment("MValues_4711");
        PublishInfo(row.axes, row.cycle_time, 8, ++last);
        Forget();
        m_cycle.OnMessage(kHere);
        EXPECT_THAT(m_editor.happened,
                    ElementsAre("not initialised", "reset selection", "init 1 2"));
        TakeBatch({7.0});
        EXPECT_THAT(Held("X1"), ElementsAre(7.0));
        EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", "draw"));
    }
}

TEST_F(ComeBack, TheCommandBeginsAnew) {
    ShowThreeValues();
    ReplaceMaster(milliseconds(400));
    m_cycle.ConnectByUser();
    TakeBatch({7.0});
    EXPECT_THAT(Held("X1"), ElementsAre(7.0));
    EXPECT_THAT(m_host.Take(), ElementsAre("rebuild", "draw"));
}

TEST_F(ComeBack, AfterAConnectThatFoundNobodyBuffersStillGetTheirValues) {
    ShowThreeValues();
    m_channel.alive.clear();
    m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
    m_cycle.ConnectByUser();  // shows a box
    EXPECT_THAT(m_cycle.AxisNames(), IsEmpty());
    m_session.RebuildGraphs();  // an edit meanwhile
    testing::RemoveFakeSegment("MValues_4711");
    m_now += milliseconds(5000);
    PublishAnotherMaster();
    Forget();
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    EXPECT_EQ(Held("X1").back(), 7.0);
    EXPECT_EQ(Held("X1").front(), 1.0);
}

TEST_F(ComeBack, AGraphThatItsTriggerStoppedStaysAsItStands) {
    AddGraph("X1");
    testing::EditGraph(m_graphs, 0, [](WavoGraph& graph) {
        graph.Triggers = {{TriggerTypeCode::kStopAbove, 2.5, "X1"}};
    });
    ASSERT_TRUE(m_cycle.Connect(true));
    for (const double value : {1.0, 2.0, 3.0}) {
        m_fifo->Write(value);
    }
    ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
    ASSERT_EQ(m_board.Drawers()[0]->State(), RunState::kStoppedAfterStop);
    const std::vector<double> before = Held("X1");
    ReplaceMaster(milliseconds(400));
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    EXPECT_EQ(m_board.Drawers()[0]->State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(Held("X1"), before);
}

TEST_F(ComeBack, AStoppedViewStaysAsItStandsAndAnswers) {
    ShowThreeValues();
    m_session.Run().Stop();
    ReplaceMaster(milliseconds(400));
    Forget();
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    EXPECT_THAT(Held("X1"), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(m_host.Take(), IsEmpty());
    EXPECT_THAT(m_channel.Take(), ElementsAre(kPostToOther, kReadyToOther));
    m_session.Run().Start();
    m_fifo->Write(8.0);
    m_cycle.OnMessage(kNewValues);
    EXPECT_THAT(Held("X1"), ElementsAre(8.0));
}

TEST_F(ComeBack, AMasterThatEndedTheLinkInOrderMayComeBackToo) {
    ShowThreeValues();
    m_cycle.OnMessage(kLinkEnded);
    EXPECT_EQ(m_cycle.TotalLines(), 0U);
    ReplaceMaster(milliseconds(40));
    m_cycle.OnMessage(kHere);
    TakeBatch({7.0});
    EXPECT_EQ(m_cycle.TotalLines(), 1U);
    EXPECT_EQ(MissingIn(Held("X1")), 9U);
}

TEST_F(ComeBack, WhoeverSaysSoTheViewerLooksOncePerSecond) {
    testing::RemoveFakeSegment("MachineTools_InfoData");
    EXPECT_FALSE(m_cycle.Connect(true));
    PublishInfo({"X1", "Y1"}, -1.0);  // refused, with an entry in the error log
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: the cycle time is not a positive number",
         "ReadMasterInfo(): MachineTools_InfoData refused: the cycle time is not a positive "
         "number"});
    for (int i = 0; i < 1000; ++i) {
        m_cycle.OnMessage(kHere);
        m_cycle.OnMessage({0x530, static_cast<std::uint64_t>(i), -i});
    }
    m_now += milliseconds(999);
    m_cycle.OnMessage(kHere);
    m_now += milliseconds(1);
    m_cycle.OnMessage(kHere);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(ComeBack, AMasterThatRestartsTwiceWithinASecondIsFoundEachTime) {
    ShowThreeValues();
    ReplaceMaster(milliseconds(10));
    m_cycle.OnMessage(kHere);
    m_channel.alive = {kOther + 1};
    m_cycle.OnPeerGone(kOther);
    PublishInfo({"X1", "Y1"}, 0.004, 8, kOther + 1);
    Forget();
    m_cycle.OnMessage(kHere);
    EXPECT_THAT(m_channel.Take(), ElementsAre("post 817 52c 2"));
}

TEST_F(ComeBack, AMasterThatDiesRightAfterAnotherToldOfItselfIsFoundWhenItReturns) {
    ShowThreeValues();
    m_cycle.OnMessage(kHere);  // somebody's, while ours lives
    ReplaceMaster(milliseconds(300));
    Forget();
    m_cycle.OnMessage(kHere);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kPostToOther));
}

TEST_F(ComeBack, AMasterThatEndedTheLinkRightAfterAnotherToldOfItselfIsFoundToo) {
    ShowThreeValues();
    m_cycle.OnMessage(kHere);
    m_cycle.OnMessage(kLinkEnded);
    ReplaceMaster(milliseconds(300));
    Forget();
    m_cycle.OnMessage(kHere);
    EXPECT_THAT(m_channel.Take(), ElementsAre(kPostToOther));
}

TEST_F(ComeBack, AfterALookThatFoundNobodyALinkThatIsMadeOtherwiseBeginsAnew) {
    ShowThreeValues();
    m_channel.alive.clear();
    m_cycle.OnPeerGone(FakeMasterChannel::kMaster);
    m_cycle.OnMessage(kHere);  // nobody is there
    EXPECT_FALSE(m_cycle.IsMasterKnown());
    // One that was never told of this viewer announces values all the same.
    testing::RemoveFakeSegment("MValues_4711");
    m_channel.alive.insert(FakeMasterChannel::kMaster);
    Forget();
    TakeBatch({7.0});
    EXPECT_THAT(Held("X1"), ElementsAre(7.0));
}

TEST_F(ComeBack, ItCanBeSwitchedOff) {
    m_source.SetComesBack(false);
    testing::RemoveFakeSegment("MachineTools_InfoData");
    EXPECT_FALSE(m_cycle.Connect(true));
    PublishInfo({"X1", "Y1"});
    EXPECT_EQ(m_cycle.OnMessage(kHere), 0);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(Message(), "Master process (Dorvane) not present");
}

TEST(AutoConnect, IsReadFromTheSettingsFileAlone) {
    const QTemporaryDir folder;
    qputenv(testing::kDataHome, folder.path().toLocal8Bit());
    SettingsStore settings;
    EXPECT_TRUE(settings.Read());
    EXPECT_TRUE(settings.AutoConnect()) << "a first start";
    const std::string graph_file = folder.filePath("graphs.ini").toStdString();
    for (const auto& [text, expected] : std::vector<std::pair<const char*, bool>>{
             {"0", false}, {"1", true}, {" 0 ", false}, {"no", true}, {"", true}, {"2", true}}) {
        for (const std::string& file : {settings.File(), graph_file}) {
            MIniData store;
            ASSERT_TRUE(store.Open(file));
            store.SetStringEntry("GENERAL", "AutoConnect", text);
            ASSERT_TRUE(store.Save());
        }
        SettingsStore again;
        again.Read();
        EXPECT_EQ(again.AutoConnect(), expected) << text;
        {
            MIniData store;
            ASSERT_TRUE(store.Open(settings.File()));
            store.SetStringEntry("GENERAL", "AutoConnect", "1");
            ASSERT_TRUE(store.Save());
        }
        const testing::ExpectAnyErrorLog incomplete;
        SettingsStore of_graphs;
        of_graphs.Read();
        of_graphs.ReadFrom(graph_file);
        EXPECT_TRUE(of_graphs.AutoConnect());
    }
    qunsetenv(testing::kDataHome);
}

}  // namespace
}  // namespace wavo
