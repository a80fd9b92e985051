// The pane of the circle test beside the real view: live, stopped, over a recording.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <memory>

#include "accessible_walk.h"
#include "machine_fixture.h"
#include "measure/words.h"
#include "synthetic_machine.h"
#include "ui/controls/controls.h"
#include "ui/panes/circle_control.h"
#include "ui/panes/circle_pane.h"
#include "ui/panes/limits_dialog.h"
#include "ui/panes/pane_dock.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

WavoGraph OverAxis(std::uint32_t number, const char* x, const char* y) {
    WavoGraph graph;
    graph.InitGraph(number, y, 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = x;
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kManual;
    graph.XScale.Minimum = -25.0;
    graph.XScale.Maximum = 25.0;
    graph.YScales[0] = graph.XScale;
    graph.FadeOutTime = 30.0;
    return graph;
}

/// A machine of 20 mm circles with play and an oval; 1 kHz, 1.2 s a turn.
measure::RunData Circles(const std::vector<double>& turns = {2.0, -2.0}) {
    measure::CircleProgram program;
    program.turns = turns;
    measure::MachineErrors errors;
    errors.play_x = 0.004;
    errors.lag_y = 0.0002;
    return measure::RunCircles(program, errors);
}

class CirclePaneTest : public testing::MachineFixture {
 protected:
    CirclePaneTest() : MachineFixture({"X_cmd", "Y_cmd", "X", "Y"}) {
        Make();
        ShowFrame();
        Show({OverTime(1, "X"), OverAxis(2, "X", "Y")});
    }
    ~CirclePaneTest() override { m_control.reset(); }

    void Make() {
        m_control = std::make_unique<CircleControl>(*m_frame, *m_view, m_prompts, &m_settings,
                                                    QStringLiteral("Wavo 9.9"));
        m_control->Restore();
    }
    void Open() {
        m_control->Execute(CommandId::kCircleTest);
        QCoreApplication::processEvents();
    }
    void Give(const measure::RunData& data) {
        MachineFixture::Give({&data.x_cmd, &data.y_cmd, &data.x, &data.y});
    }
    void Finish() {
        m_control->Watch().Finish();
        QCoreApplication::processEvents();
    }
    [[nodiscard]] const CircleOutcome* Outcome() { return m_control->Watch().Outcome(); }
    [[nodiscard]] CirclePane& Pane() { return m_control->Pane(); }
    template <typename Widget = QWidget>
    Widget& Control(CirclePaneId id) {
        return *FindControl<Widget>(Pane(), static_cast<int>(id));
    }
    std::string State() { return Control<QLabel>(CirclePaneId::kState).text().toStdString(); }
    void Type(CirclePaneId id, const char* text) {
        auto& edit = Control<QLineEdit>(id);
        edit.clear();
        QTest::keyClicks(&edit, QLatin1String(text));
    }
    /// Texts of the row of a figure.
    QStringList Row(const char* symbol) {
        const auto& table = Control<QTableWidget>(CirclePaneId::kFigures);
        for (int row = 0; row < table.rowCount(); ++row) {
            if (table.item(row, 0)->text() == QLatin1String(symbol)) {
                QStringList texts;
                for (int column = 1; column < table.columnCount(); ++column) {
                    texts << table.item(row, column)->text();
                }
                return texts;
            }
        }
        return {};
    }
    /// Does `act` in the dialog that `open` shows.
    void InLimits(const std::function<void(LimitsDialog&)>& act) {
        bool was_there = false;
        QTimer::singleShot(0, &Pane(), [&] {
            auto* const dialog = dynamic_cast<LimitsDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            was_there = true;
            act(*dialog);
        });
        QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kLimits), Qt::LeftButton);
        EXPECT_TRUE(was_there);
    }
    static QTableWidget& LimitTable(LimitsDialog& dialog) {
        return *FindControl<QTableWidget>(dialog, static_cast<int>(LimitsId::kTable));
    }
    static void SetLimit(LimitsDialog& dialog, const char* symbol, const char* text) {
        QTableWidget& table = LimitTable(dialog);
        for (int row = 0; row < table.rowCount(); ++row) {
            if (table.item(row, 0)->text() == QLatin1String(symbol)) {
                table.item(row, 2)->setText(QLatin1String(text));
                return;
            }
        }
        ADD_FAILURE() << symbol;
    }
    static QPushButton& Ok(LimitsDialog& dialog) {
        return *dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
    }

    std::unique_ptr<CircleControl> m_control;
};

