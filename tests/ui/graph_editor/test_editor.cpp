// The graph editor between its list of graphs and the view: beginning, selecting, adding, removing,
// dialogs, messages.
#include <QAbstractButton>
#include <QLineEdit>
#include <set>

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

using GraphEditorTest = testing::EditorFixture;

TEST_F(GraphEditorTest, BeginsWithTheFirstGraphAndAnnouncesIt) {
    m_list.Replace({TimeGraph(7), AxisGraph(3)});
    EXPECT_FALSE(m_editor->IsInitialised());
    ASSERT_TRUE(m_editor->Init(m_list, {"X", "Y", "Z"}));
    EXPECT_TRUE(m_editor->IsInitialised());
    EXPECT_THAT(m_view.Take(), ElementsAre("591 7"));
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("7", "3"));
    EXPECT_THAT(Entries(kXAxis), ElementsAre("X", "Y", "Z"));
    EXPECT_THAT(Entries(kYAxis), ElementsAre("X", "Y", "Z"));
    EXPECT_EQ(Text(kGraphNumber), "7");
    EXPECT_EQ(Text(kYAxes), "X,X',Y");
    EXPECT_EQ(Text(kYAxis), "X");
    EXPECT_EQ(Text(kDerivation), "0");
    EXPECT_EQ(Text(kTimeRange), "10.000");
    EXPECT_EQ(Text(kYMinimum), "-50.000000");
    EXPECT_EQ(Text(kYMaximum), "50.000000");
    EXPECT_EQ(Text(kTriggerState), "not defined");
}

TEST_F(GraphEditorTest, BeginsAnewWithoutWhatWasThereBefore) {
    Begin({TimeGraph(1), TimeGraph(2)});
    Begin({TimeGraph(5)});
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("5"));
    EXPECT_THAT(Entries(kYAxis), ElementsAre("X", "Y", "Z"));
}

TEST_F(GraphEditorTest, AnnouncesThatThereIsNoGraph) {
    ASSERT_TRUE(m_editor->Init(m_list, {"X"}));
    EXPECT_FALSE(m_editor->IsInitialised());
    EXPECT_THAT(m_view.Take(), ElementsAre("591 4294967295"));
    EXPECT_EQ(Text(kYAxes), "");
    EXPECT_EQ(Text(kGraphNumber), "");
}

TEST_F(GraphEditorTest, DoesNothingWithoutGraphs) {
    Begin({});
    const ExpectErrorLog expected({"CAxSelect::EraseGraphData(): Graph data not found",
                                   "CAxSelect::EraseGraphData(): Graph data not found"});
    for (const EditorRow& row : EditorControls()) {
        if (row.id != kAddYAxis && row.id != kSaveValues && row.id != kClose &&
            row.kind != ControlKind::kCombo && row.kind != ControlKind::kColorField) {
            Get(row.id).setEnabled(true);
            Click(row.id);
            if (row.kind == ControlKind::kEdit) {
                TypeAndStay(row.id, "7");
            }
        }
    }
    Click(kDeleteYAxis);
    EXPECT_THAT(m_graphs, IsEmpty());
    EXPECT_THAT(m_view.Take(), IsEmpty());
    EXPECT_TRUE(IsChecked(kXIsTime));
}

TEST_F(GraphEditorTest, ShowsAnAxisGraph) {
    WavoGraph graph = AxisGraph();
    graph.InnerGuidingCircleDX = 2.0;
    graph.FadeOutTime = 2.5;
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 1.0, "X"};
    Begin({graph});
    EXPECT_TRUE(IsChecked(kXIsAxis));
    EXPECT_EQ(Text(kXAxis), "Y");
    EXPECT_TRUE(IsChecked(kXManual));
    EXPECT_EQ(Text(kXMinimum), "-10.000000");
    EXPECT_EQ(Text(kXMaximum), "30.000000");
    EXPECT_EQ(Text(kInnerCircle), "2.000");
    EXPECT_EQ(Text(kOuterCircle), "");
    EXPECT_EQ(Text(kFadeOutTime), "2.500");
    EXPECT_EQ(Text(kTriggerState), "defined");
}

struct Enabling {
    WavoGraph graph;
    std::vector<EditorControl> enabled;
    std::vector<EditorControl> disabled;
};

