// The graph editor's dialogs, its messages from the view, and how it treats what is typed.
#include <QAbstractButton>
#include <QLineEdit>

#include "editor_fixture.h"
#include "ui/controls/color_field.h"
#include "ui/graph_editor/curve_palette.h"

namespace wavo {
namespace {

using enum EditorControl;
using testing::AxisGraph;
using testing::Describe;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using testing::TimeGraph;

class EditorDialogs : public testing::EditorFixture {
 protected:
    void ChooseTrigger(const TriggerEntry& chosen, bool ok = true) {
        m_prompts.trigger = [this, chosen, ok](QWidget* parent, TriggerEntry& trigger) {
            EXPECT_EQ(parent, m_editor.get());
            m_offered = trigger;
            trigger = chosen;
            return ok;
        };
    }
    void ChooseColor(std::optional<QColor> color) {
        m_prompts.color = [color](QWidget*, const QColor& initial) {
            EXPECT_EQ(initial, QColor(Qt::black));
            return color;
        };
    }

    TriggerEntry m_offered;
};

TEST_F(EditorDialogs, ATriggerGoesToItsAxis) {
    Begin({TimeGraph()});
    ChooseYAxis("X", 1);
    ChooseTrigger({TriggerTypeCode::kStartAbove, 2.5, "X"});
    Click(kTrigger);
    EXPECT_EQ(m_offered, (TriggerEntry{TriggerTypeCode::kNone, 0.0, "X"}));
    WavoGraph expected = TimeGraph();
    expected.Triggers[1] = {TriggerTypeCode::kStartAbove, 2.5, "X"};
    EXPECT_EQ(Describe(m_graphs[0]), Describe(expected));
    EXPECT_EQ(Text(kTriggerState), "defined");
    EXPECT_EQ(Text(kDerivation), "1");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
}

TEST_F(EditorDialogs, ATriggerThatIsCancelledChangesNothing) {
    Begin({TimeGraph()});
    ChooseTrigger({TriggerTypeCode::kStartAbove, 2.5, "X"}, false);
    Click(kTrigger);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, ARecordWithoutTriggerEntriesGetsOne) {
    WavoGraph graph = TimeGraph();
    graph.Triggers.clear();
    Begin({graph});
    ChooseYAxis("X", 1);
    ChooseTrigger({TriggerTypeCode::kStopBelow, 1.0, "X"});
    Click(kTrigger);
    ASSERT_EQ(m_graphs[0].Triggers.size(), 2U);
    EXPECT_EQ(m_graphs[0].Triggers[1].TriggerType, TriggerTypeCode::kStopBelow);
}

TEST_F(EditorDialogs, StartAndStopTriggersAreNotMixed) {
    const std::pair<TriggerTypeCode, TriggerTypeCode> pairs[] = {
        {TriggerTypeCode::kStartAbove, TriggerTypeCode::kStopAbove},
        {TriggerTypeCode::kStartBelow, TriggerTypeCode::kStopBelow},
        {TriggerTypeCode::kStopAbove, TriggerTypeCode::kStartBelow},
    };
    for (const auto& [there, chosen] : pairs) {
        WavoGraph graph = TimeGraph();
        graph.Triggers[2] = {there, 1.0, "Y"};
        Begin({graph});
        m_boxes.clear();
        ChooseTrigger({chosen, 2.0, "X"});
        Click(kTrigger);
        EXPECT_THAT(m_boxes, ElementsAre(Box{"It is not possible to define a start- and a "
                                             "stop-trigger in the same graph",
                                             "invalid trigger-conditions", BoxIcon::kExclamation,
                                             BoxButtons::kOk}));
        EXPECT_EQ(Describe(m_graphs[0]), Describe(graph));
        EXPECT_THAT(m_view.Take(), IsEmpty());
    }
}

TEST_F(EditorDialogs, TwoStartTriggersAreFine) {
    WavoGraph graph = TimeGraph();
    graph.Triggers[2] = {TriggerTypeCode::kStartBelow, 1.0, "Y"};
    Begin({graph});
    ChooseTrigger({TriggerTypeCode::kStartAbove, 2.0, "X"});
    Click(kTrigger);
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_EQ(m_graphs[0].Triggers[0].TriggerType, TriggerTypeCode::kStartAbove);
}

TEST_F(EditorDialogs, ATriggerOfAnAxisThatWentMeanwhileIsDropped) {
    Begin({TimeGraph()});
    m_prompts.trigger = [this](QWidget*, TriggerEntry& trigger) {
        trigger.TriggerType = TriggerTypeCode::kStartAbove;
        m_list.Replace({AxisGraph(5)});
        return true;
    };
    Click(kTrigger);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(AxisGraph(5)));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, AColorGoesToTheChosenAxis) {
    Begin({TimeGraph()});
    ChooseYAxis("Y", 0);
    ChooseColor(QColor(1, 2, 3));
    const testing::CollectReports traces(diagnostics::Service::kTrace);
    Click(kColor);
    WavoGraph expected = TimeGraph();
    expected.YCoorAxColor[2] = 0x030201;
    EXPECT_EQ(Describe(m_graphs[0]), Describe(expected));
    EXPECT_EQ(Get<ColorField>(kColor).Color(), QColor(1, 2, 3));
    EXPECT_EQ(m_editor->PickedColor(), 0x030201U);
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
    EXPECT_THAT(traces.Texts(),
                ElementsAre("CAxSelect::OnBnClickedButtonYcoorDel(): graph data erased, axis [Y]"));
}

TEST_F(EditorDialogs, AColorForAnAxisThatTheGraphDoesNotShowIsThatOfTheNextOne) {
    Begin({TimeGraph()});
    ChooseYAxis("Z", 0);
    ChooseColor(QColor(1, 2, 3));
    {
        const ExpectErrorLog expected({"CAxSelect::OnLButtonDown(): graph data not found [Z]"});
        Click(kColor);
    }
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    EXPECT_EQ(Get<ColorField>(kColor).Color(), QColor(1, 2, 3));
    EXPECT_THAT(m_view.Take(), IsEmpty());
    Click(kAddYAxis);
    EXPECT_EQ(m_graphs[0].YCoorAxColor.back(), 0x030201U);
}

TEST_F(EditorDialogs, AColorThatIsCancelledChangesNothing) {
    Begin({TimeGraph()});
    const ColorRef before = m_editor->PickedColor();
    ChooseColor(std::nullopt);
    Click(kColor);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    EXPECT_EQ(m_editor->PickedColor(), before);
}

TEST_F(EditorDialogs, TheColorOfADamagedRecordIsWhite) {
    WavoGraph graph = TimeGraph();
    graph.YCoorAxColor.clear();
    Begin({graph});
    EXPECT_EQ(Get<ColorField>(kColor).Color(), QColor(Qt::white));
}

TEST_F(EditorDialogs, TheFirstColorStandsOutFromTheBackground) {
    for (const ColorRef background : {0x000000U, 0xFFFFFFU, 0x808080U, 0xFF0000U}) {
        m_editor->SetBackground(background);
        EXPECT_EQ(m_editor->PickedColor(), FirstCurveColor(background));
    }
}

TEST_F(EditorDialogs, SavesTheValuesOfTheSelectedGraphWhileNothingRuns) {
    Begin({TimeGraph(1), TimeGraph(6)});
    EXPECT_FALSE(IsEnabled(kSaveValues));
    m_editor->SetAcquisitionRuns(false);
    ASSERT_TRUE(IsEnabled(kSaveValues));
    Type(kGraphNumber, "6");
    Click(kSaveValues);
    EXPECT_THAT(m_view.Take(), ElementsAre("592 6"));
    m_editor->SetAcquisitionRuns(true);
    EXPECT_FALSE(IsEnabled(kSaveValues));
}

TEST_F(EditorDialogs, SavingNoGraphIsExplained) {
    Begin({});
    m_editor->SetAcquisitionRuns(false);
    Click(kSaveValues);
    EXPECT_THAT(m_boxes,
                ElementsAre(Box{"Select a graph in the 'graph no.' input box", "graph not defined",
                                BoxIcon::kExclamation, BoxButtons::kOk}));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, ADeletedGraphMakesRoomForTheFirstOne) {
    Begin({TimeGraph(1), AxisGraph(2), TimeGraph(3)});
    Type(kGraphNumber, "2");
    Click(kDeleteGraph);
    ASSERT_EQ(m_graphs.size(), 2U);
    EXPECT_EQ(m_graphs[1].GraphNumber, 3U);
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("1", "3"));
    EXPECT_EQ(Text(kGraphNumber), "1");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
}

