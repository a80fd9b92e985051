// Graphs and graph files for the tests of the graph definitions.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "expect_errors.h"
#include "graph/model/graph_ini_data.h"
#include "graph/model/wavo_graph.h"
#include "support/mini_data.h"

namespace wavo::testing {

/// A graph of two y axes over time, every member set.
inline WavoGraph TimeGraph() {
    WavoGraph graph;
    graph.GraphNumber = 3;
    graph.Mode = GraphMode::kClassic;
    graph.ModeAx = AxisDrawMode::kLines;
    graph.ZeroLines = true;
    graph.XCoorType = CoorType::kTime;
    graph.YCoorAxName = {"X1", "Y"};
    graph.YCoorAxColor = {255, 16744448};
    graph.YCoorAxDerivation = {0, 2};
    graph.Triggers = {{TriggerTypeCode::kNone, 0.0, "X1"},
                      {TriggerTypeCode::kStopBelow, -1.5, "Y"}};
    graph.XScale = {ScaleTypeCode::kTime, 2.5, {}, 0.0, 0.0};
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -10.25, 10.5},
                     {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0}};
    graph.UpdateGuidingCircles();
    return graph;
}

/// A graph of an axis over an axis, every member set.
inline WavoGraph AxisGraph() {
    WavoGraph graph;
    graph.GraphNumber = 12;
    graph.Mode = GraphMode::kContinuity;
    graph.ModeAx = AxisDrawMode::kPoints;
    graph.AutoCircle = true;
    graph.FadeOutTime = 0.75;
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.YCoorAxName = {"Y"};
    graph.YCoorAxColor = {65280};
    graph.YCoorAxDerivation = {0};
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 1.0, "Y"}};
    graph.XScale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -60.0, 60.125};
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -60.0, 60.0}};
    graph.InnerGuidingCircleDX = 49.95;
    graph.OuterGuidingCircleDX = 50.05;
    graph.UpdateGuidingCircles();
    return graph;
}

struct ReadResult {
    bool success = false;
    std::vector<WavoGraph> graphs;
    std::string error_text;
    std::string add_text;
};

inline ReadResult Read(const MIniData& store, double min_fade_out_time = 0.001) {
    ReadResult result;
    result.success = CreateGraphsFromIniData(store, result.graphs, result.error_text,
                                             result.add_text, min_fade_out_time);
    return result;
}

inline ReadResult ReadText(std::string_view text, double min_fade_out_time = 0.001) {
    MIniData store;
    EXPECT_TRUE(store.SetContent(text)) << store.LastErrorText();
    return Read(store, min_fade_out_time);
}

/// The entries of a graph that is in order, section 1, which tests change one at a time.
class GraphText {
 public:
    explicit GraphText(const WavoGraph& graph) {
        WavoGraph first = graph;
        first.GraphNumber = 1;
        EXPECT_TRUE(GetGraphAsIniData(m_store, {first}, ""));
    }
    GraphText& Set(const char* name, const char* value) {
        EXPECT_TRUE(m_store.SetStringEntry("1", name, value));
        return *this;
    }
    GraphText& Delete(const char* name) {
        EXPECT_TRUE(m_store.DeleteEntry("1", name)) << name;
        return *this;
    }
    GraphText& SetGraphs(const char* value) {
        EXPECT_TRUE(m_store.SetStringEntry("GENERAL", "Graphs", value));
        return *this;
    }
    [[nodiscard]] ReadResult Read(double min_fade_out_time = 0.001) const {
        return testing::Read(m_store, min_fade_out_time);
    }
    /// The one graph of a text that is in order.
    [[nodiscard]] WavoGraph Graph() const {
        const ReadResult result = Read();
        EXPECT_TRUE(result.success) << result.error_text;
        EXPECT_EQ(result.graphs.size(), 1U);
        return result.graphs.empty() ? WavoGraph() : result.graphs.front();
    }
    /// Expects that reading ends with these words, in the log and for the user.
    void ExpectError(const std::string& words) const {
        const ExpectErrorLog expected({"CAxSelect::CreateGraphsFromIniData(): " + words});
        const ReadResult result = Read();
        EXPECT_FALSE(result.success);
        EXPECT_TRUE(result.graphs.empty());
        EXPECT_EQ(result.error_text, words + ", graph [1]");
    }

 private:
    MIniData m_store;
};

inline GraphText TimeText() {
    return GraphText(TimeGraph());
}
inline GraphText AxisText() {
    return GraphText(AxisGraph());
}

/// The value of an entry; "(missing)" when there is none.
inline std::string Value(const MIniData& store, const char* section, const char* name) {
    std::string value;
    return store.GetStringEntry(section, name, value) ? value : "(missing)";
}

}  // namespace wavo::testing