TEST_F(GraphEditorTest, EnablesWhatMakesSenseForTheGraph) {
    WavoGraph free = AxisGraph();
    free.AutoCircle = false;
    const Enabling cases[] = {
        {TimeGraph(),
         {kXTime, kContinuity, kClassic, kXMaximum, kYAutomatic, kYManual, kDerivation, kTimeRange,
          kAllGraphs},
         {kXAutomatic, kXManual, kLines, kPoints, kAutoCircle}},
        {AxisGraph(),
         {kXManual, kLines, kPoints, kAutoCircle, kYManual, kXMaximum, kInnerCircle, kFadeOutTime},
         {kXAutomatic, kYAutomatic, kXTime, kContinuity, kClassic, kDerivation}},
        {free,
         {kXAutomatic, kYAutomatic, kXManual, kLines, kPoints, kAutoCircle},
         {kXTime, kContinuity, kClassic, kDerivation}},
    };
    for (const Enabling& expected : cases) {
        Begin({expected.graph});
        for (const EditorControl id : expected.enabled) {
            EXPECT_TRUE(IsEnabled(id)) << static_cast<int>(id);
        }
        for (const EditorControl id : expected.disabled) {
            EXPECT_FALSE(IsEnabled(id)) << static_cast<int>(id);
        }
    }
}

TEST_F(GraphEditorTest, SwitchesTheControlsWithTheXCoordinate) {
    WavoGraph graph = TimeGraph();
    graph.YCoorAxName.resize(1);
    Begin({graph});
    Click(kXIsAxis);
    EXPECT_TRUE(IsChecked(kXManual));
    EXPECT_FALSE(IsChecked(kXTime));
    EXPECT_TRUE(IsChecked(kYManual));
    EXPECT_FALSE(IsEnabled(kXTime));
    Click(kXIsTime);
    EXPECT_TRUE(IsChecked(kXTime));
    EXPECT_TRUE(IsEnabled(kXTime));
    EXPECT_FALSE(IsChecked(kXManual));
    EXPECT_FALSE(IsChecked(kXAutomatic));
}

TEST_F(GraphEditorTest, AnAxisOnXLeavesOneYAxis) {
    Begin({TimeGraph()});
    WavoGraph expected = TimeGraph();
    expected.YCoorAxName = {"X"};
    expected.YCoorAxColor = {0x0000FF};
    expected.YCoorAxDerivation = {0};
    expected.Triggers.resize(1);
    expected.YScales.resize(1);
    expected.XCoorType = CoorType::kAxis;
    expected.XCoorAxName = "Z";
    expected.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -50.0, 50.0};
    Type(kXAxis, "Z");
    {
        const ExpectErrorLog error(
            {"CAxSelect::OnBnClickedRadioXcoorAx(): only one axis on y-coor. is allowed "
             "(x-coor.is an axis value). using first axis"});
        Click(kXIsAxis);
    }
    EXPECT_EQ(Describe(m_graphs[0]), Describe(expected));
    EXPECT_EQ(Text(kYAxes), "X");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
}

TEST_F(GraphEditorTest, ClicksThatMakeNoSenseAreUndone) {
    Begin({TimeGraph()});
    Get(kXAutomatic).setEnabled(true);
    Click(kXAutomatic);
    EXPECT_TRUE(IsChecked(kXTime));
    EXPECT_FALSE(IsChecked(kXAutomatic));
    Get(kXManual).setEnabled(true);
    Click(kXManual);
    EXPECT_TRUE(IsChecked(kXTime));
    Begin({AxisGraph()});
    Get(kXTime).setEnabled(true);
    Click(kXTime);
    EXPECT_TRUE(IsChecked(kXAutomatic));
    EXPECT_FALSE(IsChecked(kXTime));
    EXPECT_EQ(Describe(m_graphs[0]), Describe(AxisGraph()));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, BoundsThatDoNotGoUpUndoManual) {
    WavoGraph graph = AxisGraph();
    graph.AutoCircle = false;
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    Begin({graph});
    Type(kXMinimum, "5");
    Type(kXMaximum, "4");
    Click(kXManual);
    EXPECT_TRUE(IsChecked(kXAutomatic));
    Type(kYMinimum, "5");
    Type(kYMaximum, "5");
    Click(kYManual);
    EXPECT_TRUE(IsChecked(kYAutomatic));
}

TEST_F(GraphEditorTest, SelectsAGraphByItsNumber) {
    Begin({TimeGraph(1), AxisGraph(12)});
    Choose(kGraphNumber, "12");
    EXPECT_TRUE(IsChecked(kXIsAxis));
    Type(kGraphNumber, "1");
    EXPECT_TRUE(IsChecked(kXIsTime));
    EXPECT_THAT(m_view.Take(), IsEmpty());
    EXPECT_EQ(m_graphs.size(), 2U);
}