TEST_F(EditorDialogs, TheLastGraphCanBeDeleted) {
    Begin({TimeGraph(4)});
    Click(kDeleteGraph);
    EXPECT_THAT(m_graphs, IsEmpty());
    EXPECT_THAT(Entries(kGraphNumber), IsEmpty());
    EXPECT_EQ(Text(kGraphNumber), "");
    EXPECT_EQ(Text(kYAxes), "");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 4294967295"));
}

TEST_F(EditorDialogs, EscapeAndTheViewCloseIt) {
    Begin({TimeGraph()});
    EXPECT_TRUE(m_editor->IsShown());
    QTest::keyClick(&Get(kTimeRange), Qt::Key_Escape);
    EXPECT_FALSE(m_editor->IsShown());
    EXPECT_THAT(m_view.Take(), ElementsAre("590"));
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kCloseEditor, 0, 0), 1);
    EXPECT_THAT(m_view.Take(), ElementsAre("590"));
}

TEST_F(EditorDialogs, TheViewSelectsAGraph) {
    Begin({TimeGraph(1), AxisGraph(2)});
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0, 2), 1);
    EXPECT_EQ(Text(kGraphNumber), "2");
    EXPECT_TRUE(IsChecked(kXIsAxis));
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0, 9), 1);
    EXPECT_EQ(Text(kGraphNumber), "2");
    EXPECT_EQ(m_graphs.size(), 2U);
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, TheViewDoesNotSelectTheOnlyGraph) {
    Begin({TimeGraph(1)});
    Type(kGraphNumber, "");
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0, 1), 1);
    EXPECT_EQ(Text(kGraphNumber), "");
}

