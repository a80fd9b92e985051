// The pane of the axis test beside the real view: live and stopped, over a recording.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <cmath>

#include "accessible_walk.h"
#include "machine_fixture.h"
#include "ui/controls/controls.h"
#include "ui/panes/axis_control.h"
#include "ui/panes/axis_pane.h"
#include "ui/panes/pane_dock.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr double kLag = 0.02;  // s

/// Two axes that go to and fro at 50 mm/s, with standstill at the ends; the actual values follow a
/// first-order loop.
struct Moves {
    std::vector<double> x_cmd, y_cmd, x, y;

    explicit Moves(int count) {
        double at = 0.0;
        Rest(300, at);
        for (int move = 0; move < count; ++move) {
            const double sign = move % 2 == 0 ? 1.0 : -1.0;
            for (int i = 0; i < 1000; ++i) {
                at += sign * 0.05;
                Add(at);
            }
            Rest(600, at);
        }
    }

 private:
    void Rest(int lines, double at) {
        for (int i = 0; i < lines; ++i) {
            Add(at);
        }
    }
    void Add(double at) {
        const double before_x = x.empty() ? at : x.back();
        const double before_y = y.empty() ? 0.5 * at : y.back();
        x_cmd.push_back(at);
        y_cmd.push_back(0.5 * at);
        x.push_back(before_x + (at - before_x) * 0.001 / kLag);
        y.push_back(before_y + (0.5 * at - before_y) * 0.001 / kLag);
    }
};

class AxisPaneTest : public testing::MachineFixture {
 protected:
    AxisPaneTest() : MachineFixture({"X_cmd", "X", "Y_cmd", "Y_act", "S"}) {
        Make();
        ShowFrame();
        WavoGraph graph = OverTime(1, "X");
        graph.XScale.TimeRange = 20.0;
        Show({graph});
    }
    ~AxisPaneTest() override { m_control.reset(); }

    void Make() {
        m_control = std::make_unique<AxisControl>(*m_frame, *m_view, m_prompts, &m_settings,
                                                  QStringLiteral("Wavo 9.9"));
        m_control->Restore();
    }
    void Open() {
        m_control->Execute(CommandId::kAxisTest);
        QCoreApplication::processEvents();
    }
    void Give(const Moves& moves) {
        const std::vector<double> spindle(moves.x.size(), 1.0);
        MachineFixture::Give({&moves.x_cmd, &moves.x, &moves.y_cmd, &moves.y, &spindle});
    }
    void Finish() {
        m_control->Watch().Finish();
        QCoreApplication::processEvents();
    }
    /// Lines of four moves, gathered and evaluated.
    void Test() {
        Open();
        Give(Moves(4));
        Stop();
        Finish();
    }
    [[nodiscard]] const AxisOutcome* Outcome() { return m_control->Watch().Outcome(); }
    [[nodiscard]] AxisPane& Pane() { return m_control->Pane(); }
    template <typename Widget = QWidget>
    Widget& Control(AxisPaneId id) {
        return *FindControl<Widget>(Pane(), static_cast<int>(id));
    }
    std::string State() { return Control<QLabel>(AxisPaneId::kState).text().toStdString(); }
    std::string Value(const char* name) {
        const auto& table = Control<QTableWidget>(AxisPaneId::kFigures);
        for (int row = 0; row < table.rowCount(); ++row) {
            if (table.item(row, 0)->toolTip().contains(QLatin1String(name))) {
                return table.item(row, 1)->text().toStdString();
            }
        }
        return "no such figure";
    }

    std::unique_ptr<AxisControl> m_control;
};