TEST_F(GraphEditorTest, NoNumberSelectsAndCreatesNothing) {
    Begin({TimeGraph(1)});
    for (const char* const text : {"0", "", "abc", "-3"}) {
        Type(kGraphNumber, text);
        EXPECT_EQ(m_graphs.size(), 1U) << text;
    }
    Click(kZeroLines);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph(1)));
    EXPECT_TRUE(IsChecked(kZeroLines));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, ANewNumberCreatesAGraphAtOnce) {
    Begin({TimeGraph(1)});
    Type(kGraphNumber, "4");
    WavoGraph expected;
    expected.InitGraph(4, nullptr, 0, nullptr);
    ASSERT_EQ(m_graphs.size(), 2U);
    EXPECT_EQ(Describe(m_graphs[1]), Describe(expected));
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("1", "4"));
    EXPECT_EQ(Text(kYAxes), "");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 4"));
}

TEST_F(GraphEditorTest, TheFirstGraphOfAnEmptyEditorIsAnnounced) {
    Begin({});
    Type(kGraphNumber, "3");
    EXPECT_THAT(m_view.Take(), ElementsAre("591 3"));
    EXPECT_TRUE(m_editor->IsInitialised());
    Click(kZeroLines);
    EXPECT_THAT(m_view.Take(), ElementsAre("591 3"));
}

TEST_F(GraphEditorTest, AddCreatesTheFirstGraph) {
    Begin({});
    Type(kYAxis, "Y");
    Click(kAddYAxis);
    ASSERT_EQ(m_graphs.size(), 1U);
    EXPECT_EQ(m_graphs[0].GraphNumber, 1U);
    EXPECT_THAT(m_graphs[0].YCoorAxName, ElementsAre("Y"));
    ASSERT_EQ(m_graphs[0].YScales.size(), 1U);
    EXPECT_THAT(Entries(kGraphNumber), ElementsAre("1"));
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1", "591 1"));
}

struct AddedScale {
    std::optional<AxisCapabilities> limits;
    int derivation;
    double minimum;
    double maximum;
    const char* minimum_text;
};

TEST_F(GraphEditorTest, AddTakesTheScaleFromTheLimitsOfTheAxis) {
    const AxisCapabilities known{400.0, -20.0, 250.0, 3000.0, 0.001};
    const AddedScale cases[] = {
        {known, 0, -20.0, 400.0, "-20.000000"},
        {known, 1, -250.0, 250.0, "-250.000000"},
        {known, 2, -3000.0, 3000.0, "-3000.000000"},
        {known, 3, -1000.0, 1000.0, "-1000.000000"},
        {AxisCapabilities{}, 1, -1000.0, 1000.0, "-1000.000000"},
        {AxisCapabilities{5e9, -6e9, 0.0, 0.0, 0.001}, 0, -1e8, 1e8, "-100000000.000000"},
        {std::nullopt, 0, -1000.0, 1000.0, "-1000.000000"},
    };
    for (const AddedScale& expected : cases) {
        Begin({TimeGraph(1)});
        m_limits.axes.clear();
        if (expected.limits.has_value()) {
            m_limits.axes["Z"] = *expected.limits;
        }
        ChooseYAxis("Z", expected.derivation);
        const testing::CollectReports traces(diagnostics::Service::kTrace);
        Click(kAddYAxis);
        ASSERT_EQ(m_graphs[0].YScales.size(), 4U);
        EXPECT_EQ(m_graphs[0].YScales[3],
                  (ScaleDefinition{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual,
                                   expected.minimum, expected.maximum}));
        EXPECT_EQ(m_graphs[0].YCoorAxDerivation[3], expected.derivation);
        EXPECT_EQ(m_graphs[0].Triggers[3], (TriggerEntry{TriggerTypeCode::kNone, 0.0, {}}));
        EXPECT_EQ(Text(kYMinimum), expected.minimum_text);
        EXPECT_THAT(m_view.Take(), ElementsAre("591 1"));
        EXPECT_THAT(traces.Texts(),
                    ElementsAre("CAxSelect::OnBnClickedButtonYcoorAdd(): graph data changed, new "
                                "y-coor. axis [Z]"));
    }
}

