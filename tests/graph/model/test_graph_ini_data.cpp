// Graph definitions put into an INI store.

#include "graph/model/graph_ini_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "graph_file_fixture.h"

namespace wavo {
namespace {

using testing::AxisGraph;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using testing::Read;
using testing::ReadResult;
using testing::TimeGraph;
using testing::Value;

TEST(GetGraphAsIniData, WritesATimeGraphInTheOrderOfTheTable) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph()}, "first line"));
    EXPECT_EQ(store.Content(),
              "[GENERAL]\r\n"
              "Graphs=3\r\n"
              "AddText=first line\r\n"
              "[3]\r\n"
              "Mode=1\r\n"
              "ModeAx=1\r\n"
              "XCoorType=1\r\n"
              "AutoCircle=0\r\n"
              "ZeroLines=1\r\n"
              "YCoorAxName=X1,Y\r\n"
              "YCoorAxColor=255,16744448\r\n"
              "YCoorAxDerivation=0,2\r\n"
              "TriggerType=1,5\r\n"
              "TriggerValue=0.000000,-1.500000\r\n"
              "XScaleType=1\r\n"
              "XScaleTime=2.5\r\n"
              "YScaleType=2,2\r\n"
              "YScaleAxType=2,1\r\n"
              "YScaleTime=0.0,0.0\r\n"
              "YScaleAxMax=10.500000,0.0\r\n"
              "YScaleAxMin=-10.250000,0.0\r\n"
              "InnerGuidingCircleDX=\r\n"
              "OuterGuidingCircleDX=\r\n");
}

TEST(GetGraphAsIniData, WritesAnAxisGraphInTheOrderOfTheTable) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {AxisGraph()}, ""));
    EXPECT_EQ(store.Content(),
              "[GENERAL]\r\n"
              "Graphs=12\r\n"
              "AddText=\r\n"
              "[12]\r\n"
              "Mode=2\r\n"
              "ModeAx=2\r\n"
              "XCoorType=2\r\n"
              "XCoorAxName=X\r\n"
              "AutoCircle=1\r\n"
              "ZeroLines=0\r\n"
              "YCoorAxName=Y\r\n"
              "YCoorAxColor=65280\r\n"
              "YCoorAxDerivation=0\r\n"
              "TriggerType=2\r\n"
              "TriggerValue=1.000000\r\n"
              "XScaleType=2\r\n"
              "XScaleAxType=2\r\n"
              "XScaleAxMax=60.125\r\n"
              "XScaleAxMin=-60\r\n"
              "XScaleTime=10\r\n"
              "YScaleType=2\r\n"
              "YScaleAxType=2\r\n"
              "YScaleTime=0.0\r\n"
              "YScaleAxMax=60.000000\r\n"
              "YScaleAxMin=-60.000000\r\n"
              "InnerGuidingCircleDX=49.950000000000003\r\n"
              "OuterGuidingCircleDX=50.049999999999997\r\n"
              "FadeOutTime=0.75\r\n");
}

TEST(GetGraphAsIniData, JoinsTheNumbersInListOrder) {
    MIniData store;
    std::vector<WavoGraph> graphs;
    for (const std::uint32_t number : {5U, 1U, 4294967295U}) {
        graphs.push_back(TimeGraph());
        graphs.back().GraphNumber = number;
    }
    ASSERT_TRUE(GetGraphAsIniData(store, graphs, ""));
    EXPECT_EQ(Value(store, "GENERAL", "Graphs"), "5,1,4294967295");
    EXPECT_THAT(store.SectionNames(), ElementsAre("GENERAL", "5", "1", "4294967295"));
}

TEST(GetGraphAsIniData, WritesAnEmptyList) {
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {}, "text"));
    EXPECT_EQ(store.Content(), "[GENERAL]\r\nGraphs=\r\nAddText=text\r\n");
    const ReadResult result = Read(store);
    EXPECT_TRUE(result.success);
    EXPECT_THAT(result.graphs, IsEmpty());
    EXPECT_EQ(result.add_text, "text");
}

