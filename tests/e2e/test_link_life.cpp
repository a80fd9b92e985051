// The life of a link between two real processes: overrun, end, quit, death, restart, two viewers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QThread>

#include "expect_errors.h"
#include "heartbeat.h"
#include "link/master_info.h"
#include "master_link_of.h"
#include "real_prompts.h"
#include "view/message_pump.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kGone[] =
    "The master process (Dorvane) has gone: Machine Data > Connect when it is back";

class Link : public Viewer {
 protected:
    QAction& ConnectAction() { return *m_frame->Action(CommandId::kConnect); }

    static bool PictureShowsMoreThanOneColour(const QImage& image) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 1; x < image.width(); ++x) {
                if (image.pixel(x, y) != image.pixel(0, 0)) {
                    return true;
                }
            }
        }
        return false;
    }
};

TEST_F(Link, WithoutAMasterTheViewerStartsInSilenceAndConnectSaysSo) {
    Open({"X"});
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    EXPECT_EQ(Message(), "Master process (Dorvane) not present");
    EXPECT_THAT(View().Work().Streams().Registry().Values(), IsEmpty());
    ASSERT_TRUE(ConnectAction().isEnabled());
    ConnectAction().trigger();
    EXPECT_THAT(TakeBoxes(), ElementsAre("ERROR: Master process (Dorvane) not present."));
}

TEST_F(Link, WithoutAMasterTheGraphsAreThereAndEmpty) {
    Open({"X", "Y"});
    ASSERT_TRUE(WaitFor([this] { return View().Board().Drawers().size() == 2; }));
    EXPECT_TRUE(PictureShowsMoreThanOneColour(View().Screen().Picture()));
    m_frame->resize(900, 550);
    EXPECT_TRUE(PictureShowsMoreThanOneColour(View().Screen().Picture()));
}

TEST_F(Link, AViewerThatWasThereFirstConnectsByCommand) {
    Open({"X"});
    DemoMaster master(
        {"--motion", "circle", "--lines", "1000", "--wait-viewer", "--stay", "--cycle", "0.002"});
    ConnectAction().trigger();
    EXPECT_FALSE(ConnectAction().isEnabled());
    ASSERT_TRUE(WaitForLines(1000));
    EXPECT_THAT(Held("X"), SizeIs(1000));
    EXPECT_EQ(m_frame->PaneText(StatusPane::kCycleTime), QStringLiteral("cycl. time=0.00200s"));
}

TEST_F(Link, AnOverrunIsShownAndConnectGoesOn) {
    DemoMaster master({"--motion", "circle", "--fault", "overrun", "--fault-after", "500",
                       "--fifo-lines", "5000"});
    Open({"X"});
    ASSERT_TRUE(WaitFor([this] { return !m_boxes.empty(); }));
    EXPECT_THAT(
        TakeBoxes(),
        ElementsAre("ERROR: overrun value fifo (main -> wavo.) from master proc. detected"));
    EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
    EXPECT_TRUE(Cycle().Source().IsPresent());
    const std::uint64_t before = Cycle().TotalLines();
    EXPECT_THAT(before, Gt(0U));
    ASSERT_TRUE(ConnectAction().isEnabled());
    ConnectAction().trigger();
    ASSERT_TRUE(WaitForLines(before + 300));
    EXPECT_FALSE(ConnectAction().isEnabled());
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 1U);
}

TEST_F(Link, TheTextOfAnOverrunGoesWhenAnOpenedGraphFileBringsValuesAgain) {
    DemoMaster master({"--motion", "circle", "--fault", "overrun", "--fault-after", "500",
                       "--fifo-lines", "5000"});
    Open({"X"});
    ASSERT_TRUE(WaitForMessage("The value fifo ran over: Machine Data > Connect to go on"));
    ASSERT_TRUE(WaitFor([this] { return ConnectAction().isEnabled(); }));
    const std::uint64_t before = Cycle().TotalLines();
    const std::string file = View().Work().Files().CurrentPath();
    m_prompts.open_file = [&](QWidget*, const FileQuestion&) {
        return std::optional(QString::fromStdString(file));
    };
    {
        const ExpectAnyErrorLog expected;  // settings that the file does not hold
        m_frame->Action(CommandId::kOpen)->trigger();
    }
    m_prompts.open_file = testing::RealPrompts().open_file;
    ASSERT_TRUE(WaitForLines(before + 300));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_THAT(TakeBoxes(), SizeIs(1)) << "that of the overrun";
}

