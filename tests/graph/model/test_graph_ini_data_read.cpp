// Graph definitions read from an INI store, and every way to be wrong.

#include "graph/model/graph_ini_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "graph_file_fixture.h"

namespace wavo {
namespace {

using testing::AxisGraph;
using testing::AxisText;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::GraphText;
using ::testing::IsEmpty;
using testing::Read;
using testing::ReadResult;
using testing::ReadText;
using testing::TimeGraph;
using testing::TimeText;

TEST(CreateGraphsFromIniData, ReadsBackWhatWasWritten) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {AxisGraph(), TimeGraph()}, "my text"));
    const ReadResult result = Read(store);
    EXPECT_TRUE(result.success);
    EXPECT_EQ(result.error_text, "");
    EXPECT_EQ(result.add_text, "my text");
    ASSERT_EQ(result.graphs.size(), 2U);
    EXPECT_EQ(result.graphs[0], AxisGraph());
    WavoGraph time_graph = result.graphs[1];
    // Without automatic circles and without an x range the derived radii mean nothing.
    time_graph.InnerGuidingCircleDY = TimeGraph().InnerGuidingCircleDY;
    time_graph.OuterGuidingCircleDY = TimeGraph().OuterGuidingCircleDY;
    EXPECT_EQ(time_graph, TimeGraph());
}

TEST(CreateGraphsFromIniData, AnEmptyStoreHasNoGraphs) {
    ReadResult result;
    result.error_text = "of an earlier file";
    result.add_text = "of an earlier file";
    const MIniData store;
    EXPECT_TRUE(
        CreateGraphsFromIniData(store, result.graphs, result.error_text, result.add_text, 0.001));
    EXPECT_THAT(result.graphs, IsEmpty());
    EXPECT_EQ(result.error_text, "");
    EXPECT_EQ(result.add_text, "");
}

TEST(CreateGraphsFromIniData, BlanksAndEmptyItemsInTheListOfGraphsDoNotCount) {
    MIniData store;
    WavoGraph first = TimeGraph();
    WavoGraph second = TimeGraph();
    second.GraphNumber = 1;
    ASSERT_TRUE(GetGraphAsIniData(store, {first, second}, ""));
    ASSERT_TRUE(store.SetStringEntry("GENERAL", "Graphs", " 3, ,1 "));
    const ReadResult result = Read(store);
    ASSERT_EQ(result.graphs.size(), 2U);
    EXPECT_EQ(result.graphs[0].GraphNumber, 3U);
    EXPECT_EQ(result.graphs[1].GraphNumber, 1U);
}

TEST(CreateGraphsFromIniData, AppendsToTheList) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph()}, ""));
    ReadResult result;
    result.graphs.push_back(AxisGraph());
    EXPECT_TRUE(
        CreateGraphsFromIniData(store, result.graphs, result.error_text, result.add_text, 0.001));
    ASSERT_EQ(result.graphs.size(), 2U);
    EXPECT_EQ(result.graphs[0], AxisGraph());
    EXPECT_EQ(result.graphs[1].GraphNumber, 3U);
}

TEST(CreateGraphsFromIniData, TheFirstOfTwoGraphsOfANumberCounts) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph(), AxisGraph()}, ""));
    // 03 is another section of the same number; it is not even looked at.
    ASSERT_TRUE(store.SetStringEntry("GENERAL", "Graphs", "3,3,03,12,3"));
    const ExpectErrorLog expected(
        {"CreateGraphsFromIniData(): graph number 3 is used more than once, using the first "
         "graph"});
    const ReadResult result = Read(store);
    EXPECT_TRUE(result.success);
    ASSERT_EQ(result.graphs.size(), 2U);
    EXPECT_EQ(result.graphs[0].GraphNumber, 3U);
    EXPECT_EQ(result.graphs[1].GraphNumber, 12U);
}

TEST(CreateGraphsFromIniData, ASectionNameThatIsNoNumberIsGraphZero) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph()}, ""));
    std::string text = store.Content();
    text.replace(text.find("Graphs=3"), 8, "Graphs=front");
    text.replace(text.find("[3]"), 3, "[front]");
    const ReadResult result = ReadText(text);
    ASSERT_EQ(result.graphs.size(), 1U);
    EXPECT_EQ(result.graphs[0].GraphNumber, 0U);
    EXPECT_THAT(result.graphs[0].YCoorAxName, ElementsAre("X1", "Y"));
}

