// Graph definitions written and read again: nothing that the file holds is lost.

#include "graph/model/graph_ini_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "comma_locale.h"
#include "expect_errors.h"
#include "graph_file_fixture.h"
#include "special_values.h"
#include "support/number_text.h"

namespace wavo {
namespace {

using testing::AxisGraph;
using testing::Read;
using testing::ReadResult;
using testing::ReadText;
using testing::TimeGraph;
using testing::Value;

/// What a graph is after it was stored: what the file holds, the rest at its default.
WavoGraph NormalForm(const WavoGraph& graph) {
    const auto six_decimals = [](double value) { return ReadDouble(FormatSixDecimals(value)); };
    const auto without_blanks = [](std::string name) {
        std::erase(name, ' ');
        return name;
    };
    WavoGraph stored;
    stored.GraphNumber = graph.GraphNumber;
    stored.Mode = graph.Mode;
    stored.ModeAx = graph.ModeAx;
    stored.AutoCircle = graph.AutoCircle;
    stored.ZeroLines = graph.ZeroLines;
    stored.XCoorType = graph.XCoorType;
    stored.XCoorAxName = graph.XCoorType == CoorType::kAxis ? graph.XCoorAxName : "";
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        const ScaleDefinition& scale = graph.YScales[i];
        const TriggerEntry& trigger = graph.Triggers[i];
        const std::string name = without_blanks(graph.YCoorAxName[i]);
        stored.YCoorAxName.push_back(name);
        stored.YCoorAxColor.push_back(graph.YCoorAxColor[i]);
        stored.YCoorAxDerivation.push_back(graph.YCoorAxDerivation[i]);
        stored.Triggers.push_back({trigger.TriggerType, six_decimals(trigger.TriggerValue), name});
        stored.YScales.push_back({ScaleTypeCode::kAxis, 0.0, scale.ScaleAx, 0.0, 0.0});
        if (scale.ScaleAx == ScaleAxCode::kManual) {
            stored.YScales[i].Minimum = six_decimals(scale.Minimum);
            stored.YScales[i].Maximum = six_decimals(scale.Maximum);
        }
    }
    stored.XScale.ScaleType = graph.XScale.ScaleType;
    if (graph.XScale.ScaleType == ScaleTypeCode::kTime) {
        stored.XScale.TimeRange = graph.XScale.TimeRange;
    } else {
        stored.XScale.ScaleAx = graph.XScale.ScaleAx;
        if (graph.XScale.ScaleAx == ScaleAxCode::kManual) {
            stored.XScale.Minimum = graph.XScale.Minimum;
            stored.XScale.Maximum = graph.XScale.Maximum;
        }
        stored.FadeOutTime = graph.FadeOutTime;
    }
    stored.InnerGuidingCircleDX = graph.InnerGuidingCircleDX;
    stored.OuterGuidingCircleDX = graph.OuterGuidingCircleDX;
    stored.UpdateGuidingCircles();
    return stored;
}

/// Equality in which a derived radius that is not a number equals another one.
void ExpectSameGraph(WavoGraph left, WavoGraph right) {
    for (const auto member : {&WavoGraph::InnerGuidingCircleDY, &WavoGraph::OuterGuidingCircleDY}) {
        if (std::isnan(left.*member) && std::isnan(right.*member)) {
            left.*member = 0.0;
            right.*member = 0.0;
        }
    }
    EXPECT_EQ(left, right) << "graph " << left.GraphNumber;
}

class RandomGraphs {
 public:
    explicit RandomGraphs(std::uint64_t seed) : m_random(seed) {}

    std::vector<WavoGraph> List() {
        std::vector<WavoGraph> graphs(Below(6));
        std::uint32_t number = static_cast<std::uint32_t>(Below(3));
        for (WavoGraph& graph : graphs) {
            graph = Graph(number);
            number += 1 + static_cast<std::uint32_t>(Below(1000));
        }
        return graphs;
    }
    std::string Text() {
        static constexpr std::string_view kCharacters = "aZ 9;#=[],.'\"\\\t\xC3\xA4*/";
        std::string text;
        for (std::size_t i = Below(20); i > 0; --i) {
            text += kCharacters[Below(kCharacters.size())];
        }
        return text;
    }