TEST_F(Link, TheMastersEndForgetsItAndKeepsTheGraphs) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(300));
    ASSERT_TRUE(master.End());
    ASSERT_TRUE(WaitForMessage("The master process (Dorvane) has ended the link"));
    EXPECT_EQ(Cycle().TotalLines(), 0U);
    EXPECT_FALSE(Cycle().Source().IsPresent());
    EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
    EXPECT_THAT(Held("X"), SizeIs(Gt(0U)));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Link, QuitEndsTheViewer) {
    DemoMaster master({"--motion", "circle", "--fault", "quit", "--fault-after", "300"});
    Open({"X"});
    QSignalSpy quit(&View().News(), &ViewNews::QuitRequested);
    ASSERT_TRUE(WaitFor([&quit] { return quit.count() == 1; }));
    EXPECT_FALSE(Cycle().Source().IsPresent());
    EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
}

TEST_F(Link, ChangedCapabilitiesAreFetchedAtTheNextLookup) {
    DemoMaster master({"--motion", "circle", "--fault", "capabilities", "--fault-after", "500",
                       "--limits", "X=-12:34:5:6"});
    Open({"X"});
    AxisLimitsSource& limits = View().Work().Source().Limits();
    ASSERT_TRUE(WaitForLines(200));
    const std::optional<AxisCapabilities> before = limits.FindAxis("X");
    ASSERT_TRUE(before);
    EXPECT_EQ(before->upper_limit, 34.0);
    EXPECT_EQ(before->lower_limit, -12.0);
    EXPECT_EQ(before->velocity_limit, 5.0);
    EXPECT_EQ(before->acceleration_limit, 6.0);
    ASSERT_TRUE(WaitForLines(1000));
    const std::optional<AxisCapabilities> after = limits.FindAxis("X");
    ASSERT_TRUE(after);
    EXPECT_NE(after->upper_limit, 34.0);
}

TEST_F(Link, AKilledMasterIsNoticedAndARestartedOneConnects) {
    Open({"X"});
    for (const char* const cycle : {"0.001", "0.001", "0.002"}) {
        DemoMaster master({"--motion", "circle", "--cycle", cycle});
        ConnectAction().trigger();
        EXPECT_THAT(TakeBoxes(), IsEmpty());
        const std::uint64_t before = Cycle().TotalLines();
        ASSERT_TRUE(WaitForLines(before + 300));
        const std::vector<double> held = Held("X");
        EXPECT_THAT(held, SizeIs(Gt(200U)));
        master.Kill();
        ASSERT_TRUE(WaitForMessage(kGone));
        EXPECT_TRUE(ConnectAction().isEnabled());
        EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
        EXPECT_THAT(Held("X"), SizeIs(Gt(200U)));
        EXPECT_TRUE(PictureShowsMoreThanOneColour(View().Screen().Picture()));
        // What the dead master left behind counts as nothing.
        ConnectAction().trigger();
        EXPECT_THAT(TakeBoxes(), ElementsAre("ERROR: Master process (Dorvane) not present."));
    }
}

TEST_F(Link, ARestartedMasterWithOtherAxesFeedsTheGraphsThatFindTheirAxis) {
    Open({"X", "Q"});
    {
        DemoMaster master({"--recording", RecordingPath("circle_xy_r50"), "--axes", "X,Y"});
        ConnectAction().trigger();
        ASSERT_TRUE(WaitForLines(200));
        EXPECT_THAT(Held("Q"), IsEmpty());
        ASSERT_TRUE(master.End());
        ASSERT_TRUE(WaitFor([this] { return !Cycle().Source().IsPresent(); }));
    }
    DemoMaster master({"--recording", RecordingPath("helix_4axis"), "--axes", "A,Z,X,Y",
                       "--wait-viewer", "--stay"});
    ConnectAction().trigger();
    ASSERT_TRUE(WaitForLines(200));
    EXPECT_EQ(Cycle().AxisNames(), (std::vector<std::string>{"A", "Z", "X", "Y"}));
    EXPECT_EQ(Held("X"), [this] {
        std::vector<double> column = ReadRecording("helix_4axis", {"X"})[0];
        column.resize(Held("X").size());
        return column;
    }());
}