TEST(CreateGraphsFromIniData, ModesThatAreNotOneAreTwo) {
    for (const char* const value : {"2", "0", "-1", "7", "", "abc"}) {
        GraphText text = TimeText();
        text.Set("Mode", value).Set("ModeAx", value);
        EXPECT_EQ(text.Graph().Mode, GraphMode::kContinuity) << value;
        EXPECT_EQ(text.Graph().ModeAx, AxisDrawMode::kPoints) << value;
    }
    for (const char* const value : {"1", " 1", "1x", "+1", "01"}) {
        GraphText text = TimeText();
        text.Set("Mode", value).Set("ModeAx", value);
        EXPECT_EQ(text.Graph().Mode, GraphMode::kClassic) << value;
        EXPECT_EQ(text.Graph().ModeAx, AxisDrawMode::kLines) << value;
    }
    const WavoGraph graph = TimeText().Delete("Mode").Delete("ModeAx").Graph();
    EXPECT_EQ(graph.Mode, GraphMode::kContinuity);
    EXPECT_EQ(graph.ModeAx, AxisDrawMode::kPoints);
}

TEST(CreateGraphsFromIniData, FlagsAreTrueAboveZero) {
    for (const auto& [value, flag] : std::vector<std::pair<const char*, bool>>{
             {"1", true}, {"5", true}, {"0", false}, {"-1", false}, {"", false}, {"yes", false}}) {
        GraphText text = TimeText();
        text.Set("AutoCircle", value).Set("ZeroLines", value);
        EXPECT_EQ(text.Graph().AutoCircle, flag) << value;
        EXPECT_EQ(text.Graph().ZeroLines, flag) << value;
    }
}

TEST(CreateGraphsFromIniData, AnXCoordinateThatIsNotTimeIsAnAxis) {
    for (const char* const value : {"2", "0", "3", ""}) {
        const WavoGraph graph = AxisText().Set("XCoorType", value).Graph();
        EXPECT_EQ(graph.XCoorType, CoorType::kAxis) << value;
        EXPECT_EQ(graph.XCoorAxName, "X") << value;
    }
    const WavoGraph time_graph = TimeText().Set("XCoorAxName", "X").Graph();
    EXPECT_EQ(time_graph.XCoorType, CoorType::kTime);
    EXPECT_EQ(time_graph.XCoorAxName, "");
    EXPECT_EQ(AxisText().Delete("XCoorAxName").Graph().XCoorAxName, "");
}

TEST(CreateGraphsFromIniData, WhiteSpaceInsideAxisNamesIsRemoved) {
    const WavoGraph graph = TimeText().Set("YCoorAxName", " X 1\t,\v,Y \f").Graph();
    EXPECT_THAT(graph.YCoorAxName, ElementsAre("X1", "Y"));
    EXPECT_EQ(graph.Triggers[0].AxName, "X1");
}

TEST(CreateGraphsFromIniData, ListsDropEmptyItems) {
    const WavoGraph graph =
        TimeText().Set("YCoorAxColor", ",1,,2,").Set("YScaleAxMax", ",5,,6").Graph();
    EXPECT_THAT(graph.YCoorAxColor, ElementsAre(1U, 2U));
    EXPECT_EQ(graph.YScales[0].Maximum, 5.0);
}

TEST(CreateGraphsFromIniData, TriggersMissingAltogetherAreNone) {
    const WavoGraph graph = TimeText().Delete("TriggerType").Delete("TriggerValue").Graph();
    ASSERT_EQ(graph.Triggers.size(), 2U);
    EXPECT_EQ(graph.Triggers[0], (TriggerEntry{TriggerTypeCode::kNone, 0.0, "X1"}));
    EXPECT_EQ(graph.Triggers[1], (TriggerEntry{TriggerTypeCode::kNone, 0.0, "Y"}));
    EXPECT_EQ(TimeText().Set("TriggerType", "").Set("TriggerValue", " ,").Graph().Triggers,
              graph.Triggers);
}