 private:
    std::uint64_t Below(std::uint64_t bound) { return m_random() % bound; }
    bool Coin() { return Below(2) == 0; }

    double Number() {
        static constexpr std::array kEdges = {0.0,   -0.0,   1.0,    -1.0,      0.1,
                                              1e-7,  5e-7,   1e308,  1.0 / 3.0, 123456.7890125,
                                              -1e17, 2e-308, 5e-324, 1.0000005, -0.0000005};
        switch (Below(3)) {
            case 0:
                return kEdges[Below(kEdges.size())];
            case 1:
                return std::uniform_real_distribution<double>(-1000.0, 1000.0)(m_random);
            default:
                return std::ldexp(std::uniform_real_distribution<double>(-1.0, 1.0)(m_random),
                                  static_cast<int>(Below(200)) - 100);
        }
    }
    std::string Name() {
        static constexpr std::string_view kCharacters = "XYZ12_abc \xC3\xA4.=;#[]'";
        std::string name(1, static_cast<char>('A' + Below(26)));
        for (std::size_t i = Below(8); i > 0; --i) {
            name += kCharacters[Below(kCharacters.size())];
        }
        return name;
    }
    ScaleDefinition AxisScale() {
        ScaleDefinition scale{ScaleTypeCode::kAxis, Number(), ScaleAxCode::kAutomatic, Number(),
                              Number()};
        if (Coin()) {
            scale.ScaleAx = ScaleAxCode::kManual;
            if (scale.Maximum < scale.Minimum) {
                std::swap(scale.Minimum, scale.Maximum);
            }
        }
        return scale;
    }
    double Radius() { return Coin() ? kNoRadius : std::abs(Number()); }

    WavoGraph Graph(std::uint32_t number) {
        WavoGraph graph;
        graph.GraphNumber = number;
        graph.Mode = Coin() ? GraphMode::kClassic : GraphMode::kContinuity;
        graph.ModeAx = Coin() ? AxisDrawMode::kLines : AxisDrawMode::kPoints;
        graph.AutoCircle = Coin();
        graph.ZeroLines = Coin();
        graph.FadeOutTime = 0.001 + std::abs(Number());
        graph.XCoorType = Coin() ? CoorType::kTime : CoorType::kAxis;
        graph.XCoorAxName = Name();
        const std::size_t axes = Below(graph.XCoorType == CoorType::kAxis ? 2 : 5);
        for (std::size_t i = 0; i < axes; ++i) {
            graph.YCoorAxName.push_back(Name());
            graph.YCoorAxColor.push_back(static_cast<ColorRef>(Below(0x1000000)));
            graph.YCoorAxDerivation.push_back(static_cast<std::int32_t>(Below(9)));
            graph.Triggers.push_back(
                {static_cast<TriggerTypeCode>(1 + Below(5)), Number(), Name()});
            graph.YScales.push_back(AxisScale());
        }
        if (Below(4) == 0) {
            graph.YScales.push_back(AxisScale());  // one that no axis has
        }
        graph.XScale = Coin() ? AxisScale()
                              : ScaleDefinition{ScaleTypeCode::kTime, 0.0001 + std::abs(Number()),
                                                ScaleAxCode::kManual, Number(), Number()};
        graph.InnerGuidingCircleDX = Radius();
        graph.OuterGuidingCircleDX = Radius();
        graph.InnerGuidingCircleDY = Number();
        return graph;
    }