TEST_F(CirclePaneTest, IsClosedAtFirstAndGathersNothing) {
    EXPECT_FALSE(m_control->Dock().IsOpen());
    EXPECT_FALSE(m_control->IsChecked(CommandId::kCircleTest));
    Give(Circles());
    EXPECT_EQ(m_control->Watch().Plane(), nullptr);
    EXPECT_EQ(Outcome(), nullptr);
}

TEST_F(CirclePaneTest, LiveItTellsWhatTheWholeRunTells) {
    Open();
    EXPECT_TRUE(m_control->IsChecked(CommandId::kCircleTest));
    EXPECT_EQ(State(), "X, Y: waiting for a full turn");
    const measure::RunData data = Circles();
    Give(data);
    ASSERT_NE(Outcome(), nullptr);  // before it is stopped
    Stop();
    Finish();
    const auto whole = measure::TestCircle(data.Path());
    ASSERT_EQ(Outcome()->result.turns.size(), 2U);
    ASSERT_EQ(whole.turns.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(*Outcome()->result.turns[i].circular_error.value,
                  *whole.turns[i].circular_error.value);
        EXPECT_EQ(Outcome()->first_line +
                      static_cast<std::int64_t>(Outcome()->result.turns[i].stretch.first),
                  static_cast<std::int64_t>(whole.turns[i].stretch.first));
    }
    EXPECT_EQ(*Outcome()->result.evaluations[0].bidirectional_error.value,
              *whole.evaluations[0].bidirectional_error.value);
    EXPECT_TRUE(Outcome()->result.from_commanded);
    EXPECT_THAT(State(), HasSubstr("X, Y: ccw lines "));
    EXPECT_EQ(Row("circular error G, ccw").value(0),
              QString::fromStdString(measure::Decimals(*whole.turns[0].circular_error.value, 2)) +
                  QStringLiteral(" µm"));
}

TEST_F(CirclePaneTest, EachTurnRenewsTheFigures) {
    Open();
    std::vector<std::int64_t> ends;
    QObject::connect(&m_control->Watch(), &CircleWatch::Changed, &Pane(), [&] {
        if (Outcome() != nullptr && !Outcome()->result.turns.empty()) {
            const auto& turn = Outcome()->result.turns.back();
            const auto end = Outcome()->first_line + static_cast<std::int64_t>(turn.stretch.end);
            if (ends.empty() || end != ends.back()) {
                ends.push_back(end);
            }
        }
    });
    Give(Circles({6.0, -6.0}));
    EXPECT_GE(ends.size(), 6U);
    EXPECT_TRUE(std::ranges::is_sorted(ends));
    // No more is kept than the next evaluation needs.
    EXPECT_LT(Outcome()->columns[0].size(), 12U * 1257U);
}

TEST_F(CirclePaneTest, PairsThatFollowReplaceThoseBefore) {
    Open();
    Give(Circles({1.6, -1.6, 1.6, -1.6, 1.6, -1.6}));
    Stop();
    Finish();
    const auto whole = measure::TestCircle(Circles({1.6, -1.6, 1.6, -1.6, 1.6, -1.6}).Path());
    ASSERT_EQ(whole.evaluations.size(), 3U);
    ASSERT_FALSE(Outcome()->result.turns.empty());
    EXPECT_EQ(Outcome()->first_line +
                  static_cast<std::int64_t>(Outcome()->result.turns.back().stretch.first),
              static_cast<std::int64_t>(whole.turns.back().stretch.first));
}

TEST_F(CirclePaneTest, ALateCurveKeepsWhatItTold) {
    Open();
    measure::RunData data = Circles();
    Give(data);
    Stop();
    Finish();
    const double error = *Outcome()->result.turns[0].circular_error.value;
    m_view->Commands().Execute(CommandId::kStart);
    QCoreApplication::processEvents();
    measure::RunData still;
    still.x = still.y = still.x_cmd = still.y_cmd = std::vector<double>(9000, 1.0);
    Give(still);
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_EQ(*Outcome()->result.turns[0].circular_error.value, error);
}