TEST_F(EditorDialogs, TheViewSelectsAGraphAndShowsATime) {
    Begin({TimeGraph(1)});
    Type(kGraphNumber, "");
    const GraphAndTime chosen{1, 0.12345};
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraphAndTime, 0,
                             reinterpret_cast<std::int64_t>(&chosen)),
              1);
    EXPECT_EQ(Text(kGraphNumber), "1");
    EXPECT_EQ(Text(kTimeRange), "0.123");
    EXPECT_EQ(m_graphs[0].XScale.TimeRange, 10.0);
    const GraphAndTime unknown{7, 3.0};
    EXPECT_EQ(SendAppMessage(m_editor.get(), AppMessage::kSelectGraphAndTime, 0,
                             reinterpret_cast<std::int64_t>(&unknown)),
              1);
    EXPECT_EQ(Text(kTimeRange), "0.123");
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, ATimeIsNotEditedWhileItIsThatOfAZoom) {
    Begin({TimeGraph(1), AxisGraph(2)});
    m_editor->SetZooms({{1, 0.5}});
    EXPECT_FALSE(IsEnabled(kTimeRange));
    EXPECT_FALSE(IsEnabled(kAllGraphs));
    Type(kGraphNumber, "1");
    EXPECT_FALSE(IsEnabled(kTimeRange));
    m_editor->ResetSelection();
    EXPECT_TRUE(IsEnabled(kTimeRange));
    EXPECT_TRUE(IsEnabled(kAllGraphs));
}

TEST_F(EditorDialogs, AZoomedGraphShowsTheSpanOfItsZoomUntilZoomsAreLeft) {
    Begin({TimeGraph(1), TimeGraph(2)});
    m_editor->SetZooms({{1, 0.5}});
    EXPECT_EQ(Text(kTimeRange), "0.500");
    Type(kGraphNumber, "2");
    EXPECT_EQ(Text(kTimeRange), "10.000");
    Type(kGraphNumber, "1");
    EXPECT_EQ(Text(kTimeRange), "0.500");
    Click(kZeroLines);
    EXPECT_EQ(Text(kTimeRange), "0.500");
    m_editor->SetZooms({});
    EXPECT_EQ(Text(kTimeRange), "10.000");
}