    std::mt19937_64 m_random;
};

TEST(GraphFileRoundTrip, AnyListReadsBackAsItsNormalFormAndWritesTheSameBytes) {
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(seed);
        RandomGraphs random(seed);
        const std::vector<WavoGraph> graphs = random.List();
        const std::string add_text = random.Text();
        MIniData store;
        ASSERT_TRUE(GetGraphAsIniData(store, graphs, add_text));
        const std::string first = store.Content();

        const ReadResult result = ReadText(first, 0.001);
        ASSERT_TRUE(result.success) << result.error_text << "\n" << first;
        EXPECT_EQ(result.add_text, add_text);
        ASSERT_EQ(result.graphs.size(), graphs.size());
        for (std::size_t i = 0; i < graphs.size(); ++i) {
            ExpectSameGraph(result.graphs[i], NormalForm(graphs[i]));
        }

        // Blanks inside names are gone after the first reading; else nothing ever changes again.
        std::vector<WavoGraph> without_blanks = graphs;
        for (WavoGraph& graph : without_blanks) {
            for (std::string& name : graph.YCoorAxName) {
                std::erase(name, ' ');
            }
        }
        MIniData expected;
        ASSERT_TRUE(GetGraphAsIniData(expected, without_blanks, add_text));
        MIniData anew;
        ASSERT_TRUE(GetGraphAsIniData(anew, result.graphs, result.add_text));
        EXPECT_EQ(anew.Content(), expected.Content());
        ASSERT_TRUE(GetGraphAsIniData(store, result.graphs, result.add_text));
        EXPECT_EQ(store.Content(), expected.Content());
        const ReadResult again = ReadText(store.Content());
        ASSERT_EQ(again.graphs.size(), graphs.size());
        for (std::size_t i = 0; i < graphs.size(); ++i) {
            ExpectSameGraph(again.graphs[i], result.graphs[i]);
        }
        if (HasFailure()) {
            FAIL() << first;
        }
    }
}

TEST(GraphFileRoundTrip, ARadiusThatIsNoNumberIsWrittenAsNotSet) {
    for (const double radius : {kInf, kNaN, kNoRadius}) {
        MIniData store;
        WavoGraph graph = AxisGraph();
        graph.InnerGuidingCircleDX = radius;
        ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
        EXPECT_EQ(Value(store, "12", "InnerGuidingCircleDX"), "");
    }
}

/// What is read of a graph that was written alone; an entry of the error log per axis left out.
ReadResult Stored(const WavoGraph& graph, const std::vector<std::string>& left_out = {}) {
    std::vector<std::string> entries;
    for (const std::string& name : left_out) {
        entries.push_back("CAxSelect::GetGraphAsIniData(): axis [" + name + "] of graph " +
                          std::to_string(graph.GraphNumber) +
                          " left out, its name cannot stand in a file");
    }
    const testing::ExpectErrorLog expected(entries);
    MIniData store;
    EXPECT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    return ReadText(store.Content());
}

TEST(GraphFileRoundTrip, AYAxisThatCannotStandInAListIsLeftOutWithAllThatIsItsOwn) {
    WavoGraph rest = TimeGraph();
    for (const char* const name : {"", "A,B", ",", "A\nB", "A\r", " ", "\t \v"}) {
        SCOPED_TRACE(name);
        WavoGraph graph = TimeGraph();
        graph.YCoorAxName.insert(graph.YCoorAxName.begin() + 1, name);
        graph.YCoorAxColor.insert(graph.YCoorAxColor.begin() + 1, 17);
        graph.YCoorAxDerivation.insert(graph.YCoorAxDerivation.begin() + 1, 1);
        graph.Triggers.insert(graph.Triggers.begin() + 1, {TriggerTypeCode::kStopAbove, 4.0, name});
        graph.YScales.insert(graph.YScales.begin() + 1,
                             {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 1.0, 2.0});
        const ReadResult result = Stored(graph, {name});
        ASSERT_TRUE(result.success) << result.error_text;
        ASSERT_EQ(result.graphs.size(), 1U);
        ExpectSameGraph(result.graphs[0], NormalForm(rest));
    }
}

