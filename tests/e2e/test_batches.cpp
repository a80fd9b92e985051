// Viewer and demo_master as two real processes: every value arrives, each batch is answered once.
//
// A viewer that starts connects, and joins anew when it has opened its graph file. The master
// begins with line 0 again then, so that it may have sent more lines than the viewer was to
// receive.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>

#include "ui/shell/count_pane.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

const QStringList kFullSpeed{"--speed", "full", "--loop", "1", "--stay"};

struct Recording {
    const char* name;
    std::vector<std::string> axes;
};

class Recordings : public Viewer, public ::testing::WithParamInterface<Recording> {};

TEST_P(Recordings, ArriveInTheBuffersBitForBitAndInOrder) {
    const auto& [name, axes] = GetParam();
    QStringList names;
    for (const std::string& axis : axes) {
        names << QString::fromStdString(axis);
    }
    const std::vector<std::vector<double>> expected = ReadRecording(name, axes);
    DemoMaster master(kFullSpeed +
                      QStringList{"--recording", RecordingPath(name), "--axes", names.join(u',')});
    Open(axes, 60.0);
    ASSERT_TRUE(WaitForLines(expected.front().size()));
    for (std::size_t i = 0; i < axes.size(); ++i) {
        EXPECT_EQ(Held(axes[i]), expected[i]) << axes[i];
    }
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_GE(totals->lines_sent, expected.front().size());
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, Recordings,
                         ::testing::Values(Recording{"circle_xy_r50", {"X", "Y", "X_cmd", "Y_cmd"}},
                                           Recording{"rose_small_segments", {"X", "Y", "F"}},
                                           Recording{"drill_g81_g83_g82", {"X", "Y", "Z"}},
                                           Recording{"helix_4axis", {"X", "Y", "Z", "A"}}));

enum class Shown { kRunning, kStopped, kHidden, kMinimised };

class Answers : public Viewer, public ::testing::WithParamInterface<Shown> {};

TEST_P(Answers, EachBatchIsAnsweredExactlyOnceAndEveryLineCounted) {
    DemoMaster master({"--motion", "circle", "--lines", "3000", "--wait-viewer", "--stay"});
    Open({"X", "Y"});
    switch (GetParam()) {
        case Shown::kRunning:
            break;
        case Shown::kStopped:
            View().Commands().Execute(CommandId::kStop);
            break;
        case Shown::kHidden:
            m_frame->hide();
            break;
        case Shown::kMinimised:
            m_frame->showMinimized();
            break;
    }
    ASSERT_TRUE(WaitForLines(3000));
    EXPECT_EQ(Cycle().TotalLines(), 3000U);
    EXPECT_THAT(Held("X"), SizeIs(GetParam() == Shown::kStopped ? 0 : 3000));
    EXPECT_EQ(m_frame->PaneText(StatusPane::kTotalLines), QStringLiteral("3000"));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_GE(totals->lines_sent, 3000U);
    EXPECT_GT(totals->batches_answered, 1U);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
}

INSTANTIATE_TEST_SUITE_P(Window, Answers,
                         ::testing::Values(Shown::kRunning, Shown::kStopped, Shown::kHidden,
                                           Shown::kMinimised));

TEST_F(Viewer, TenMinutesOfLinesAtFullSpeedArriveWithoutLoss) {
    constexpr std::uint64_t kLines = 600000;
    DemoMaster master({"--motion", "circle", "--speed", "full", "--lines", "600000", "--stay"});
    Open({"X", "Y"}, 600.0);
    ASSERT_TRUE(WaitForLines(kLines, 90000));
    EXPECT_EQ(Cycle().TotalLines(), kLines);
    EXPECT_THAT(Held("X"), SizeIs(kLines));
    EXPECT_THAT(Held("Y"), SizeIs(kLines));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_GE(totals->lines_sent, kLines);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
}

TEST_F(Viewer, StoppedAndStartedAgainTheValuesSinceTheStartAreShown) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    View().Commands().Execute(CommandId::kStop);
    const std::size_t held = Held("X").size();
    const std::uint64_t total = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(total + 200));
    EXPECT_THAT(Held("X"), SizeIs(held));
    View().Commands().Execute(CommandId::kStart);
    EXPECT_THAT(Held("X"), IsEmpty());
    const std::uint64_t at_start = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(at_start + 200));
    EXPECT_THAT(Held("X"), SizeIs(Cycle().TotalLines() - at_start));
    EXPECT_EQ(m_frame->windowTitle(), QStringLiteral("graphs.ini - running"));
}

TEST_F(Viewer, WithoutGraphsTheFirstBatchBringsADefaultGraphAndLosesNoLine) {
    DemoMaster master({"--recording", RecordingPath("circle_xy_r50"), "--axes", "Y,X", "--lines",
                       "1500", "--wait-viewer", "--stay"});
    Open({});
    ASSERT_TRUE(WaitForLines(1500));
    ASSERT_THAT(View().Work().Graphs().Graphs(), SizeIs(1));
    EXPECT_EQ(View().Work().Graphs().Graphs()[0].YCoorAxName, std::vector<std::string>{"Y"});
    EXPECT_THAT(Held("Y"), SizeIs(1500));
    EXPECT_EQ(m_frame->windowTitle(), QStringLiteral("graphs.ini - running"));
}

TEST_F(Viewer, AClickOnTheCountShowsWhatBecameOfEveryLine) {
    DemoMaster master({"--motion", "circle", "--lines", "500", "--wait-viewer", "--stay"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(500));
    auto* const pane = m_frame->findChild<QWidget*>(QStringLiteral("count_pane"));
    ASSERT_NE(pane, nullptr);
    auto& count = static_cast<CountPane&>(*pane);
    EXPECT_EQ(count.DetailsText(), "");
    QTest::mouseClick(&count, Qt::LeftButton);
    ASSERT_TRUE(WaitFor([this] {
        return Cycle().Counters().batches_announced == Cycle().Counters().batches_answered;
    }));
    count.Refresh();
    const std::string batches = std::to_string(Cycle().Counters().batches_answered);
    EXPECT_EQ(count.DetailsText(),
              "Lines read\t500\nLines shown\t500\nLines read while stopped\t0\n"
              "Lines thrown away\t0\nLines left unread at a link's end\t0\nBatches announced\t" +
                  batches + "\nBatches answered\t" + batches +
                  "\nBatches whose answer was not taken\t0\n"
                  "Batches refused\t0\nBatches drained away\t0\n"
                  "Batches that could not be read\t0\n"
                  "Value fifos opened\t1\nValue fifos found damaged\t0\n"
                  "Overruns reported\t0\n");
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    EXPECT_EQ(count.DetailsText(), "");
}

TEST_F(Viewer, AResizeInTheMidstOfABatchLosesNothing) {
    DemoMaster master({"--motion", "circle", "--lines", "2000", "--wait-viewer", "--stay"});
    Open({"X"});
    int width = 400;
    ASSERT_TRUE(WaitFor([&] {
        width = width == 400 ? 900 : 400;
        m_frame->resize(width, 300);
        return Cycle().TotalLines() >= 2000;
    }));
    EXPECT_THAT(Held("X"), SizeIs(2000));
    EXPECT_EQ(View().Screen().Picture().width(), View().width());
}

}  // namespace
}  // namespace wavo::testing