TEST_F(AxisPaneTest, LiveItGathersAndStandingItTells) {
    EXPECT_FALSE(m_control->Dock().IsOpen());
    Open();
    EXPECT_EQ(State(), "Gathering: move the axes, then stop");
    const Moves moves(4);
    Give(moves);
    EXPECT_EQ(Outcome(), nullptr);
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    ASSERT_EQ(Outcome()->axes.size(), 2U);
    const auto whole = measure::TestAxis(moves.x_cmd, moves.x, 0.001);
    const measure::AxisResult& x = Outcome()->axes[0].result;
    EXPECT_EQ(*x.following.lag.value, *whole.following.lag.value);
    EXPECT_NEAR(*x.following.lag.value, kLag * 1000.0, 1.1);
    ASSERT_EQ(x.motion.moves.size(), 4U);
    EXPECT_EQ(State(), "X, Y: lines 0 to 6699");
    // Both axes are alike: the path stays on its line, but for what creeps up to its end.
    EXPECT_EQ(Outcome()->contour.size(), moves.x.size());
    EXPECT_EQ(*Outcome()->contour_figures.largest.value,
              *measure::ContourFiguresOf(std::vector<measure::ContourAxis>{{moves.x_cmd, moves.x},
                                                                           {moves.y_cmd, moves.y}},
                                         {0, moves.x.size()}, {.reach = Outcome()->contour_reach})
                   .largest.value);
    EXPECT_LT(*Outcome()->contour_figures.largest.value,
              *Outcome()->contour_figures.largest_following.value / 10.0);
    EXPECT_EQ(Control<QTableWidget>(AxisPaneId::kMoves).rowCount(), 8);
    EXPECT_EQ(Control<QTableWidget>(AxisPaneId::kMoves).item(1, 1)->text().toStdString(), "1.900");
}

TEST_F(AxisPaneTest, OneAxisAloneHasNoContour) {
    Test();
    auto& axis = Control<QComboBox>(AxisPaneId::kAxis);
    ASSERT_EQ(axis.count(), 3);
    axis.setCurrentIndex(2);
    Finish();
    ASSERT_EQ(Outcome()->axes.size(), 1U);
    EXPECT_EQ(Outcome()->axes[0].names.actual, "Y_act");
    EXPECT_TRUE(Outcome()->contour.empty());
    EXPECT_EQ(State(), "Y: lines 0 to 6699");
}

TEST_F(AxisPaneTest, DefinitionsAreChosenAndPrinted) {
    Test();
    const double settling = *Outcome()->axes[0].result.motion.moves[0].settling.value;
    auto& window = Control<QLineEdit>(AxisPaneId::kWindow);
    window.clear();
    QTest::keyClicks(&window, QStringLiteral("0.5"));
    Finish();
    EXPECT_LT(*Outcome()->axes[0].result.motion.moves[0].settling.value, settling);
    EXPECT_THAT(Control<QLabel>(AxisPaneId::kNotes).text().toStdString(),
                HasSubstr(measure::DefinitionsOf(Outcome()->setup.step)));
    auto& dwell = Control<QLineEdit>(AxisPaneId::kDwell);
    dwell.clear();
    QTest::keyClicks(&dwell, QStringLiteral("2"));
    Finish();
    EXPECT_EQ(Control<QTableWidget>(AxisPaneId::kMoves).rowCount(), 0);
    dwell.setText(QStringLiteral("-1"));
    EXPECT_EQ(dwell.accessibleDescription().toStdString(), "No number above 0; it is ignored");
}

TEST_F(AxisPaneTest, AResponseIsToldWhereItCanBe) {
    Test();
    Control<QCheckBox>(AxisPaneId::kResponse).setChecked(true);
    Finish();
    EXPECT_TRUE(Outcome()->setup.response);
    Pane().Pages().setCurrentIndex(4);
    QCoreApplication::processEvents();
    EXPECT_FALSE(Pane().grab().toImage().isNull());
    EXPECT_THAT(testing::WithoutAccessibleTexts(Pane()), IsEmpty());
}

TEST_F(AxisPaneTest, WithoutPairsItSaysSo) {
    m_source->description.axis_names = {"X", "Y", "A", "B", "C"};
    m_source->events->Described(false);
    m_source->events->ValuesBegin(false);
    Open();
    EXPECT_EQ(State(), "No axis has commanded and actual values: X_cmd beside X, X_act or X_fb");
    EXPECT_FALSE(Control(AxisPaneId::kReport).isEnabled());
}