TEST(GetGraphAsIniData, AnAutomaticXScaleHasNoBounds) {
    MIniData store;
    WavoGraph graph = AxisGraph();
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    EXPECT_EQ(Value(store, "12", "XScaleAxType"), "1");
    EXPECT_EQ(Value(store, "12", "XScaleAxMax"), "(missing)");
    EXPECT_EQ(Value(store, "12", "XScaleAxMin"), "(missing)");
    EXPECT_EQ(Value(store, "12", "FadeOutTime"), "0.75");
}

// The fade-out time goes with the type of the x scale, the x axis name with that of the coordinate.
TEST(GetGraphAsIniData, FadeOutFollowsTheScaleAndTheNameTheCoordinate) {
    MIniData store;
    WavoGraph graph = AxisGraph();
    graph.XScale = {ScaleTypeCode::kTime, 1.0, {}, 0.0, 0.0};
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    EXPECT_EQ(Value(store, "12", "XCoorAxName"), "X");
    EXPECT_EQ(Value(store, "12", "FadeOutTime"), "(missing)");

    graph = AxisGraph();
    graph.GraphNumber = 13;
    graph.XCoorType = CoorType::kTime;
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    EXPECT_EQ(Value(store, "13", "XCoorAxName"), "(missing)");
    EXPECT_EQ(Value(store, "13", "FadeOutTime"), "0.75");
}

TEST(GetGraphAsIniData, ATimeScaleDeletesAnOldFadeOutTime) {
    MIniData store;
    ASSERT_TRUE(store.SetContent("[3]\nFadeOutTime=5\nNote=mine\n"));
    const CollectReports traces(diagnostics::Service::kErrorTrace);
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph()}, ""));
    EXPECT_EQ(Value(store, "3", "FadeOutTime"), "(missing)");
    EXPECT_EQ(Value(store, "3", "Note"), "mine");
    EXPECT_THAT(traces.Texts(), IsEmpty());
}

TEST(GetGraphAsIniData, AFadeOutTimeThatIsNotThereIsTracedAndWritingGoesOn) {
    MIniData store;
    WavoGraph second = TimeGraph();
    second.GraphNumber = 4;
    const CollectReports traces(diagnostics::Service::kErrorTrace);
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph(), second}, ""));
    EXPECT_THAT(traces.Texts(),
                ElementsAre("MIniData::DeleteEntry(): MIniDataSectionT::DeleteEntry() failed "
                            "(\"3\",\"FadeOutTime\")",
                            "MIniData::DeleteEntry(): MIniDataSectionT::DeleteEntry() failed "
                            "(\"4\",\"FadeOutTime\")"));
    EXPECT_EQ(Value(store, "4", "OuterGuidingCircleDX"), "");
}

TEST(GetGraphAsIniData, AYScaleThatIsNoAxisScaleStopsBeforeTheYScales) {
    MIniData store;
    WavoGraph first = AxisGraph();
    WavoGraph bad = TimeGraph();
    bad.YScales[1].ScaleType = ScaleTypeCode::kTime;
    WavoGraph last = TimeGraph();
    last.GraphNumber = 4;
    const ExpectErrorLog expected({"CAxSelect::GetGraphAsIniData(): invalid y-scale type [Y]"});
    EXPECT_FALSE(GetGraphAsIniData(store, {first, bad, last}, "text"));
    EXPECT_EQ(Value(store, "GENERAL", "Graphs"), "12,3,4");
    EXPECT_EQ(Value(store, "GENERAL", "AddText"), "text");
    EXPECT_EQ(Value(store, "12", "FadeOutTime"), "0.75");
    EXPECT_THAT(store.EntryNames("3"),
                ElementsAre("Mode", "ModeAx", "XCoorType", "AutoCircle", "ZeroLines", "YCoorAxName",
                            "YCoorAxColor", "YCoorAxDerivation", "TriggerType", "TriggerValue",
                            "XScaleType", "XScaleTime"));
    EXPECT_FALSE(store.HasSection("4"));
}

TEST(GetGraphAsIniData, AMissingYScaleIsNoAxisScale) {
    MIniData store;
    WavoGraph graph = TimeGraph();
    graph.YScales.pop_back();
    const ExpectErrorLog expected({"CAxSelect::GetGraphAsIniData(): invalid y-scale type [Y]"});
    EXPECT_FALSE(GetGraphAsIniData(store, {graph}, ""));
}