TEST_F(GraphEditorTest, AddRefusesWhatTheMasterDoesNotOffer) {
    Begin({TimeGraph(1)});
    ChooseYAxis("Q", 0);
    Click(kAddYAxis);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph(1)));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, AddRefusesASecondYAxisOverAnAxis) {
    Begin({AxisGraph(1)});
    Type(kYAxis, "Z");
    Click(kAddYAxis);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(AxisGraph(1)));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, AddTakesColorsThatDifferFromEachOtherAndFromTheBackground) {
    Begin({});
    for (int i = 0; i < 6; ++i) {
        ChooseYAxis("X", 0);
        Click(kAddYAxis);
    }
    ASSERT_EQ(m_graphs.size(), 1U);
    const std::vector<ColorRef>& colors = m_graphs[0].YCoorAxColor;
    EXPECT_EQ(std::set<ColorRef>(colors.begin(), colors.end()).size(), 6U);
    EXPECT_EQ(colors[0], FirstCurveColor(0));
}

TEST_F(GraphEditorTest, AddAfterTheLastAxisWasRemovedMakesTheFirstOne) {
    Begin({AxisGraph(1)});
    Click(kDeleteYAxis);
    EXPECT_THAT(m_graphs[0].YScales, IsEmpty());
    EXPECT_EQ(Text(kYAxes), "");
    Type(kYAxis, "Z");
    Click(kAddYAxis);
    EXPECT_THAT(m_graphs[0].YCoorAxName, ElementsAre("Z"));
    EXPECT_EQ(m_graphs[0].YScales.size(), 1U);
    EXPECT_EQ(Text(kYAxes), "Z");
}

TEST_F(GraphEditorTest, RemovingAnAxisOfADamagedRecordIsReported) {
    WavoGraph graph = TimeGraph();
    graph.YCoorAxColor.clear();
    graph.YCoorAxDerivation.clear();
    Begin({graph});
    ChooseYAxis("Y", 0);
    const ExpectErrorLog expected(
        {"CAxSelect::EraseGraphData(): size of GraphData.YCoorAxColor not valid",
         "CAxSelect::EraseGraphData(): size of GraphData.Derivation not valid"});
    Click(kDeleteYAxis);
    EXPECT_THAT(m_graphs[0].YCoorAxName, ElementsAre("X", "X"));
    EXPECT_EQ(m_graphs[0].YScales.size(), 2U);
}

TEST_F(GraphEditorTest, AnotherYAxisIsLookedAtWithoutAChange) {
    Begin({TimeGraph()});
    Choose(kYAxis, "Y");
    EXPECT_EQ(Text(kYMinimum), "");
    EXPECT_TRUE(IsChecked(kYAutomatic));
    Type(kYAxis, "X");
    Type(kDerivation, "1");
    EXPECT_EQ(Text(kYMinimum), "-200.000000");
    EXPECT_EQ(Get<ColorField>(kColor).Color(), QColor(0, 255, 0));
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, AutomaticWithoutAYAxisIsReported) {
    Begin({TimeGraph()});
    ChooseYAxis("Z", 0);
    const ExpectErrorLog expected(
        {"CAxSelect::OnBnClickedRadioYScaleAuto(): invalid y-coor. scale type"});
    Click(kYAutomatic);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    EXPECT_THAT(m_view.Take(), IsEmpty());
}

TEST_F(GraphEditorTest, AScaleOfNoTypeIsReported) {
    WavoGraph graph = TimeGraph();
    graph.XScale.ScaleType = static_cast<ScaleTypeCode>(3);
    const ExpectErrorLog expected({"CAxSelect::DisplayScaleAx(): invalid scale type"});
    Begin({graph});
    EXPECT_FALSE(IsChecked(kXTime));
}

TEST_F(GraphEditorTest, AGraphThatIsNotThereIsReported) {
    Begin({TimeGraph(1)});
    EXPECT_TRUE(m_editor->SetWindowData(1, 2));
    EXPECT_EQ(Text(kYAxis), "Y");
    const ExpectErrorLog expected({"CAxSelect::SetWindowData(): unknow graph-id: 9"});
    EXPECT_FALSE(m_editor->SetWindowData(9, 0));
}