TEST_F(AxisPaneTest, AMoveOfARecordingIsShownInTheGraphs) {
    const Moves moves(4);
    const std::string path =
        Recorded("moves.mcap", {"X_cmd", "X"}, 0.002, {&moves.x_cmd, &moves.x});
    Open();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QCoreApplication::processEvents();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    ASSERT_EQ(Outcome()->axes.size(), 1U);
    auto& table = Control<QTableWidget>(AxisPaneId::kMoves);
    ASSERT_EQ(table.rowCount(), 4);
    Pane().Pages().setCurrentIndex(1);
    QCoreApplication::processEvents();
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier,
                      table.visualItemRect(table.item(2, 2)).center());
    const LineRange seen = m_view->Past().Window().Window().Seen();
    EXPECT_LT(seen.begin, 3500);
    EXPECT_GT(seen.begin, 3300);
    EXPECT_GT(seen.end, 5000);
    EXPECT_LT(seen.end, 5200);
    EXPECT_EQ(QDir::fromNativeSeparators(QString::fromStdString(Outcome()->data)).toStdString(),
              path);
    EXPECT_EQ(Outcome()->cycle_time, 0.002);
    // Nothing of it stays when it is closed.
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    Finish();
    EXPECT_EQ(Outcome(), nullptr);
    EXPECT_EQ(State(), "Gathering: move the axes, then stop");
    EXPECT_EQ(table.rowCount(), 0);
}

TEST_F(AxisPaneTest, ARecordingOfTheSameAxesIsTestedByItsOwnCycleTime) {
    const Moves moves(2);
    const std::vector<double> spindle(moves.x.size(), 0.0);
    const std::string path =
        Recorded("slow.mcap", {"X_cmd", "X", "Y_cmd", "Y_act", "S"}, 0.004,  // as the machine's
                 {&moves.x_cmd, &moves.x, &moves.y_cmd, &moves.y, &spindle});
    Open();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QCoreApplication::processEvents();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_EQ(Outcome()->cycle_time, 0.004);
    EXPECT_NEAR(*Outcome()->axes[0].result.following.lag.value, 4.0 * kLag * 1000.0, 4.4);
    // A look at something else and back evaluates it again.
    m_view->Past().Window().Show({0, 1000});
    m_control->Watch().OnChanged();
    m_view->Past().Window().Show({0, static_cast<std::int64_t>(moves.x.size())});
    m_control->Watch().OnChanged();
    Finish();
    EXPECT_EQ(Outcome()->axes[0].actual.size(), moves.x.size());
}

TEST_F(AxisPaneTest, TheReportIsPagesOrJson) {
    Test();
    const auto save = [&](const char* name) {
        m_chosen = m_folder.filePath(QLatin1String(name));
        QTest::mouseClick(&Control<QPushButton>(AxisPaneId::kReport), Qt::LeftButton);
        QFile file(*m_chosen);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    };
    EXPECT_TRUE(save("axis.pdf").startsWith("%PDF-"));
    const QJsonObject json = QJsonDocument::fromJson(save("axis.json")).object();
    EXPECT_EQ(json[QStringLiteral("schema")].toString().toStdString(), "wavo-axis/1");
    m_chosen = m_folder.path() + QStringLiteral("/nowhere/axis.pdf");
    QTest::mouseClick(&Control<QPushButton>(AxisPaneId::kReport), Qt::LeftButton);
    EXPECT_THAT(m_boxes, ElementsAre(HasSubstr("Can not write ")));
}

TEST_F(AxisPaneTest, WhatIsTypedIsRemembered) {
    Open();
    Control<QLineEdit>(AxisPaneId::kSettled).setText(QStringLiteral("5"));
    Control<QComboBox>(AxisPaneId::kTarget).setCurrentIndex(1);
    Control<QCheckBox>(AxisPaneId::kRotary).setChecked(true);
    Make();
    EXPECT_EQ(Control<QLineEdit>(AxisPaneId::kSettled).text().toStdString(), "5");
    EXPECT_EQ(Control<QComboBox>(AxisPaneId::kTarget).currentIndex(), 1);
    EXPECT_TRUE(Control<QCheckBox>(AxisPaneId::kRotary).isChecked());
}

}  // namespace
}  // namespace wavo