TEST(CreateGraphsFromIniData, TriggersTakeTypeValueAndName) {
    const WavoGraph graph =
        TimeText().Set("TriggerType", "3,2").Set("TriggerValue", "1.25,-7").Graph();
    EXPECT_EQ(graph.Triggers[0], (TriggerEntry{TriggerTypeCode::kStartBelow, 1.25, "X1"}));
    EXPECT_EQ(graph.Triggers[1], (TriggerEntry{TriggerTypeCode::kStartAbove, -7.0, "Y"}));
}

TEST(CreateGraphsFromIniData, EqualXBoundsAreAccepted) {
    const WavoGraph graph = AxisText().Set("XScaleAxMin", "5").Set("XScaleAxMax", "5").Graph();
    EXPECT_EQ(graph.XScale.Minimum, 5.0);
    EXPECT_EQ(graph.XScale.Maximum, 5.0);
}

TEST(CreateGraphsFromIniData, EqualYBoundsAreAccepted) {
    const WavoGraph graph = AxisText().Set("YScaleAxMin", "5").Set("YScaleAxMax", "5").Graph();
    EXPECT_EQ(graph.YScales[0].Minimum, 5.0);
    EXPECT_EQ(graph.YScales[0].Maximum, 5.0);
}

TEST(CreateGraphsFromIniData, AutomaticScalesTakeNoBounds) {
    const WavoGraph graph = AxisText().Set("XScaleAxType", "1").Set("YScaleAxType", "1").Graph();
    EXPECT_EQ(graph.XScale,
              (ScaleDefinition{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0}));
    EXPECT_EQ(graph.YScales[0], graph.XScale);
}

// Only the x scale refuses a type of its range that it does not know.
TEST(CreateGraphsFromIniData, AnUnknownTypeOfYRangeIsAutomatic) {
    for (const char* const value : {"0", "3", "-1", "x"}) {
        const WavoGraph graph = AxisText().Set("YScaleAxType", value).Graph();
        EXPECT_EQ(graph.YScales[0],
                  (ScaleDefinition{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0}))
            << value;
    }
}

TEST(CreateGraphsFromIniData, AYTimeScaleReadsTheTimeAsOneNumber) {
    const WavoGraph graph = TimeText().Set("YScaleType", "1,1").Set("YScaleTime", "0.5,7").Graph();
    ASSERT_EQ(graph.YScales.size(), 2U);
    for (const ScaleDefinition& scale : graph.YScales) {
        EXPECT_EQ(scale, (ScaleDefinition{ScaleTypeCode::kTime, 0.5, {}, 0.0, 0.0}));
    }
}

TEST(CreateGraphsFromIniData, AGraphOverAnAxisKeepsItsFirstYAxis) {
    WavoGraph graph = TimeGraph();
    graph.GraphNumber = 1;
    graph.YCoorAxName = {"X1", "Y", "Z"};
    graph.YCoorAxColor = {1, 2, 3};
    graph.YCoorAxDerivation = {2, 1, 0};
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 4.0, "X1"},
                      {TriggerTypeCode::kStartAbove, 5.0, "Y"},
                      {TriggerTypeCode::kStartAbove, 6.0, "Z"}};
    graph.YScales.push_back(graph.YScales[1]);
    GraphText text(graph);
    text.Set("XCoorType", "2").Set("XCoorAxName", "B");
    const ExpectErrorLog expected(
        {"CreateGraphsFromIniData(): only one axis on y-coor. is allowed (x-coor.is an axis "
         "value). using first axis"});
    const WavoGraph read = text.Graph();
    EXPECT_EQ(read.XCoorAxName, "B");
    EXPECT_THAT(read.YCoorAxName, ElementsAre("X1"));
    EXPECT_THAT(read.YCoorAxColor, ElementsAre(1U));
    EXPECT_THAT(read.YCoorAxDerivation, ElementsAre(2));
    EXPECT_THAT(read.Triggers, ElementsAre(TriggerEntry{TriggerTypeCode::kStartAbove, 4.0, "X1"}));
    EXPECT_THAT(read.YScales, ElementsAre(graph.YScales[0]));
}