TEST_F(CirclePaneTest, AStoppedGraphIsTestedByWhatItHolds) {
    WavoGraph graph = OverAxis(2, "X", "Y");
    Show({graph});
    const measure::RunData data = Circles();
    Give(data);
    Stop();
    Open();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_FALSE(Outcome()->result.from_commanded);
    const auto whole = measure::TestCircle(data.ActualOnly());
    ASSERT_EQ(Outcome()->result.turns.size(), whole.turns.size());
    EXPECT_EQ(*Outcome()->result.turns[0].circular_error.value,
              *whole.turns[0].circular_error.value);
    // Without commanded values the radius is the user's to say.
    EXPECT_EQ(Row("radial error F max, ccw").value(0).toStdString(), "not told");
    Type(CirclePaneId::kRadius, "20");
    Finish();
    EXPECT_NE(Row("radial error F max, ccw").value(0).toStdString(), "not told");
    Type(CirclePaneId::kFeed, "600");  // 6000 mm/min is what the machine runs
    Finish();
    EXPECT_THAT(Control<QLabel>(CirclePaneId::kNotes).text().toStdString(),
                HasSubstr("off the 10.00 mm/s given"));
    Type(CirclePaneId::kRadius, "twenty");
    EXPECT_EQ(Control<QLineEdit>(CirclePaneId::kRadius).accessibleDescription().toStdString(),
              "No number above 0; it is ignored");
    EXPECT_FALSE(m_control->Watch().Question().radius);
}

TEST_F(CirclePaneTest, WithoutAPlaneItSaysSo) {
    Show({OverTime(1, "X")});
    Open();
    EXPECT_EQ(State(), "No graph shows one axis over another");
    EXPECT_FALSE(Control(CirclePaneId::kReport).isEnabled());
    Give(Circles());
    EXPECT_EQ(Outcome(), nullptr);
    Show({OverAxis(3, "X", "Y")});
    EXPECT_EQ(State(), "X, Y: waiting for a full turn");
    Show({});
    EXPECT_EQ(State(), "No graph shows one axis over another");
}

TEST_F(CirclePaneTest, AnotherPlaneBeginsAnew) {
    Open();
    Give(Circles());
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    Show({OverAxis(2, "Y", "X")});
    Finish();
    EXPECT_THAT(State(), HasSubstr("Y, X: "));
    m_control->Execute(CommandId::kCircleTest);
    EXPECT_EQ(Outcome(), nullptr);
}

TEST_F(CirclePaneTest, TheWindowOfARecordingIsTested) {
    const measure::RunData data = Circles();
    const std::string path = Recorded("circle.mcap", {"X", "Y", "X_cmd", "Y_cmd"}, 0.001,
                                      {&data.x, &data.y, &data.x_cmd, &data.y_cmd});
    Open();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QCoreApplication::processEvents();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    const auto whole = measure::TestCircle(data.Path());
    EXPECT_EQ(*Outcome()->result.evaluations[0].bidirectional_error.value,
              *whole.evaluations[0].bidirectional_error.value);
    EXPECT_EQ(QDir::fromNativeSeparators(QString::fromStdString(Outcome()->data)).toStdString(),
              path);
    // A window with less than a turn.
    m_view->Past().Window().Show({0, 900});
    m_control->Watch().OnChanged();
    Finish();
    EXPECT_EQ(State(), "X, Y: no full turn was found");
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    QCoreApplication::processEvents();
    EXPECT_EQ(State(), "X, Y: waiting for a full turn");
}

