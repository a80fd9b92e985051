// A master that hangs: the viewer says so, waits for it once, which is less than a second, and goes
// on, whatever its user does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QThread>
#include <functional>

#include "heartbeat.h"
#include "link/axis_capabilities.h"
#include "ui/controls/controls.h"
#include "ui/graph_editor/editor_controls.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using enum EditorControl;
using ::testing::Gt;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kHung[] = "The master process (Dorvane) does not respond";
constexpr char kConnected[] = "Connected to the master process (Dorvane)";

class HungMaster : public Viewer {
 protected:
    /// Stops the master that runs, `queued`: while an announced batch waits in the viewer's window.
    /// Then does `step` and looks on until the viewer says that the master hangs and a while
    /// longer. The window is never frozen, and waits once; afterwards the values go on.
    void ExpectNoFreeze(DemoMaster& master, bool queued, const std::function<void()>& step) {
        ASSERT_NO_FATAL_FAILURE(FreezeMaster(master, queued));
        Heartbeat heart;
        step();
        QCoreApplication::processEvents();
        EXPECT_TRUE(WaitForMessage(kHung)) << Message();
        QTest::qWait(300);
        heart.ExpectNoFreeze();
        heart.ExpectOneWait();
        master.Thaw();
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
        EXPECT_EQ(Message(), kConnected);
        EXPECT_THAT(TakeBoxes(), IsEmpty());
    }

    void FreezeMaster(DemoMaster& master, bool queued) {
        for (;;) {
            ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
            ASSERT_EQ(Message(), kConnected);
            if (queued) {
                QThread::msleep(100);
                master.Freeze();
                return;
            }
            master.Freeze();
            QTest::qWait(20);
            if (Message() == kConnected) {
                return;
            }
            master.Thaw();  // an answer met the stopped master: that is a hung one already
        }
    }
};

TEST_F(HungMaster, IsToldByALookupAndAskedAgainWhenItIsBack) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    AxisLimitsSource& limits = View().Work().Source().Limits();
    ASSERT_TRUE(limits.FindAxis("X"));
    master.Freeze();
    for (int i = 0; i < 50; ++i) {
        const auto found = limits.FindAxis("X");
        ASSERT_TRUE(found);
        EXPECT_EQ(found->upper_limit, 34.0);
    }
    EXPECT_EQ(Message(), kHung);
    EXPECT_TRUE(Cycle().Source().IsPresent());
    master.Thaw();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 500));
    EXPECT_EQ(Message(), kConnected);
    ASSERT_TRUE(limits.FindAxis("X"));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(HungMaster, DoesNotHoldUpTheEndOfTheViewer) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    QThread::msleep(50);
    master.Freeze();
    ASSERT_TRUE(WaitForMessage(kHung));
    const VainWaits waits;
    Close();
    EXPECT_EQ(waits.Count(), 0U) << "it waited once, which is enough";
    master.Thaw();
    // Whether it reads the viewer's last words or misses its window first.
    ASSERT_TRUE(WaitFor([&] {
        return master.Output().contains(QStringLiteral("disconnected")) ||
               master.Output().contains(QStringLiteral(" gone: "));
    }));
}

TEST_F(HungMaster, ABatchThatWaitsFreezesNothing) {
    DemoMaster master({"--motion", "circle"});
    Open({"X", "Y"});
    ASSERT_NO_FATAL_FAILURE(ExpectNoFreeze(master, true, [] {}));
}

TEST_F(HungMaster, AnAxisThatIsAddedWithTheEditorFreezesNothing) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6,Y=-1:1:1:1"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    ASSERT_TRUE(View().Work().Source().Limits().FindAxis("X"));
    View().Commands().ShowGraphEditor();
    ASSERT_NO_FATAL_FAILURE(ExpectNoFreeze(master, false, [this] {
        auto* const add = FindControl<QWidget>(View().Editor(), static_cast<int>(kAddYAxis));
        QTest::mouseClick(add, Qt::LeftButton, {}, QPoint(8, add->height() / 2));
    }));
    EXPECT_THAT(View().Work().Graphs().Graphs()[0].YCoorAxName, SizeIs(Gt(1U)));
}

TEST_F(HungMaster, ManyLookupsFreezeNothing) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    ASSERT_TRUE(View().Work().Source().Limits().FindAxis("X"));
    ASSERT_NO_FATAL_FAILURE(ExpectNoFreeze(master, false, [this] {
        for (int i = 0; i < 50; ++i) {
            EXPECT_TRUE(View().Work().Source().Limits().FindAxis("X"));
        }
    }));
}

TEST_F(HungMaster, OpeningAGraphFileFreezesNothing) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({"X"});
    std::string file = View().Work().Files().CurrentPath();
    View().Commands().Execute(CommandId::kSave);  // with the settings
    View().Commands().SetRecentFiles([file](int) { return file; });
    ASSERT_NO_FATAL_FAILURE(ExpectNoFreeze(
        master, false, [this] { View().Commands().Execute(CommandId::kRecentFile); }));
    EXPECT_THAT(View().Work().Graphs().Graphs(), SizeIs(1));
}

TEST_F(HungMaster, TheFirstBatchOfAViewerWithoutGraphsFreezesNothing) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({});
    QThread::msleep(200);  // capabilities and a first batch are announced
    master.Freeze();
    Heartbeat heart;
    ASSERT_TRUE(WaitForMessage(kHung)) << Message();
    QTest::qWait(300);
    heart.ExpectNoFreeze();
    heart.ExpectOneWait();
    master.Thaw();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_EQ(Message(), kConnected);
    EXPECT_THAT(View().Work().Graphs().Graphs(), SizeIs(1));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