TEST(CreateGraphsFromIniData, CirclesThatAreMissingOrEmptyAreNotSet) {
    for (const char* const value : {"", " ", "\t"}) {
        const WavoGraph graph = AxisText().Set("InnerGuidingCircleDX", value).Graph();
        EXPECT_EQ(graph.InnerGuidingCircleDX, kNoRadius);
        EXPECT_EQ(graph.InnerGuidingCircleDY, kNoRadius);
        EXPECT_EQ(graph.OuterGuidingCircleDX, 50.05);
    }
    const WavoGraph graph =
        AxisText().Delete("OuterGuidingCircleDX").Set("InnerGuidingCircleDX", "none").Graph();
    EXPECT_EQ(graph.OuterGuidingCircleDX, kNoRadius);
    EXPECT_EQ(graph.InnerGuidingCircleDX, 0.0);
}

TEST(CreateGraphsFromIniData, DerivesTheYRadii) {
    EXPECT_EQ(AxisText().Graph().OuterGuidingCircleDY, 50.05);
    const WavoGraph graph = AxisText()
                                .Set("AutoCircle", "0")
                                .Set("XScaleAxMin", "0")
                                .Set("XScaleAxMax", "100")
                                .Set("YScaleAxMin", "-5")
                                .Set("YScaleAxMax", "5")
                                .Set("OuterGuidingCircleDX", "20")
                                .Graph();
    EXPECT_DOUBLE_EQ(graph.OuterGuidingCircleDY, 2.0);
}

TEST(CreateGraphsFromIniData, FadeOutTimeIsNotBelowTheMinimum) {
    GraphText text = AxisText();
    for (const auto& [value, time] : std::vector<std::pair<const char*, double>>{
             {"0.5", 0.5}, {"0.002", 0.002}, {"0.0005", 0.002}, {"0", 0.002}, {"-3", 0.002}}) {
        const ReadResult result = text.Set("FadeOutTime", value).Read(0.002);
        ASSERT_EQ(result.graphs.size(), 1U);
        EXPECT_EQ(result.graphs[0].FadeOutTime, time) << value;
    }
}

TEST(CreateGraphsFromIniData, AFadeOutTimeThatCannotBeReadCountsAsMissing) {
    for (const char* const value : {"", "abc", "nan", "inf"}) {
        EXPECT_EQ(AxisText().Set("FadeOutTime", value).Graph().FadeOutTime, 0.0) << value;
    }
    EXPECT_EQ(AxisText().Delete("FadeOutTime").Graph().FadeOutTime, 0.0);
    // It is read whatever the x scale is.
    EXPECT_EQ(TimeText().Set("FadeOutTime", "4").Graph().FadeOutTime, 4.0);
}

// Errors, in the order in which they are looked for.

TEST(CreateGraphsFromIniData, CountsOfTheYAxisListsMustAgree) {
    for (const char* const bad : {"1", "1,2,3", ""}) {
        TimeText().Set("YCoorAxColor", bad).ExpectError("invalid number of colors");
        TimeText().Set("YCoorAxDerivation", bad).ExpectError("invalid number of derivations");
        TimeText()
            .Set("TriggerType", bad)
            .ExpectError("invalid number of trigger types or trigger values");
        TimeText()
            .Set("TriggerValue", bad)
            .ExpectError("invalid number of trigger types or trigger values");
        TimeText().Set("YScaleType", bad).ExpectError("invalid number of YScaleType");
        TimeText().Set("YScaleAxType", bad).ExpectError("invalid number of YScaleAxType");
        TimeText().Set("YScaleAxMax", bad).ExpectError("invalid number of YScaleAxMax");
        TimeText().Set("YScaleAxMin", bad).ExpectError("invalid number of YScaleAxMin");
    }
    TimeText().Delete("YCoorAxColor").ExpectError("invalid number of colors");
    TimeText()
        .Set("TriggerType", "2")
        .Set("TriggerValue", "")
        .ExpectError("invalid number of trigger types or trigger values");
    TimeText()
        .Set("TriggerType", "")
        .Set("TriggerValue", "1")
        .ExpectError("invalid number of trigger types or trigger values");
    // A graph without y axes has no items either.
    TimeText().Set("YCoorAxName", "").ExpectError("invalid number of colors");
}

TEST(CreateGraphsFromIniData, AnXTimeRangeIsAtLeastATenthOfAMillisecond) {
    for (const char* const bad : {"0.00009", "0", "-1", "", "abc", "nan", "0x10"}) {
        TimeText().Set("XScaleTime", bad).ExpectError("invalid time range XCoor");
    }
    TimeText().Delete("XScaleTime").ExpectError("invalid time range XCoor");
    EXPECT_EQ(TimeText().Set("XScaleTime", "0.0001").Graph().XScale.TimeRange, 0.0001);
}

