// The pane that compares with a good run, beside the real view: live, stopped, over recordings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QCoreApplication>
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
#include "ui/panes/pane_dock.h"
#include "ui/panes/reference_control.h"
#include "ui/panes/reference_pane.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A program of a machine: it waits, goes to and fro, and stands.
std::vector<double> Program(std::size_t lines, std::size_t delay, double scale = 1.0) {
    std::vector<double> values(lines, 0.0);
    for (std::size_t i = delay; i < lines; ++i) {
        const double at = static_cast<double>(i - delay) * 0.001;
        values[i] = at < 2.0 ? scale * (1.0 - std::cos(at * 6.283185307179586)) * (1.0 + at) : 0.0;
    }
    return values;
}

class ReferencePaneTest : public testing::MachineFixture {
 protected:
    ReferencePaneTest() : MachineFixture({"X", "Y", "S"}) {
        Make();
        ShowFrame();
        WavoGraph graph = OverTime(1, "X");
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = 4.0;
        graph.YScales.front().Minimum = -1.0;
        graph.YScales.front().Maximum = 9.0;
        graph.YCoorAxColor = {0x0000FF00};
        Show({graph});
    }
    ~ReferencePaneTest() override { m_control.reset(); }

    void Make() {
        m_control = std::make_unique<ReferenceControl>(*m_frame, *m_view, m_prompts, &m_settings,
                                                       QStringLiteral("Wavo 1"));
        m_control->Restore();
    }
    void Open() {
        m_control->Execute(CommandId::kReference);
        QCoreApplication::processEvents();
    }
    void Finish() {
        m_control->Watch().Finish();
        QCoreApplication::processEvents();
    }
    /// The machine runs; Y goes with X.
    void Run(const std::vector<double>& x) {
        const std::vector<double> zeros(x.size(), 0.0);
        Give({&x, &x, &zeros});
    }
    std::string Good(const char* name, const std::vector<double>& x, double cycle_time = 0.001) {
        return Recorded(name, {"X", "Y"}, cycle_time, {&x, &x});
    }
    void Choose(const std::string& path) {
        m_chosen = QString::fromStdString(path);
        Pane().ChooseRun(false);
        Finish();
    }
    [[nodiscard]] const ReferenceOutcome* Outcome() { return m_control->Watch().Outcome(); }
    [[nodiscard]] ReferencePane& Pane() { return m_control->Pane(); }
    template <typename Widget = QWidget>
    Widget& Control(ReferencePaneId id) {
        return *FindControl<Widget>(Pane(), static_cast<int>(id));
    }
    std::string Text(ReferencePaneId id) { return Control<QLabel>(id).text().toStdString(); }
    std::string State() { return Text(ReferencePaneId::kState); }
    std::string Cell(int row, int column) {
        const auto& table = Control<QTableWidget>(ReferencePaneId::kTable);
        return table.item(row, column)->text().toStdString();
    }
    /// Rows of the graph's picture in which a colour is found, in a part of its width; none: -1.
    struct Rows {
        int top = -1;
        int bottom = -1;
    };
    Rows RowsOf(QRgb color, double from, double to) {
        const QRect plot = m_view->Board().Drawers().front()->PlotArea();
        const QImage& picture = m_view->Screen().Picture();
        Rows rows;
        for (int y = plot.top(); y <= plot.bottom(); ++y) {
            for (int x = plot.left() + static_cast<int>(from * plot.width());
                 x < plot.left() + static_cast<int>(to * plot.width()); ++x) {
                if ((picture.pixel(x, y) & 0xFFFFFFU) == (color & 0xFFFFFFU)) {
                    rows.top = rows.top < 0 ? y : rows.top;
                    rows.bottom = y;
                }
            }
        }
        return rows;
    }
    /// The colour of what lies behind the curve.
    [[nodiscard]] QRgb Dimmed() {
        return m_view->Board().Drawers().front()->Lines().front()->BackStyle().color.rgb();
    }
    bool IsAnythingBehind() { return RowsOf(Dimmed(), 0.0, 1.0).top >= 0; }

    std::unique_ptr<ReferenceControl> m_control;
};

