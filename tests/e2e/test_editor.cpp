// The graph editor, operated while a master sends values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>

#include "expect_errors.h"
#include "ui/controls/controls.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using enum EditorControl;
using ::testing::IsEmpty;

/// What the user does with a control: a text that is typed; a click without one.
struct Action {
    EditorControl control;
    const char* text = nullptr;
};

/// Every kind of change, one after the other, to graphs of X and Y.
constexpr Action kActions[] = {
    {kZeroLines},         {kClassic},         {kContinuity},
    {kTimeRange, "5"},    {kAllGraphs},       {kTimeRange, "20"},
    {kAllGraphs},         {kYMinimum, "-75"}, {kYMaximum, "80.5"},
    {kYAutomatic},        {kYManual},         {kDerivation, "1"},
    {kAddYAxis},          {kColor},           {kTrigger},
    {kDeleteYAxis},       {kYAxis, "Y"},      {kDerivation, "0"},
    {kAddYAxis},          {kDeleteYAxis},     {kXAxis, "Y"},
    {kXIsAxis},           {kLines},           {kPoints},
    {kXAxis, "X"},        {kXAxis, "Y"},      {kXMinimum, "-60"},
    {kYMaximum, "60"},    {kAutoCircle},      {kXAutomatic},
    {kXManual},           {kXMaximum, "70"},  {kInnerCircle, "25"},
    {kOuterCircle, "50"}, {kInnerCircle, ""}, {kFadeOutTime, "0.5"},
    {kAutoCircle},        {kXIsTime},
};
/// A graph comes and goes.
constexpr Action kActionsOfANewGraph[] = {
    {kGraphNumber, "3"}, {kYAxis, "Y"}, {kAddYAxis}, {kXTime}, {kDeleteGraph},
};

/// A record without what the drawing derives from the values.
WavoGraph WithoutFoundRanges(WavoGraph graph) {
    std::vector<ScaleDefinition*> scales{&graph.XScale};
    for (ScaleDefinition& scale : graph.YScales) {
        scales.push_back(&scale);
    }
    for (ScaleDefinition* const scale : scales) {
        if (scale->ScaleAx == ScaleAxCode::kAutomatic) {
            scale->Minimum = 0.0;
            scale->Maximum = 0.0;
        }
    }
    graph.InnerGuidingCircleDY = graph.OuterGuidingCircleDY = 0.0;
    return graph;
}

class Editing : public Viewer {
 protected:
    Editing() {
        m_prompts.color = [](QWidget*, const QColor&) { return std::optional(QColor(1, 2, 3)); };
    }

    void Do(const Action& action) {
        auto* const control =
            FindControl<QWidget>(View().Editor(), static_cast<int>(action.control));
        ASSERT_TRUE(control->isVisible() && control->isEnabled());
        if (action.text == nullptr) {
            QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(8, control->height() / 2));
            return;
        }
        auto* const combo = qobject_cast<QComboBox*>(control);
        auto* const edit = combo == nullptr ? qobject_cast<QLineEdit*>(control) : combo->lineEdit();
        edit->selectAll();
        if (*action.text == '\0') {
            QTest::keyClick(edit, Qt::Key_Backspace);
        } else {
            QApplication::clipboard()->setText(QString::fromLatin1(action.text));
            QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
        }
    }

    /// Does it, sees it drawn at once, and waits for the next values.
    void DoAndSee(const Action& action) {
        SCOPED_TRACE(std::to_string(static_cast<int>(action.control)) + " " +
                     (action.text == nullptr ? "" : action.text));
        Do(action);
        QApplication::sendPostedEvents(&View());
        const std::vector<WavoGraph> drawn = Drawn();
        const std::vector<WavoGraph>& defined = View().Work().Graphs().Graphs();
        ASSERT_EQ(drawn.size(), defined.size());
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            EXPECT_EQ(WithoutFoundRanges(drawn[i]), WithoutFoundRanges(defined[i]));
        }
        const std::uint64_t before = Cycle().TotalLines();
        ASSERT_TRUE(WaitForLines(std::min(before + 1, kLines)));
    }

    static constexpr std::uint64_t kLines = 6000;

    /// The records that are drawn.
    std::vector<WavoGraph> Drawn() {
        std::vector<WavoGraph> graphs;
        for (const auto& drawer : View().Board().Drawers()) {
            graphs.push_back(drawer->Graph());
        }
        return graphs;
    }
};

TEST_F(Editing, EveryChangeIsDrawnAtOnceAndNoLineIsLost) {
    const std::vector<std::vector<double>> recorded = ReadRecording("circle_xy_r50", {"X"});
    DemoMaster master({"--recording", RecordingPath("circle_xy_r50"), "--axes", "X,Y", "--lines",
                       QString::number(kLines), "--wait-viewer", "--stay"});
    Open({"X", "X"}, 30.0);
    m_prompts.trigger = [](QWidget*, TriggerEntry& trigger) {
        trigger.TriggerType = TriggerTypeCode::kStopAbove;
        trigger.TriggerValue = 1e7;
        return true;
    };
    ASSERT_TRUE(WaitForLines(100));
    for (const Action& action : kActions) {
        DoAndSee(action);
    }
    {
        const ExpectAnyErrorLog without_an_axis;
        for (const Action& action : kActionsOfANewGraph) {
            DoAndSee(action);
        }
        EXPECT_TRUE(without_an_axis.Saw("GraphDraw::DrawGraph(): invalid size of m_pLinesY"));
    }
    // All that was changed for good.
    ASSERT_EQ(Drawn().size(), 2U);
    EXPECT_EQ(Drawn()[0].FadeOutTime, 0.5);
    EXPECT_EQ(Drawn()[0].OuterGuidingCircleDX, 50.0);
    EXPECT_EQ(Drawn()[0].XScale.TimeRange, 20.0);
    EXPECT_FALSE(Drawn()[0].ZeroLines);
    ASSERT_TRUE(WaitForLines(kLines));
    EXPECT_EQ(Cycle().TotalLines(), kLines);
    // The second graph held the buffer of X all the time.
    EXPECT_EQ(Held("X"), std::vector<double>(recorded[0].begin(),
                                             recorded[0].begin() + std::ptrdiff_t{kLines}));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