TEST_F(EditorDialogs, AClickOnTimeWhileZoomedKeepsTheTimeOfTheRecord) {
    WavoGraph second = TimeGraph(2);
    second.XScale.TimeRange = 4.0;
    Begin({TimeGraph(1), second});
    m_editor->SetZooms({{1, 0.5}});
    Click(kXTime);
    EXPECT_EQ(m_graphs[0].XScale.TimeRange, 10.0);
    EXPECT_EQ(m_graphs[1].XScale.TimeRange, 4.0);
    m_editor->SetZooms({});
    Click(kAllGraphs);
    m_editor->SetZooms({{1, 0.5}, {2, 0.5}});
    Type(kGraphNumber, "2");
    second.XScale.TimeRange = 3.0;
    m_list.Put(second);
    Click(kXTime);
    EXPECT_EQ(m_graphs[0].XScale.TimeRange, 3.0);
    EXPECT_EQ(m_graphs[1].XScale.TimeRange, 3.0);
}

TEST_F(EditorDialogs, ATimeThatIsBeingTypedStaysWhenTheGraphsAreMadeAnew) {
    Begin({TimeGraph(1)});
    TypeAndStay(kTimeRange, "5");
    m_editor->SetZooms({});  // as with every edit
    EXPECT_EQ(Text(kTimeRange), "5");
}

TEST_F(EditorDialogs, ANumberStaysAsItIsTypedUntilItIsLeft) {
    Begin({AxisGraph()});
    auto& edit = Get<QLineEdit>(kXMinimum);
    edit.setFocus();
    edit.selectAll();
    QTest::keyClicks(&edit, QStringLiteral("12.5"));
    EXPECT_EQ(Text(kXMinimum), "12.5");
    EXPECT_EQ(m_graphs[0].XScale.Minimum, 12.5);
    EXPECT_EQ(Text(kXMaximum), "52.500000");
}

TEST_F(EditorDialogs, ANumberThatWasReplacedIsShownWhenItIsLeft) {
    Begin({AxisGraph(), TimeGraph(2)});
    TypeAndStay(kXMaximum, "99");
    EXPECT_EQ(Text(kXMaximum), "99");
    Leave(kXMaximum);
    EXPECT_EQ(Text(kXMaximum), "30.000000");
    TypeAndStay(kFadeOutTime, "0");
    QTest::keyClick(&Get(kFadeOutTime), Qt::Key_Return);
    EXPECT_EQ(Text(kFadeOutTime), "1.000");
    Type(kGraphNumber, "2");
    Type(kTimeRange, "");
    EXPECT_EQ(Text(kTimeRange), "10.000");
}

struct Left {
    WavoGraph (*graph)(std::uint32_t);
    EditorControl control;
    const char* typed;
    const char* shown;  ///< when the edit is left
};