TEST_F(ReferencePaneTest, LiveItGathersAndStandingItJudges) {
    EXPECT_FALSE(m_control->Dock().IsOpen());
    Open();
    EXPECT_EQ(State(), "Choose a recording of a good run");
    EXPECT_EQ(Text(ReferencePaneId::kRuns), "no good run");
    Choose(Good("good.mcap", Program(3000, 200)));
    EXPECT_EQ(State(), "Gathering: run the program, then stop");
    EXPECT_EQ(Text(ReferencePaneId::kRuns), "good run: good.mcap");
    std::vector<double> run = Program(3500, 700);
    run[2000] += 0.03;
    Run(run);
    EXPECT_EQ(Outcome(), nullptr);
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_THAT(State(), HasSubstr("FAIL: the good run begins at 0.500 s, likeness 1.0"));
    // The graphs show X alone.
    EXPECT_THAT(Outcome()->axes, ElementsAre("X"));
    EXPECT_EQ(Outcome()->LineOf(1500), 2000);
    EXPECT_EQ(Cell(0, 0), "X");
    EXPECT_EQ(Cell(0, 1), "FAIL");
    EXPECT_EQ(Cell(0, 2), "0.030000");
    EXPECT_EQ(Cell(0, 3), "0.010000");
    EXPECT_EQ(Cell(0, 4), "2.000");
    EXPECT_EQ(Cell(0, 5), "1");
    EXPECT_EQ(Cell(0, 6), "3000");
    // A tolerance that is typed is taken at once.
    auto& tolerance = Control<QLineEdit>(ReferencePaneId::kTolerance);
    tolerance.clear();
    QTest::keyClicks(&tolerance, QStringLiteral("0.05"));
    Finish();
    EXPECT_THAT(State(), HasSubstr("pass: "));
    Control<QComboBox>(ReferencePaneId::kAxes).setCurrentIndex(1);
    Finish();
    EXPECT_THAT(Outcome()->axes, ElementsAre("X", "Y"));
    Control<QComboBox>(ReferencePaneId::kAxes).setCurrentText(QStringLiteral("Y"));
    Finish();
    EXPECT_THAT(Outcome()->axes, ElementsAre("Y"));
    Pane().Pages().setCurrentIndex(1);
    QCoreApplication::processEvents();
    EXPECT_THAT(testing::WithoutAccessibleTexts(Pane()), IsEmpty());
}

TEST_F(ReferencePaneTest, TheGoodRunLiesBehindTheCurveDimmed) {
    Open();
    std::vector<double> higher = Program(4000, 0);
    for (double& value : higher) {
        value += 2.0;
    }
    Choose(Good("good.mcap", higher));
    Run(Program(4000, 0));
    EXPECT_FALSE(IsAnythingBehind());  // nobody knows yet where it belongs
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_EQ(Outcome()->comparison.shift, 0);
    // At the end both stand still: at 0 and at 2 of a scale from -1 to 9.
    const QRect plot = m_view->Board().Drawers().front()->PlotArea();
    const auto row = [&](double value) {
        return plot.bottom() - (value + 1.0) / 10.0 * plot.height();
    };
    const Rows behind = RowsOf(Dimmed(), 0.8, 0.95);
    EXPECT_NEAR(behind.top, row(2.0), 2.0);
    EXPECT_EQ(behind.bottom, behind.top);
    const Rows curve =
        RowsOf(m_view->Board().Drawers().front()->Lines().front()->ShownColor().rgb(), 0.8, 0.95);
    EXPECT_NEAR(curve.top, row(0.0), 2.0);
    // It goes with the pane, and when it is forgotten.
    Open();
    EXPECT_FALSE(IsAnythingBehind());
    Open();
    Finish();
    EXPECT_TRUE(IsAnythingBehind());
    QTest::mouseClick(&Control(ReferencePaneId::kForget), Qt::LeftButton);
    EXPECT_FALSE(IsAnythingBehind());
    EXPECT_EQ(State(), "Choose a recording of a good run");
}

TEST_F(ReferencePaneTest, ATriggerAlignsItWhileTheMachineRuns) {
    WavoGraph graph = m_view->Work().Graphs().Graphs().front();
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 0.5, {}}};
    Show({graph});
    Open();
    Control<QComboBox>(ReferencePaneId::kAlignment).setCurrentText(QStringLiteral("trigger"));
    std::vector<double> good = Program(4000, 300);
    good[2800] = 7.0;  // long after the motion
    Choose(Good("good.mcap", good));
    std::vector<double> run = Program(6000, 1700);
    Run(run);
    EXPECT_TRUE(IsAnythingBehind());
    // 2800 of the good run is 4200 of this one, which began with the trigger at 1754 or so.
    const auto fires = std::ranges::find_if(run, [](double value) { return value > 0.5; });
    const double at = (4200.0 - static_cast<double>(fires - run.begin())) / 4000.0;
    const QRect plot = m_view->Board().Drawers().front()->PlotArea();
    EXPECT_NEAR(RowsOf(Dimmed(), at - 0.01, at + 0.01).top, plot.bottom() - 0.8 * plot.height(),
                2.0);
    // Elsewhere both are the same: the curve covers it.
    EXPECT_EQ(RowsOf(Dimmed(), at + 0.02, at + 0.1).top, -1);
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->first_line + Outcome()->comparison.shift, 1400);
    EXPECT_FALSE(Outcome()->comparison.likeness);
    EXPECT_EQ(Cell(0, 1), "FAIL");
    EXPECT_EQ(Cell(0, 4), "4.200");
}