TEST_F(GraphEditorTest, TheTimeIsAppliedToAllGraphs) {
    WavoGraph damaged = TimeGraph(2);
    damaged.AutoCircle = false;
    Begin({TimeGraph(1), damaged, AxisGraph(3)});
    Click(kAllGraphs);
    Type(kTimeRange, "4");
    for (const WavoGraph& graph : m_graphs) {
        EXPECT_EQ(graph.XScale.ScaleType, ScaleTypeCode::kTime);
        EXPECT_EQ(graph.XScale.TimeRange, 4.0);
    }
    EXPECT_THAT(m_view.Take(), ElementsAre("591 1", "591 1"));
}

TEST_F(GraphEditorTest, TheTimeIsForTheSelectedGraphElse) {
    Begin({TimeGraph(1), TimeGraph(2)});
    Type(kTimeRange, "4");
    EXPECT_EQ(m_graphs[0].XScale.TimeRange, 4.0);
    EXPECT_EQ(m_graphs[1].XScale.TimeRange, 10.0);
}

TEST_F(GraphEditorTest, OfAnAxisThatIsThereTwiceTheOneAddedLastIsShownAndChanged) {
    Begin({TimeGraph()});
    ChooseYAxis("X", 0);
    Click(kAddYAxis);
    EXPECT_EQ(Text(kYAxes), "X,X',Y,X");
    EXPECT_EQ(Text(kYMinimum), "-1000.000000");
    Type(kYMinimum, "-7");
    EXPECT_EQ(m_graphs[0].YScales[3].Minimum, -7.0);
    EXPECT_EQ(m_graphs[0].YScales[0].Minimum, -50.0);
    Click(kYAutomatic);
    EXPECT_EQ(m_graphs[0].YScales[3].ScaleAx, ScaleAxCode::kAutomatic);
    EXPECT_EQ(m_graphs[0].YScales[0].ScaleAx, ScaleAxCode::kManual);
    m_prompts.color = [](QWidget*, const QColor&) { return std::optional(QColor(1, 2, 3)); };
    Click(kColor);
    EXPECT_EQ(m_graphs[0].YCoorAxColor[3], 0x030201U);
    m_prompts.trigger = [](QWidget*, TriggerEntry& trigger) {
        trigger.TriggerType = TriggerTypeCode::kStopAbove;
        return true;
    };
    Click(kTrigger);
    EXPECT_EQ(m_graphs[0].Triggers[3].TriggerType, TriggerTypeCode::kStopAbove);
    EXPECT_EQ(Text(kTriggerState), "defined");
    Click(kDeleteYAxis);
    EXPECT_EQ(Describe(m_graphs[0]), Describe(TimeGraph()));
    Click(kDeleteYAxis);
    EXPECT_EQ(Text(kYAxes), "X',Y");
}

TEST_F(GraphEditorTest, OfAnAxisThatIsThereTwiceTheLastIsShownWhenTheGraphIsSelected) {
    WavoGraph graph = TimeGraph(1);
    graph.YCoorAxName[2] = "X";
    graph.YScales[2] = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -3.0, 4.0};
    Begin({TimeGraph(2), graph});
    Type(kGraphNumber, "1");
    EXPECT_EQ(Text(kYMinimum), "-3.000000");
    EXPECT_EQ(Get<ColorField>(kColor).Color(), QColor(0, 0, 255));
    Type(kYMaximum, "5");
    EXPECT_EQ(m_graphs[1].YScales[2].Maximum, 5.0);
    EXPECT_EQ(m_graphs[1].YScales[0].Maximum, 50.0);
}

TEST_F(GraphEditorTest, ATriggerIsForAnAxisThatTheGraphShows) {
    Begin({TimeGraph()});
    EXPECT_TRUE(IsEnabled(kTrigger));
    Type(kYAxis, "Z");
    EXPECT_FALSE(IsEnabled(kTrigger));
    Type(kYAxis, "X");
    EXPECT_TRUE(IsEnabled(kTrigger));
    Type(kDerivation, "2");
    EXPECT_FALSE(IsEnabled(kTrigger));
    Click(kAddYAxis);
    EXPECT_TRUE(IsEnabled(kTrigger));
    Type(kGraphNumber, "2");
    EXPECT_FALSE(IsEnabled(kTrigger));
    Type(kGraphNumber, "1");
    EXPECT_TRUE(IsEnabled(kTrigger));
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(IsEnabled(kTrigger));
        Click(kDeleteYAxis);
    }
    EXPECT_FALSE(IsEnabled(kTrigger));
    Click(kDeleteGraph);
    Click(kDeleteGraph);
    EXPECT_FALSE(IsEnabled(kTrigger));
}

}  // namespace
}  // namespace wavo