TEST(GraphFileRoundTrip, AGraphOfNothingButAxesThatAreLeftOutIsAGraphWithoutAxes) {
    WavoGraph graph = TimeGraph();
    graph.YCoorAxName = {"", "A,B"};
    const ReadResult result = Stored(graph, {"", "A,B"});
    ASSERT_TRUE(result.success) << result.error_text;
    ASSERT_EQ(result.graphs.size(), 1U);
    EXPECT_THAT(result.graphs[0].YCoorAxName, ::testing::IsEmpty());
    EXPECT_THAT(result.graphs[0].YScales, ::testing::IsEmpty());
}

TEST(GraphFileRoundTrip, AnXAxisIsLeftOutForALineEndOnly) {
    WavoGraph graph = AxisGraph();
    graph.XCoorAxName = "A\nB";
    EXPECT_EQ(Stored(graph, {"A\nB"}).graphs.at(0).XCoorAxName, "");
    for (const char* const name : {"A,B", "", "A B"}) {
        graph.XCoorAxName = name;
        EXPECT_EQ(Stored(graph).graphs.at(0).XCoorAxName, name);
    }
    graph.XCoorType = CoorType::kTime;  // the name is not written
    graph.XCoorAxName = "A\nB";
    EXPECT_TRUE(Stored(graph).success);
}

TEST(GraphFileRoundTrip, BoundsThatAreNoRangeAreWrittenAsOne) {
    const std::pair<double, double> ranges[] = {{20.0, 10.0}, {kInf, -kInf}, {kNaN, 1.0},
                                                {1.0, kNaN},  {kNaN, kNaN},  {0.0, -0.0}};
    for (const auto& [minimum, maximum] : ranges) {
        SCOPED_TRACE(std::to_string(minimum) + " " + std::to_string(maximum));
        WavoGraph graph = AxisGraph();
        graph.XScale.Minimum = graph.YScales[0].Minimum = minimum;
        graph.XScale.Maximum = graph.YScales[0].Maximum = maximum;
        const ReadResult result = Stored(graph);
        ASSERT_TRUE(result.success) << result.error_text;
        for (const ScaleDefinition& scale :
             {result.graphs[0].XScale, result.graphs[0].YScales[0]}) {
            EXPECT_LE(scale.Minimum, scale.Maximum);
            EXPECT_EQ(scale.ScaleAx, ScaleAxCode::kManual);
            if (minimum == 20.0) {
                EXPECT_EQ(scale.Minimum, 10.0);
                EXPECT_EQ(scale.Maximum, 20.0);
            }
        }
    }
}

TEST(GraphFileRoundTrip, AnXScaleWithoutAKindOrARangeGetsOne) {
    WavoGraph graph = AxisGraph();
    graph.XScale.ScaleAx = ScaleAxCode{};
    EXPECT_EQ(Stored(graph).graphs.at(0).XScale.ScaleAx, ScaleAxCode::kAutomatic);
    graph = TimeGraph();
    for (const double range : {0.0, -5.0, 0.00009, kNaN}) {
        graph.XScale.TimeRange = range;
        EXPECT_EQ(Stored(graph).graphs.at(0).XScale.TimeRange, 10.0);
    }
}

TEST(GraphFileRoundTrip, ADecimalCommaOfTheLocaleChangesNothing) {
    MIniData plain;
    ASSERT_TRUE(GetGraphAsIniData(plain, {AxisGraph(), TimeGraph()}, ""));
    const testing::CommaLocale locale;
    if (!testing::CommaLocale::IsSet()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    MIniData store;
    ASSERT_TRUE(GetGraphAsIniData(store, {AxisGraph(), TimeGraph()}, ""));
    EXPECT_EQ(store.Content(), plain.Content());
    const ReadResult result = Read(store);
    ASSERT_EQ(result.graphs.size(), 2U);
    EXPECT_EQ(result.graphs[0], AxisGraph());
    EXPECT_EQ(result.graphs[1].XScale.TimeRange, 2.5);
    EXPECT_EQ(result.graphs[1].YScales[0].Minimum, -10.25);
}

}  // namespace
}  // namespace wavo