TEST(GetGraphAsIniData, AYScaleBeyondTheYAxesIsNotWritten) {
    MIniData store;
    WavoGraph graph;
    graph.InitGraph(7, nullptr, 0, nullptr);
    ASSERT_EQ(graph.YScales.size(), 1U);
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    for (const char* const list :
         {"YCoorAxName", "YCoorAxColor", "YCoorAxDerivation", "TriggerType", "TriggerValue",
          "YScaleType", "YScaleAxType", "YScaleTime", "YScaleAxMax", "YScaleAxMin"}) {
        EXPECT_EQ(Value(store, "7", list), "") << list;
    }
    const ReadResult result = Read(store);
    ASSERT_TRUE(result.success);
    ASSERT_EQ(result.graphs.size(), 1U);
    EXPECT_THAT(result.graphs[0].YCoorAxName, IsEmpty());
    EXPECT_THAT(result.graphs[0].YScales, IsEmpty());

    // Also with axes: the items follow the axes, not the scales.
    graph = TimeGraph();
    graph.YScales.push_back({ScaleTypeCode::kTime, 1.0, {}, 0.0, 0.0});
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    EXPECT_EQ(Value(store, "3", "YScaleType"), "2,2");
}

TEST(GetGraphAsIniData, TheSectionOfAGraphThatIsGoneStays) {
    MIniData store;
    WavoGraph second = TimeGraph();
    second.GraphNumber = 4;
    ASSERT_TRUE(GetGraphAsIniData(store, {TimeGraph(), second}, ""));
    ASSERT_TRUE(GetGraphAsIniData(store, {second}, ""));
    EXPECT_EQ(Value(store, "GENERAL", "Graphs"), "4");
    EXPECT_EQ(Value(store, "3", "YCoorAxName"), "X1,Y");
    const ReadResult result = Read(store);
    ASSERT_EQ(result.graphs.size(), 1U);
    EXPECT_EQ(result.graphs[0].GraphNumber, 4U);
}

TEST(GetGraphAsIniData, ATextWithALineEndIsRefusedAndTheRestIsWritten) {
    MIniData store;
    ASSERT_TRUE(store.SetContent("[GENERAL]\nAddText=old\n"));
    EXPECT_FALSE(GetGraphAsIniData(store, {TimeGraph()}, "two\nlines"));
    EXPECT_EQ(Value(store, "GENERAL", "AddText"), "old");
    EXPECT_EQ(Value(store, "3", "YScaleAxMin"), "-10.250000,0.0");
}

TEST(GetGraphAsIniData, KeepsWhatAHandMadeFileHoldsInItsOrder) {
    const std::string before =
        "; graphs of the lathe\r\n"
        "   \r\n"
        "[NOTES]\r\n"
        "author=me\r\n"
        "[3]\r\n"
        "# the x axis\r\n"
        "color scheme=dark\r\n"
        "YCoorAxName = X 1 , Y\r\n"
        "\t\r\n"
        "Mode=2\r\n"
        "// end\r\n"
        "[GENERAL]\r\n"
        "mtrace_level=2\r\n"
        "Graphs= 3 \r\n"
        "* last\r\n";
    MIniData store;
    ASSERT_TRUE(store.SetContent(before));
    WavoGraph graph = TimeGraph();
    graph.YCoorAxName = {"X", "Z"};
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, "new"));
    const std::string after = store.Content();
    std::size_t place = 0;
    for (const char* const line : {"; graphs of the lathe\r\n",
                                   "   \r\n",
                                   "[NOTES]\r\n",
                                   "author=me\r\n",
                                   "[3]\r\n",
                                   "# the x axis\r\n",
                                   "color scheme=dark\r\n",
                                   "YCoorAxName",
                                   "X,Z\r\n",
                                   "\t\r\n",
                                   "Mode=1\r\n",
                                   "// end\r\n",
                                   "ModeAx=1\r\n",
                                   "OuterGuidingCircleDX=\r\n",
                                   "[GENERAL]\r\n",
                                   "mtrace_level=2\r\n",
                                   "Graphs",
                                   "3\r\n",
                                   "* last\r\n",
                                   "AddText=new\r\n"}) {
        const std::size_t found = after.find(line, place);
        ASSERT_NE(found, std::string::npos) << line << "in\n" << after;
        place = found + std::strlen(line);
    }
    EXPECT_EQ(place, after.size());
}

}  // namespace
}  // namespace wavo