TEST_F(EditorDialogs, WhatWasNotTakenOfATextIsReplacedWhenTheEditIsLeft) {
    const auto free = [](std::uint32_t number) {
        WavoGraph graph = AxisGraph(number);
        graph.AutoCircle = false;
        return graph;
    };
    const Left cases[] = {
        {TimeGraph, kYMinimum, "-1,5", "-1.000000"},
        {TimeGraph, kYMaximum, "7 mm", "7.000000"},
        {TimeGraph, kYMaximum, "", "50.000000"},
        {TimeGraph, kYMinimum, "abc", "0.000000"},
        {TimeGraph, kYMinimum, "-1.5", "-1.5"},  // all of it was taken
        {TimeGraph, kYMinimum, "-1e1", "-1e1"},
        {TimeGraph, kYMaximum, "2e8", "100000000.000000"},
        {TimeGraph, kTimeRange, "2,5", "2.000"},
        {TimeGraph, kTimeRange, "0.0002", "0.0002"},
        {TimeGraph, kTimeRange, "0.00001", "10.000"},
        {TimeGraph, kXMaximum, "3", ""},  // nobody takes it over time
        {TimeGraph, kDerivation, "1,5", "1"},
        {TimeGraph, kDerivation, "x", "0"},
        {TimeGraph, kDerivation, "", "0"},
        {TimeGraph, kDerivation, "99", "8"},
        {free, kXMinimum, "-20,5", "-20.000000"},
        {free, kXMaximum, "", "30.000000"},
        {AxisGraph, kXMaximum, "", "30.000000"},
        {AxisGraph, kInnerCircle, "2,5", "2.000"},
        {AxisGraph, kOuterCircle, "x", "0.000"},
        {AxisGraph, kInnerCircle, "", ""},
        {AxisGraph, kFadeOutTime, "-1", "1.000"},
        {AxisGraph, kFadeOutTime, "1.0005", "1.000"},
        {AxisGraph, kFadeOutTime, "2,5", "2.000"},
        {AxisGraph, kXAxis, "Q", "Y"},
        {AxisGraph, kXAxis, "", "Y"},
    };
    for (const Left& expected : cases) {
        SCOPED_TRACE(std::to_string(static_cast<int>(expected.control)) + " " + expected.typed);
        Begin({expected.graph(1)});
        TypeAndStay(expected.control, expected.typed);
        m_view.Take();
        const std::string taken = Describe(m_graphs[0]);
        EXPECT_EQ(Text(expected.control), expected.typed);
        Leave(expected.control);
        EXPECT_EQ(Text(expected.control), expected.shown);
        EXPECT_EQ(Describe(m_graphs[0]), taken);
        EXPECT_THAT(m_view.Take(), IsEmpty());
    }
}

TEST_F(EditorDialogs, ANumberThatNoGraphTakesIsReplacedByTheOneShownBefore) {
    Begin({TimeGraph(1)});
    Type(kGraphNumber, "");
    Type(kTimeRange, "4");
    EXPECT_EQ(Text(kTimeRange), "10.000");
    EXPECT_EQ(Text(kGraphNumber), "");
    Begin({});
    Type(kTimeRange, "4");
    EXPECT_EQ(Text(kTimeRange), "10.000");
}

// A click on `manual` takes them.
TEST_F(EditorDialogs, BoundsThatWaitForManualStayAsTheyAreTyped) {
    WavoGraph x = AxisGraph(2);
    x.AutoCircle = false;
    x.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    Begin({TimeGraph(), x});
    Choose(kYAxis, "Y");
    Type(kYMinimum, "-1");
    EXPECT_EQ(Text(kYMinimum), "-1");
    Type(kYMaximum, "1,5");
    EXPECT_EQ(Text(kYMaximum), "1.000000");  // what is taken of it then
    Type(kYMaximum, "");
    EXPECT_EQ(Text(kYMaximum), "");
    Type(kGraphNumber, "2");
    Type(kXMinimum, "-2");
    Type(kXMaximum, "2,5");
    EXPECT_EQ(Text(kXMinimum), "-2");
    EXPECT_EQ(Text(kXMaximum), "2.000000");
}

TEST_F(EditorDialogs, ItsOwnWritingIsNoChange) {
    Begin({TimeGraph(1), AxisGraph(2)});
    for (int i = 0; i < 3; ++i) {
        m_editor->SetWindowData(2, 0);
        m_editor->SetWindowData(1, 2);
    }
    m_editor->SetCycleTime(0.004);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph(1)));
    EXPECT_EQ(Describe(m_graphs[1]), Describe(AxisGraph(2)));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(EditorDialogs, WorksWithoutAView) {
    CAxSelect alone(nullptr, m_prompts);
    GraphList graphs;
    graphs.Add(TimeGraph());
    alone.Init(graphs, {"X"});
    QTest::mouseClick(FindControl(alone, static_cast<int>(kZoomOut)), Qt::LeftButton);
    QTest::mouseClick(FindControl(alone, static_cast<int>(kClose)), Qt::LeftButton);
    EXPECT_FALSE(alone.IsShown());
}

}  // namespace
}  // namespace wavo