TEST(CreateGraphsFromIniData, XBoundsMustNotBeReversed) {
    AxisText()
        .Set("XScaleAxMax", "-61")
        .ExpectError("invalid min. or max., XScaleAxMax or XScaleAxMin");
    // A bound that is missing is 0.
    AxisText()
        .Set("XScaleAxMin", "1")
        .Delete("XScaleAxMax")
        .ExpectError("invalid min. or max., XScaleAxMax or XScaleAxMin");
}

TEST(CreateGraphsFromIniData, UnknownXScaleTypesAreErrors) {
    for (const char* const bad : {"0", "3", "-1", "", "x"}) {
        AxisText().Set("XScaleType", bad).ExpectError("invalid XScaleType");
        AxisText().Set("XScaleAxType", bad).ExpectError("invalid XScaleType");
    }
}

TEST(CreateGraphsFromIniData, YScalesAreChecked) {
    TimeText().Set("YScaleType", "2,1").ExpectError("invalid time range YCoor");
    TimeText()
        .Set("YScaleType", "1,2")
        .Delete("YScaleTime")
        .ExpectError("invalid time range YCoor");
    TimeText()
        .Set("YScaleAxMax", "-11,0")
        .ExpectError("invalid min. or max., YScaleAxMax or YScaleAxMin");
    for (const char* const bad : {"2,0", "3,2", "2,x"}) {
        TimeText().Set("YScaleType", bad).ExpectError("invalid YScaleType");
    }
}

TEST(CreateGraphsFromIniData, TheFirstErrorStopsTheChecks) {
    // Everything is wrong; each repair shows the next error.
    GraphText text = TimeText();
    text.Set("YCoorAxColor", "1").Set("YCoorAxDerivation", "1").Set("TriggerType", "1");
    text.Set("XScaleType", "9").Set("YScaleType", "2").Set("YScaleAxType", "2");
    text.Set("YScaleAxMax", "1").Set("YScaleAxMin", "1");
    text.ExpectError("invalid number of colors");
    text.Set("YCoorAxColor", "1,2").ExpectError("invalid number of derivations");
    text.Set("YCoorAxDerivation", "1,2")
        .ExpectError("invalid number of trigger types or trigger values");
    text.Set("TriggerType", "1,2").ExpectError("invalid XScaleType");
    text.Set("XScaleType", "2").Set("XScaleAxType", "7").ExpectError("invalid XScaleType");
    text.Set("XScaleAxType", "2")
        .Set("XScaleAxMax", "-1")
        .ExpectError("invalid min. or max., XScaleAxMax or XScaleAxMin");
    text.Set("XScaleAxMax", "1").ExpectError("invalid number of YScaleType");
    text.Set("YScaleType", "7,1").ExpectError("invalid number of YScaleAxType");
    text.Set("YScaleAxType", "2,2").ExpectError("invalid number of YScaleAxMax");
    text.Set("YScaleAxMax", "-1,1").ExpectError("invalid number of YScaleAxMin");
    text.Set("YScaleAxMin", "0,0").ExpectError("invalid YScaleType");
    text.Set("YScaleType", "2,1").ExpectError("invalid min. or max., YScaleAxMax or YScaleAxMin");
    text.Set("YScaleAxMax", "1,1").ExpectError("invalid time range YCoor");
    text.Set("YScaleType", "2,2");
    EXPECT_TRUE(text.Read().success);
}

TEST(CreateGraphsFromIniData, ABadGraphEndsReadingAndTheOnesBeforeStay) {
    MIniData store;
    std::vector<WavoGraph> graphs;
    for (const std::uint32_t number : {1U, 2U, 3U}) {
        graphs.push_back(AxisGraph());
        graphs.back().GraphNumber = number;
    }
    ASSERT_TRUE(GetGraphAsIniData(store, graphs, "text"));
    ASSERT_TRUE(store.SetStringEntry("2", "YCoorAxColor", ""));
    const ExpectErrorLog expected(
        {"CAxSelect::CreateGraphsFromIniData(): invalid number of colors"});
    const ReadResult result = Read(store);
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.error_text, "invalid number of colors, graph [2]");
    EXPECT_EQ(result.add_text, "text");
    ASSERT_EQ(result.graphs.size(), 1U);
    EXPECT_EQ(result.graphs[0], graphs[0]);
}

