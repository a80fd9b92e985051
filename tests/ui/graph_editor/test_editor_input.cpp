// The graph editor under input that is out of the ordinary: huge numbers, the keyboard, lists that
// change beneath it.
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>

#include "editor_fixture.h"

namespace wavo {
namespace {

using enum EditorControl;
using testing::AxisGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TimeGraph;

using EditorInput = testing::EditorFixture;

TEST_F(EditorInput, AGraphOfTheHighestNumberIsEditedLikeAnyOther) {
    Begin({TimeGraph(3000000000U), TimeGraph(2)});
    Click(kZeroLines);
    EXPECT_FALSE(m_graphs[0].ZeroLines);
    EXPECT_THAT(m_view.Take(), ElementsAre("591 3000000000"));
    Type(kGraphNumber, "2");
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0, 3000000000), 1);
    EXPECT_EQ(Text(kGraphNumber), "3000000000");
    EXPECT_FALSE(IsChecked(kZeroLines));
    EXPECT_EQ(m_graphs.size(), 2U);
    Click(kDeleteGraph);
    EXPECT_EQ(m_graphs.size(), 1U);
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("2"));
}

TEST_F(EditorInput, TheNumberThatMeansNoGraphMakesNone) {
    Begin({TimeGraph(1)});
    for (const char* const text : {"4294967295", "99999999999"}) {
        Type(kGraphNumber, text);
        EXPECT_EQ(m_graphs.size(), 1U) << text;
    }
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorInput, NoControlMakesAGraphAnewThatHasGone) {
    Begin({TimeGraph(1)});
    m_list.Replace({});
    for (const EditorControl id : {kClassic, kContinuity, kXIsAxis, kZeroLines}) {
        Click(id);
        EXPECT_EQ(m_graphs.size(), 0U) << static_cast<int>(id);
    }
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorInput, ChangesArePostedAndTheRestIsSent) {
    Begin({TimeGraph(1)});
    m_editor->SetAcquisitionRuns(false);
    Click(kZoomOut);
    Click(kSaveValues);
    Click(kClose);
    EXPECT_THAT(m_view.Arrived(), ElementsAre("593 1", "592 1", "590"));
    Click(kZeroLines);
    EXPECT_THAT(m_view.Arrived(), ElementsAre("593 1", "592 1", "590"));
    EXPECT_THAT(m_view.Take(), ElementsAre("593 1", "592 1", "590", "591 1"));
}

TEST_F(EditorInput, TheTimeOfAZoomStaysWhenItsEditLosesTheKeyboard) {
    Begin({TimeGraph(1)});
    Get(kTimeRange).setFocus();
    const GraphAndTime zoom{1, 0.5};
    SendAppMessage(m_editor.get(), AppMessage::kSelectGraphAndTime, 0,
                   reinterpret_cast<std::int64_t>(&zoom));
    m_editor->SetZooms({{1, 0.5}});
    EXPECT_FALSE(Get(kTimeRange).hasFocus());
    EXPECT_EQ(Text(kTimeRange), "0.500");
}

TEST_F(EditorInput, TheArrowKeysOperateRadiosLikeAClick) {
    Begin({TimeGraph(1)});
    Get(kContinuity).setFocus();
    QTest::keyClick(&Get(kContinuity), Qt::Key_Left);
    EXPECT_TRUE(IsChecked(kClassic));
    EXPECT_EQ(m_graphs[0].Mode, GraphMode::kClassic);
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
    Get(kYManual).setFocus();
    QTest::keyClick(&Get(kYManual), Qt::Key_Up);
    EXPECT_EQ(m_graphs[0].YScales[0].ScaleAx, ScaleAxCode::kAutomatic);
}

TEST_F(EditorInput, MoreAxesThanTheirFieldHasRoomForAreInItsToolTip) {
    Begin({TimeGraph(1), AxisGraph(2)});
    EXPECT_TRUE(Get(kYAxes).toolTip().endsWith(QStringLiteral("\nX,X',Y")));
    Type(kGraphNumber, "2");
    Click(kDeleteYAxis);
    EXPECT_EQ(Get(kYAxes).toolTip(), QString::fromUtf8(FindEditorRow(kYAxes).tip));
}

TEST_F(EditorInput, AnAxisThatTheGraphDoesNotShowHasNoTrigger) {
    WavoGraph graph = TimeGraph();
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 1.0, "X"};
    Begin({graph});
    EXPECT_EQ(Text(kTriggerState), "defined");
    Type(kYAxis, "Z");
    EXPECT_EQ(Text(kTriggerState), "not defined");
    Type(kYAxis, "X");
    EXPECT_EQ(Text(kTriggerState), "defined");
}

class LeavingACombo : public testing::EditorFixture {
 protected:
    /// Types into a combo key by key.
    void TypeKeys(EditorControl id, const char* text) {
        Get(id).setFocus();
        Get<QComboBox>(id).lineEdit()->selectAll();
        QTest::keyClicks(&Get(id), QString::fromLatin1(text));
    }
};

TEST_F(LeavingACombo, AfterItsTextWasTakenTellsNothing) {
    Begin({AxisGraph(1), TimeGraph(2)});
    TypeKeys(kXAxis, "Z");
    EXPECT_EQ(m_graphs[0].XCoorAxName, "Z");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
    QTest::keyClick(&Get(kXAxis), Qt::Key_Return);
    EXPECT_THAT(m_view.Take(), IsEmpty());
    QTest::keyClick(&Get(kXAxis), Qt::Key_Tab);
    EXPECT_FALSE(Get(kXAxis).hasFocus());
    EXPECT_THAT(m_view.Take(), IsEmpty());
    TypeKeys(kXAxis, "Z");  // the same again
    EXPECT_THAT(m_view.Take(), IsEmpty());
    Leave(kXAxis);
    EXPECT_THAT(m_view.Take(), IsEmpty());
    Choose(kXAxis, "Y");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
    Get(kXAxis).setFocus();
    Leave(kXAxis);
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(LeavingACombo, ShowsNothingAnew) {
    Begin({TimeGraph(1), TimeGraph(2)});
    TypeKeys(kGraphNumber, "2");
    ChooseYAxis("Y", 0);
    Get(kGraphNumber).setFocus();
    QTest::keyClick(&Get(kGraphNumber), Qt::Key_Return);
    Leave(kGraphNumber);
    EXPECT_EQ(Text(kYAxis), "Y");
    // A bound that waits for `manual` is still there.
    Type(kYMinimum, "-3");
    TypeKeys(kYAxis, "Y");
    QTest::keyClick(&Get(kYAxis), Qt::Key_Return);
    Leave(kYAxis);
    Click(kYManual);
    EXPECT_EQ(m_graphs[1].YScales[2].Minimum, -3.0);
    EXPECT_THAT(m_view.Take(), ElementsAre("591 2"));
}

TEST_F(LeavingACombo, OfAGraphThatWasMadeMakesNoOther) {
    Begin({TimeGraph(1)});
    TypeKeys(kGraphNumber, "7");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 7"));
    QTest::keyClick(&Get(kGraphNumber), Qt::Key_Return);
    Leave(kGraphNumber);
    EXPECT_THAT(m_view.Take(), IsEmpty());
    EXPECT_EQ(m_graphs.size(), 2U);
}

}  // namespace
}  // namespace wavo