TEST_F(ReferencePaneTest, WithoutAPlaceToAlignAtItSaysWhy) {
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    Run(Program(3000, 0));
    Stop();
    auto& alignment = Control<QComboBox>(ReferencePaneId::kAlignment);
    alignment.setCurrentText(QStringLiteral("trigger"));
    EXPECT_EQ(State(), "Not compared: No graph has a start trigger to align by");
    alignment.setCurrentText(QStringLiteral("cursor A"));
    EXPECT_EQ(State(), "Not compared: Put cursor A to where the good run begins");
    EXPECT_EQ(Outcome(), nullptr);
    EXPECT_FALSE(Control(ReferencePaneId::kSave).isEnabled());
    m_view->Cursors().Show(true);
    m_view->Cursors().PutOn(CursorName::kA, 250);
    QCoreApplication::processEvents();
    m_control->Watch().OnChanged();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->first_line + Outcome()->comparison.shift, 250);
}

TEST_F(ReferencePaneTest, WhatIsSeenOfARecordingBecomesTheGoodRun) {
    const std::string path = Good("long.mcap", Program(6000, 1000));
    Open();
    EXPECT_FALSE(Control(ReferencePaneId::kTake).isEnabled());
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    m_view->Past().Window().Show({1000, 3001});
    m_view->Cursors().Show(true);
    m_view->Cursors().PutOn(CursorName::kA, 1200);
    QCoreApplication::processEvents();
    ASSERT_TRUE(Control(ReferencePaneId::kTake).isEnabled());
    QTest::mouseClick(&Control(ReferencePaneId::kTake), Qt::LeftButton);
    Finish();
    ASSERT_EQ(m_control->Watch().Runs().size(), 1U);
    EXPECT_EQ(m_control->Watch().Runs().front()->Lines(), 2001);
    // Of the same recording it finds itself.
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->LineOf(0), 1000);
    EXPECT_THAT(State(), HasSubstr("pass: "));
    // Its mark stands at the cursor, wherever that is.
    Control<QComboBox>(ReferencePaneId::kAlignment).setCurrentText(QStringLiteral("cursor A"));
    Finish();
    EXPECT_EQ(Outcome()->LineOf(0), 1000);
    m_view->Cursors().PutOn(CursorName::kA, 1300);
    QCoreApplication::processEvents();
    m_control->Watch().OnChanged();
    Finish();
    EXPECT_EQ(Outcome()->LineOf(0), 1100);
    // The live values come back; the good run stays.
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    Finish();
    EXPECT_EQ(Outcome(), nullptr);
    EXPECT_EQ(Text(ReferencePaneId::kRuns), "good run: long.mcap");
}

TEST_F(ReferencePaneTest, TheWorstPlaceIsShownInTheGraphs) {
    std::vector<double> run = Program(6000, 1000);
    run[2500] += 0.5;
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    ASSERT_TRUE(m_view->Past().Files().Open(Good("run.mcap", run)));
    QCoreApplication::processEvents();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    auto& table = Control<QTableWidget>(ReferencePaneId::kTable);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier,
                      table.visualItemRect(table.item(0, 1)).center());
    const auto seen = [this] { return m_view->Past().Window().Window().Seen(); };
    EXPECT_EQ(seen(), (LineRange{2000, 3001}));
    // What was found out stays while its place is looked at; another window is another question.
    const auto show_anew = [this] {
        QCoreApplication::processEvents();
        m_control->Watch().OnChanged();
        Finish();
    };
    show_anew();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->run.front().size(), 6000U);
    EXPECT_EQ(Outcome()->LineOf(0), 1000);
    m_view->Past().Window().Show({1000, 4001});
    show_anew();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->run.front().size(), 3001U);
}

