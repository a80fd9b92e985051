// Computed axes with a master in another process, made by mouse and keys in the real window.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMenuBar>
#include <QTimer>
#include <cmath>

#include "ui/controls/controls.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "user.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using computed::ComputedAxis;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNan;

class Computed : public Viewer {
 protected:
    static WavoGraph GraphOf(const std::vector<std::string>& axes) {
        WavoGraph graph;
        graph.InitGraph(1, axes[0].c_str(), 0, nullptr);
        graph.YCoorAxName = axes;
        graph.YCoorAxColor.assign(axes.size(), 0xFFFF);
        graph.YCoorAxDerivation.assign(axes.size(), 0);
        graph.Triggers.assign(axes.size(), graph.Triggers[0]);
        graph.YScales.assign(axes.size(), graph.YScales[0]);
        graph.XScale.TimeRange = 60.0;
        return graph;
    }
    /// Opens the dialog from the menu and adds an axis by keys.
    void AddAxis(const char* name, const char* expression, const char* unit) {
        User user;
        user.Begin({[&](QWidget& top) {
            auto* const dialog = dynamic_cast<ComputedAxesDialog*>(&top);
            ASSERT_NE(dialog, nullptr);
            const auto type = [&](ComputedAxesId id, const char* text) {
                auto* const edit = FindControl<QLineEdit>(*dialog, static_cast<int>(id));
                edit->setFocus();
                edit->selectAll();
                QTest::keyClicks(edit, QString::fromLatin1(text));
            };
            QTest::mouseClick(FindControl(*dialog, static_cast<int>(ComputedAxesId::kAdd)),
                              Qt::LeftButton);
            type(ComputedAxesId::kName, name);
            type(ComputedAxesId::kExpression, expression);
            type(ComputedAxesId::kUnit, unit);
            QTest::keyClick(dialog, Qt::Key_Return);
        }});
        ClickItem(*m_frame->menuBar(), "Meas&ure", "&Computed Axes...");
        EXPECT_EQ(user.LastSeen(), "QDialog");
    }
};

TEST_F(Computed, AxesAreWhatTheRecordingSaysOfEachLine) {
    const auto played = ReadRecording("circle_xy_r50", {"X_cmd", "X", "Y"});
    const std::size_t lines = played[0].size();
    OpenWith({GraphOf({"err", "speed", "X"})});
    AddAxis("err", "X_cmd - X", "mm");
    AddAxis("speed", "sqrt(d(X)^2 + d(Y)^2)", "mm/s");
    EXPECT_THAT(View().Work().Computed().Definitions(),
                ElementsAre(ComputedAxis{"err", "X_cmd - X", "mm"},
                            ComputedAxis{"speed", "sqrt(d(X)^2 + d(Y)^2)", "mm/s"}));
    DemoMaster master({"--speed", "full", "--loop", "1", "--stay", "--recording",
                       RecordingPath("circle_xy_r50"), "--axes", "X_cmd,Y_cmd,X,Y",
                       "--wait-viewer"});
    View().Commands().Execute(CommandId::kConnect);
    ASSERT_TRUE(WaitForLines(lines));
    EXPECT_THAT(View().Work().Values().AxisNames(),
                ElementsAre("X_cmd", "Y_cmd", "X", "Y", "err", "speed"));
    const std::vector<double> err = Held("err");
    const std::vector<double> speed = Held("speed");
    ASSERT_EQ(err.size(), lines);
    ASSERT_EQ(speed.size(), lines);
    const double cycle = View().Work().Values().CycleTime();
    for (std::size_t i = 0; i < lines; ++i) {
        ASSERT_EQ(err[i], played[0][i] - played[1][i]) << i;
        const std::size_t before = i == 0 ? 0 : i - 1;
        const double vx = (played[1][i] - played[1][before]) / cycle;
        const double vy = (played[2][i] - played[2][before]) / cycle;
        ASSERT_NEAR(speed[i], std::hypot(vx, vy), 1e-9 * speed[i]) << i;
    }
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Computed, AxesChangeWhileValuesFlow) {
    DemoMaster master({"--motion", "circle", "--cycle", "0.001", "--wait-viewer", "--stay"});
    OpenWith({GraphOf({"twice", "X"})});
    ASSERT_TRUE(WaitForLines(500));
    AddAxis("twice", "X * 2", "");
    const std::uint64_t before = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(before + 500));
    View().Commands().Execute(CommandId::kStop);
    const std::vector<double> twice = Held("twice");
    const std::vector<double> x = Held("X");
    ASSERT_GE(twice.size(), 500U);
    ASSERT_GT(x.size(), twice.size()) << "X went on";
    for (std::size_t i = 0; i < twice.size(); ++i) {
        ASSERT_EQ(twice[i], 2.0 * x[x.size() - twice.size() + i]);
    }
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Computed, AMasterThatComesWithTheNameKeepsIt) {
    OpenWith({GraphOf({"Y"})});
    AddAxis("Y", "X * 0", "");
    DemoMaster master({"--motion", "circle", "--lines", "500", "--wait-viewer", "--stay"});
    View().Commands().Execute(CommandId::kConnect);
    ASSERT_TRUE(WaitForLines(500));
    EXPECT_THAT(Message(), ::testing::EndsWith(
                               "; computed axis Y: The machine has an axis with the name \"Y\""));
    const std::vector<double> y = Held("Y");
    EXPECT_GT(*std::max_element(y.begin(), y.end()), 1.0) << "the master's own";
}

}  // namespace
}  // namespace wavo::testing