TEST_F(CirclePaneTest, BehindRecordingsAStoppedTestHasTheCommandedValuesAgain) {
    const measure::RunData data = Circles();
    const measure::RunData other = Circles({1.0});
    const std::string same = Recorded("same.mcap", {"X", "Y", "X_cmd", "Y_cmd"}, 0.001,
                                      {&other.x, &other.y, &other.x_cmd, &other.y_cmd});
    const std::string more =
        Recorded("more.mcap", {"Z", "Y", "X"}, 0.001, {&other.x_cmd, &other.y, &other.x});
    Open();
    Give(data);
    Stop();
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    ASSERT_TRUE(Outcome()->result.from_commanded);
    const double before = *Outcome()->result.turns.back().circular_error.value;
    for (const std::vector<std::string>& opened :
         {std::vector{same}, std::vector{more}, std::vector{more, same}, std::vector{same, more}}) {
        for (const std::string& path : opened) {
            ASSERT_TRUE(m_view->Past().Files().Open(path));
            QCoreApplication::processEvents();
            Finish();
        }
        m_view->Past().Files().Execute(CommandId::kCloseRecording);
        QCoreApplication::processEvents();
        Finish();
        ASSERT_NE(Outcome(), nullptr) << opened.size();
        EXPECT_EQ(Outcome()->data, "live");
        EXPECT_TRUE(Outcome()->result.from_commanded);
        EXPECT_EQ(*Outcome()->result.turns.back().circular_error.value, before);
    }
}

TEST_F(CirclePaneTest, APaneThatIsClosedOverARecordingKeepsNothing) {
    const measure::RunData data = Circles();
    const std::string path =
        Recorded("other.mcap", {"Z", "Y", "X"}, 0.001, {&data.x_cmd, &data.y, &data.x});
    Open();
    Give(data);
    Stop();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QCoreApplication::processEvents();
    m_control->Watch().SetActive(false);
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    m_control->Watch().SetActive(true);
    Finish();
    ASSERT_NE(Outcome(), nullptr);
    EXPECT_FALSE(Outcome()->result.from_commanded);
}

TEST_F(CirclePaneTest, LimitsAreEditedJudgedKeptAndFiled) {
    Open();
    Give(Circles());
    Stop();
    Finish();
    m_chosen = m_folder.filePath(QStringLiteral("limits.ini"));
    InLimits([&](LimitsDialog& dialog) {
        EXPECT_THAT(testing::WithoutAccessibleTexts(dialog), IsEmpty());
        SetLimit(dialog, "G_XY ccw", "0.001");
        SetLimit(dialog, "G_XY cw", "1000");
        EXPECT_TRUE(Ok(dialog).isEnabled());
        SetLimit(dialog, "D_XY", "much");
        EXPECT_FALSE(Ok(dialog).isEnabled());
        EXPECT_EQ(
            FindControl<QLabel>(dialog, static_cast<int>(LimitsId::kFault))->text().toStdString(),
            "D_XY: a limit is a number from 0 on, or a range like -5..20");
        SetLimit(dialog, "D_XY", "");
        QTest::mouseClick(FindControl<QPushButton>(dialog, static_cast<int>(LimitsId::kSave)),
                          Qt::LeftButton);
        dialog.accept();
    });
    EXPECT_EQ(Row("circular error G, ccw").value(2).toStdString(), "FAIL");
    EXPECT_EQ(Row("circular error G, cw").value(1).toStdString(), "+-1000.00");
    EXPECT_EQ(Row("circular error G, cw").value(2).toStdString(), "pass");
    QFile file(*m_chosen);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(file.readAll().toStdString(), "[Limits]\nG_ccw = 0.001\nG_cw = 1000\n");
    InLimits([&](LimitsDialog& dialog) {
        QTest::mouseClick(FindControl<QPushButton>(dialog, static_cast<int>(LimitsId::kClear)),
                          Qt::LeftButton);
        EXPECT_FALSE(FindControl(dialog, static_cast<int>(LimitsId::kSave))->isEnabled());
        QTest::mouseClick(FindControl<QPushButton>(dialog, static_cast<int>(LimitsId::kOpen)),
                          Qt::LeftButton);
        dialog.reject();
    });
    EXPECT_EQ(Row("circular error G, ccw").value(2).toStdString(), "FAIL");  // it was cancelled
    Make();
    Open();
    Finish();
    EXPECT_EQ(Row("circular error G, ccw").value(2).toStdString(), "FAIL");
}