TEST_F(ReferencePaneTest, WithoutAToleranceNothingIsJudged) {
    auto& tolerance = Control<QLineEdit>(ReferencePaneId::kTolerance);
    auto& spread = Control<QLineEdit>(ReferencePaneId::kSpread);
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    Run(Program(3000, 0));
    Stop();
    Finish();
    EXPECT_THAT(State(), HasSubstr("pass: "));
    for (const char* const text : {"", "0", "abc", "-1"}) {
        tolerance.setText(QLatin1String(text));
        Finish();
        EXPECT_EQ(State(), "Enter a tolerance above 0") << text;
        EXPECT_EQ(Outcome(), nullptr);
        EXPECT_FALSE(Control(ReferencePaneId::kSave).isEnabled());
    }
    spread.setText(QStringLiteral("3"));
    Finish();
    EXPECT_EQ(State(), "Enter a tolerance above 0") << "one run has no spread";
    m_chosen = QString::fromStdString(Good("second.mcap", Program(3000, 50)));
    QTest::mouseClick(&Control(ReferencePaneId::kAdd), Qt::LeftButton);
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
}

TEST_F(ReferencePaneTest, TheAxisThatWasChosenStaysWithAnotherGoodRun) {
    auto& axes = Control<QComboBox>(ReferencePaneId::kAxes);
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    axes.setCurrentText(QStringLiteral("Y"));
    Choose(Good("other.mcap", Program(3000, 100)));
    EXPECT_EQ(axes.currentText().toStdString(), "Y");
    Run(Program(3000, 0));
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->axes, std::vector<std::string>{"Y"});
}

TEST_F(ReferencePaneTest, ATriggerThatFiredBeforeTheWindowAligns) {
    WavoGraph graph = m_view->Work().Graphs().Graphs().front();
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 0.5, {}}};
    Show({graph});
    Open();
    Control<QComboBox>(ReferencePaneId::kAlignment).setCurrentText(QStringLiteral("trigger"));
    Choose(Good("good.mcap", Program(4000, 300)));
    ASSERT_TRUE(m_view->Past().Files().Open(Good("run.mcap", Program(6000, 1700))));
    for (const LineRange& window : {LineRange{0, 6000}, LineRange{2000, 2300}}) {
        m_view->Past().Window().Show(window);
        QCoreApplication::processEvents();
        m_control->Watch().OnChanged();
        Finish();
        ASSERT_NE(Outcome(), nullptr) << State();
        EXPECT_EQ(Outcome()->first_line + Outcome()->comparison.shift, 1400) << window.begin;
        EXPECT_THAT(State(), HasSubstr("pass: "));
    }
}

TEST_F(ReferencePaneTest, ATriggerThatFiredIsKnownInAGraphThatIsMadeAnew) {
    WavoGraph graph = m_view->Work().Graphs().Graphs().front();
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 0.5, {}}};
    WavoGraph other = graph;
    other.GraphNumber = 2;
    other.Triggers = {{TriggerTypeCode::kStartAbove, 2.0, {}}};
    Show({graph, other});
    Open();
    Control<QComboBox>(ReferencePaneId::kAlignment).setCurrentText(QStringLiteral("trigger"));
    Choose(Good("good.mcap", Program(4000, 300)));
    Run(Program(6000, 1700));
    // While the machine runs each graph has its own trigger.
    for (const auto& drawer : m_view->Board().Drawers()) {
        const auto behind = m_control->Watch().BehindOf(*drawer);
        ASSERT_TRUE(behind);
        EXPECT_EQ(behind->shift, 1400);
    }
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    m_view->Work().RebuildGraphs();
    QCoreApplication::processEvents();
    m_control->Watch().OnChanged();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_EQ(Outcome()->first_line + Outcome()->comparison.shift, 1400);
}

TEST_F(ReferencePaneTest, SeveralGoodRunsHaveASpread) {
    Open();
    Choose(Good("first.mcap", Program(3000, 100)));
    EXPECT_FALSE(Control(ReferencePaneId::kSpread).isEnabled());
    std::vector<double> second = Program(3000, 150);
    for (double& value : second) {
        value += 0.02;
    }
    m_chosen = QString::fromStdString(Good("second.mcap", second));
    QTest::mouseClick(&Control(ReferencePaneId::kAdd), Qt::LeftButton);
    Finish();
    EXPECT_EQ(Text(ReferencePaneId::kRuns), "good runs: first.mcap, second.mcap");
    Control<QLineEdit>(ReferencePaneId::kSpread).setText(QStringLiteral("3"));
    Run(Program(3500, 300));
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr) << State();
    EXPECT_THAT(State(), HasSubstr("pass: "));
    EXPECT_NEAR(Outcome()->comparison.axes[0].band.width[1500], 3.0 * 0.02 / std::sqrt(2.0), 1e-6);
}