TEST_F(Link, AHungMasterIsReportedAfterOneWaitForItsAnswer) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(300));
    ASSERT_EQ(Message(), "Connected to the master process (Dorvane)");
    // The next batch is announced meanwhile, and its answer meets a master that is stopped.
    QThread::msleep(100);
    master.Freeze();
    Heartbeat heart;
    ASSERT_TRUE(WaitForMessage("The master process (Dorvane) does not respond"));
    heart.ExpectOneWait();
    QTest::qWait(300);
    heart.ExpectNoFreeze();
    heart.ExpectOneWait();
    EXPECT_TRUE(Cycle().Source().IsPresent());
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    master.Thaw();
}

TEST_F(Link, TheLinkGoesOnWhenAHungMasterAnswersLate) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(100));
    // The next batch is announced meanwhile, and its answer meets a master that is stopped.
    QThread::msleep(100);
    master.Freeze();
    ASSERT_TRUE(WaitForMessage("The master process (Dorvane) does not respond"));
    const std::uint64_t before = Cycle().TotalLines();
    EXPECT_TRUE(Cycle().Source().IsPresent());
    master.Thaw();
    ASSERT_TRUE(WaitForLines(before + 500));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Link, GarbageInTheHeadersIsRefusedAndTheViewerLives) {
    DemoMaster master({"--motion", "circle", "--fault", "garbage-headers", "--fault-after", "300"});
    Open({"X"});
    ExpectAnyErrorLog expected;
    ASSERT_TRUE(WaitFor([this] { return !m_boxes.empty(); }));
    EXPECT_THAT(TakeBoxes(),
                ElementsAre("ERROR: Prg.error, input buffer for axis values to small"));
    EXPECT_TRUE(
        expected.Saw("CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() "
                     "failed"));
    EXPECT_TRUE(PictureShowsMoreThanOneColour(View().Screen().Picture()));
}

TEST_F(Link, TwoViewersOnOneMasterGetEveryLineEach) {
    DemoMaster master({"--motion", "circle", "--lines", "2000", "--wait-viewer", "--stay"});
    Open({"X"});
    CMainFrame second(testing::RealPrompts());
    second.View().OnInitialUpdate();
    ASSERT_TRUE(WaitFor([&] {
        return Cycle().TotalLines() >= 1500 && second.View().Work().Values().TotalLines() >= 1500;
    }));
    EXPECT_NE(testing::MasterLinkOf(View()).Window(),
              testing::MasterLinkOf(second.View()).Window());
    second.close();
    const std::uint64_t at_close = second.View().Work().Values().TotalLines();
    ASSERT_TRUE(WaitForLines(2000));
    EXPECT_EQ(second.View().Work().Values().TotalLines(), at_close);
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
}

/// A bare viewer side: a message window that only counts.
class CountingViewer : public MasterMessages {
 public:
    CountingViewer() {
        EXPECT_TRUE(m_pump.Open(*this));
        const Expected<std::optional<MasterInfo>> found = ReadMasterInfo(m_pump);
        EXPECT_TRUE(found && *found);
        m_info = found && *found ? **found : MasterInfo();
    }
    void Connect() { EXPECT_TRUE(m_pump.Post(m_info.master_window, ToMaster::kLink, 2)); }
    void Disconnect() {
        EXPECT_EQ(m_pump.Send(m_info.master_window, ToMaster::kLink, 1),
                  platform::SendStatus::kDone);
    }
    int announced = 0;

 private:
    // MasterMessages
    std::int64_t OnMessage(const platform::Message& message) override {
        announced += message.number == 0x52C && message.w_param == 1 ? 1 : 0;
        return 1;
    }
    void OnPeerGone(platform::WindowHandle) override {}
    void OnPeerRefused(platform::WindowHandle, const char*) override {}

    MessagePump m_pump;
    MasterInfo m_info;
};

TEST_F(Link, ConnectAndDisconnectMayComeInEitherOrder) {
    DemoMaster master({"--motion", "circle"});
    CountingViewer viewer;
    viewer.Disconnect();  // of a link that never was
    viewer.Connect();
    ASSERT_TRUE(WaitFor([&] { return viewer.announced == 1; }));
    viewer.Disconnect();
    viewer.Connect();
    viewer.Disconnect();  // sent: it can overtake the connect that was posted
    viewer.Connect();
    ASSERT_TRUE(WaitFor([&] { return viewer.announced == 2; }));
    EXPECT_TRUE(master.IsRunning());
}

}  // namespace
}  // namespace wavo::testing