TEST_F(CirclePaneTest, ABadFileOfLimitsIsTold) {
    Open();
    m_chosen = m_folder.filePath(QStringLiteral("bad.ini"));
    QFile file(*m_chosen);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Limits]\nG_ccw = wide\n");
    file.close();
    const auto open = [](LimitsDialog& dialog) {
        QTest::mouseClick(FindControl<QPushButton>(dialog, static_cast<int>(LimitsId::kOpen)),
                          Qt::LeftButton);
        dialog.reject();
    };
    InLimits(open);
    EXPECT_THAT(m_boxes, ElementsAre(HasSubstr("bad.ini: line 2: a limit is a number from 0 on")));
    m_chosen = m_folder.filePath(QStringLiteral("none.ini"));
    m_boxes.clear();
    InLimits(open);
    EXPECT_THAT(m_boxes, ElementsAre(HasSubstr("Can not read ")));
}

TEST_F(CirclePaneTest, TheReportIsAPageOrJson) {
    Open();
    Give(Circles());
    Stop();
    Finish();
    Type(CirclePaneId::kMachine, "Mill 7");
    const auto save = [&](const char* name) {
        m_chosen = m_folder.filePath(QLatin1String(name));
        QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kReport), Qt::LeftButton);
        QFile file(*m_chosen);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    };
    EXPECT_TRUE(save("circle.pdf").startsWith("%PDF-"));
    const QJsonObject json = QJsonDocument::fromJson(save("circle.json")).object();
    EXPECT_EQ(json[QStringLiteral("schema")].toString().toStdString(), "wavo-circle/1");
    EXPECT_EQ(json[QStringLiteral("machine")].toString().toStdString(), "Mill 7");
    EXPECT_EQ(json[QStringLiteral("evaluations")].toArray().size(), 1);
    m_chosen = m_folder.path() + QStringLiteral("/nowhere/circle.pdf");
    QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kReport), Qt::LeftButton);
    EXPECT_THAT(m_boxes, ElementsAre(HasSubstr("Can not write ")));
}

TEST_F(CirclePaneTest, WhatIsTypedIsRemembered) {
    Open();
    Type(CirclePaneId::kRadius, "50");
    Type(CirclePaneId::kFeed, "3000");
    Type(CirclePaneId::kProgram, "O1234");
    QTest::keyClick(&Control<QLineEdit>(CirclePaneId::kProgram), Qt::Key_Return);
    Make();
    EXPECT_EQ(Control<QLineEdit>(CirclePaneId::kRadius).text().toStdString(), "50");
    EXPECT_EQ(Control<QLineEdit>(CirclePaneId::kProgram).text().toStdString(), "O1234");
    EXPECT_EQ(m_control->Watch().Question().radius, 50.0);
    EXPECT_EQ(m_control->Watch().Question().feed, 50.0);
}

TEST_F(CirclePaneTest, WhatWasTakenIsMarkedInTheGraph) {
    Give(Circles());
    Stop();
    const QImage before = m_view->grab().toImage();
    Open();
    Finish();
    const QSize size = m_view->size();
    const QImage marked = m_view->grab().toImage();
    m_control->Watch().SetActive(false);
    const QImage after = m_view->grab().toImage();
    ASSERT_EQ(m_view->size(), size);
    EXPECT_NE(marked, after);
    EXPECT_FALSE(before.isNull());
}

TEST_F(CirclePaneTest, ThePictureIsMagnifiedAsTheUserWants) {
    Open();
    Give(Circles());
    Stop();
    Finish();
    auto& polar = *Pane().findChild<QWidget*>(QStringLiteral("circle_polar"));
    const QImage chosen = polar.grab().toImage();
    QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kCoarser), Qt::LeftButton);
    const QImage coarser = polar.grab().toImage();
    EXPECT_NE(coarser, chosen);
    QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kFiner), Qt::LeftButton);
    EXPECT_EQ(polar.grab().toImage(), chosen);
    QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kFiner), Qt::LeftButton);
    QTest::mouseClick(&Control<QPushButton>(CirclePaneId::kAutomatic), Qt::LeftButton);
    EXPECT_EQ(polar.grab().toImage(), chosen);
    EXPECT_THAT(testing::WithoutAccessibleTexts(Pane()), IsEmpty());
}

}  // namespace
}  // namespace wavo