TEST_F(ReferencePaneTest, WhatCannotBeUsedIsTold) {
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    QFile broken(m_folder.filePath(QStringLiteral("broken.mcap")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("no recording");
    broken.close();
    Choose(broken.fileName().toStdString());
    ASSERT_EQ(m_boxes.size(), 1U);
    EXPECT_THAT(m_boxes.back(), HasSubstr("broken.mcap"));
    EXPECT_EQ(Text(ReferencePaneId::kRuns), "good run: good.mcap");  // as before
    m_chosen = QString::fromStdString(Good("slow.mcap", Program(3000, 0), 0.002));
    Pane().ChooseRun(true);
    ASSERT_EQ(m_boxes.size(), 2U);
    EXPECT_THAT(m_boxes.back(),
                HasSubstr("slow.mcap: its lines are another time apart than those of "));
    Choose(m_chosen->toStdString());
    EXPECT_EQ(State(), "The lines of the good run are another time apart");
    const std::vector<double> other = Program(100, 0);
    Choose(Recorded("others.mcap", {"A", "B"}, 0.001, {&other, &other}));
    EXPECT_EQ(State(), "The good run has none of the axes that are compared");
}

TEST_F(ReferencePaneTest, TheResultIsSavedForProgramsToo) {
    Open();
    Choose(Good("good.mcap", Program(3000, 0)));
    Run(Program(3000, 0));
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    m_chosen = m_folder.filePath(QStringLiteral("result.json"));
    QTest::mouseClick(&Control(ReferencePaneId::kSave), Qt::LeftButton);
    QFile json(*m_chosen);
    ASSERT_TRUE(json.open(QIODevice::ReadOnly));
    const QJsonObject result = QJsonDocument::fromJson(json.readAll()).object();
    EXPECT_EQ(result["schema"].toString().toStdString(), "wavo-compare/1");
    EXPECT_EQ(result["file"].toString().toStdString(), "live");
    EXPECT_EQ(result["verdict"].toString().toStdString(), "pass");
    EXPECT_EQ(result["axes"].toArray().size(), 1);
    m_chosen = m_folder.filePath(QStringLiteral("result.xml"));
    Pane().SaveResult();
    QFile xml(*m_chosen);
    ASSERT_TRUE(xml.open(QIODevice::ReadOnly));
    EXPECT_THAT(xml.readAll().toStdString(), HasSubstr("tests=\"1\" failures=\"0\" errors=\"0\""));
}

TEST_F(ReferencePaneTest, WhatIsChosenIsRemembered) {
    Control<QLineEdit>(ReferencePaneId::kTolerance).setText(QStringLiteral("0.2"));
    Control<QLineEdit>(ReferencePaneId::kSpread).setText(QStringLiteral("4"));
    Control<QComboBox>(ReferencePaneId::kAlignment).setCurrentText(QStringLiteral("trigger"));
    m_control.reset();
    Make();
    EXPECT_EQ(Control<QLineEdit>(ReferencePaneId::kTolerance).text().toStdString(), "0.2");
    EXPECT_EQ(Control<QLineEdit>(ReferencePaneId::kSpread).text().toStdString(), "4");
    EXPECT_EQ(Control<QComboBox>(ReferencePaneId::kAlignment).currentText().toStdString(),
              "trigger");
}

TEST_F(ReferencePaneTest, OverAnAxisTheWholeGoodRunLiesBehind) {
    WavoGraph graph = OverTime(2, "Y");
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.FadeOutTime = 4.0;
    for (ScaleDefinition* const scale : {&graph.XScale, &graph.YScales.front()}) {
        scale->ScaleType = ScaleTypeCode::kAxis;
        scale->ScaleAx = ScaleAxCode::kManual;
        scale->Minimum = -10.0;
        scale->Maximum = 10.0;
    }
    Show({graph});
    Open();
    Choose(Good("good.mcap", Program(3000, 0, -1.0)));
    Run(Program(1000, 0));
    EXPECT_TRUE(IsAnythingBehind());
}

}  // namespace
}  // namespace wavo