TEST(CreateGraphsFromIniData, AGraphWithoutASectionIsAnError) {
    const ExpectErrorLog expected({"CAxSelect::CreateGraphsFromIniData(): invalid XScaleType"});
    const ReadResult result = ReadText("[GENERAL]\nGraphs=8\n");
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.error_text, "invalid XScaleType, graph [8]");
}

// Numbers as hands write them.

TEST(CreateGraphsFromIniData, NumbersEndWhereTheyCannotBeReadOn) {
    const WavoGraph graph = TimeText()
                                .Set("YCoorAxColor", "12abc,0x10")
                                .Set("YCoorAxDerivation", "1.9,2e5")
                                .Set("TriggerValue", "1.5mm,abc")
                                .Set("XScaleTime", "3s")
                                .Set("YScaleAxMax", "1e2x,0")
                                .Graph();
    EXPECT_THAT(graph.YCoorAxColor, ElementsAre(12U, 0U));
    EXPECT_THAT(graph.YCoorAxDerivation, ElementsAre(1, 2));
    EXPECT_EQ(graph.Triggers[0].TriggerValue, 1.5);
    EXPECT_EQ(graph.Triggers[1].TriggerValue, 0.0);
    EXPECT_EQ(graph.XScale.TimeRange, 3.0);
    EXPECT_EQ(graph.YScales[0].Maximum, 100.0);
}

TEST(CreateGraphsFromIniData, AllNumbersAreFinite) {
    const WavoGraph graph = AxisText()
                                .Set("TriggerValue", "nan")
                                .Set("XScaleAxMax", "1e999")
                                .Set("XScaleAxMin", "-1e999")
                                .Set("YScaleAxMax", "inf")
                                .Set("YScaleAxMin", "-infinity")
                                .Set("InnerGuidingCircleDX", "1e-999")
                                .Set("OuterGuidingCircleDX", "1e999")
                                .Set("FadeOutTime", "1e999")
                                .Graph();
    constexpr double kLargest = std::numeric_limits<double>::max();
    EXPECT_EQ(graph.Triggers[0].TriggerValue, 0.0);
    EXPECT_EQ(graph.XScale.Maximum, kLargest);
    EXPECT_EQ(graph.XScale.Minimum, -kLargest);
    EXPECT_EQ(graph.YScales[0].Maximum, 0.0);
    EXPECT_EQ(graph.YScales[0].Minimum, 0.0);
    EXPECT_EQ(graph.InnerGuidingCircleDX, 0.0);
    EXPECT_EQ(graph.OuterGuidingCircleDX, kNoRadius);
    EXPECT_EQ(graph.FadeOutTime, kLargest);
}

TEST(CreateGraphsFromIniData, DerivationsAreCutToWhatIsOfUse) {
    EXPECT_THAT(TimeText().Set("YCoorAxDerivation", "2000000000,8").Graph().YCoorAxDerivation,
                ElementsAre(kHighestStoredDerivation, 8));
    EXPECT_THAT(TimeText().Set("YCoorAxDerivation", "-1,99999999999").Graph().YCoorAxDerivation,
                ElementsAre(0, kHighestStoredDerivation));
}

TEST(CreateGraphsFromIniData, ColoursAreCutTo24Bits) {
    EXPECT_THAT(TimeText().Set("YCoorAxColor", "4294967295,285212671").Graph().YCoorAxColor,
                ElementsAre(0xFFFFFFU, 0xFFFFFFU));
    EXPECT_THAT(TimeText().Set("YCoorAxColor", "-1,99999999999999999999").Graph().YCoorAxColor,
                ElementsAre(0U, 0xFFFFFFU));
}

TEST(CreateGraphsFromIniData, AHundredThousandNamesOfOneGraphAreOneGraph) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph()}, ""));
    std::string numbers;
    for (int i = 0; i < 100'000; ++i) {
        numbers += "3,";
    }
    ASSERT_TRUE(store.SetStringEntry("GENERAL", "Graphs", numbers));
    const ExpectErrorLog expected(
        {"CreateGraphsFromIniData(): graph number 3 is used more than once, using the first "
         "graph"});
    EXPECT_EQ(Read(store).graphs.size(), 1U);
}

}  // namespace
}  // namespace wavo
