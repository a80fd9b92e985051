// The sample graphs in data/graphs: each reads, and is in the form in which it would be saved.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "graph/model/graph_ini_data.h"
#include "support/mini_data.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> SampleFiles() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(WAVO_SAMPLE_GRAPHS)) {
        files.push_back(entry.path().string());
    }
    return files;
}

TEST(SampleGraphs, AreInTheFormInWhichTheyWouldBeSaved) {
    const std::vector<fs::path> files = SampleFiles();
    EXPECT_GE(files.size(), 3U);
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        EXPECT_EQ(file.extension(), ".ini");
        std::ostringstream bytes;
        bytes << std::ifstream(file, std::ios::binary).rdbuf();

        MIniData store;
        ASSERT_TRUE(store.Open(file.string())) << store.LastErrorText();
        std::vector<WavoGraph> graphs;
        std::string error_text;
        std::string add_text;
        ASSERT_TRUE(CreateGraphsFromIniData(store, graphs, error_text, add_text, 0.001))
            << error_text;
        EXPECT_FALSE(graphs.empty());
        EXPECT_FALSE(add_text.empty());
        ASSERT_TRUE(GetGraphAsIniData(store, graphs, add_text));
        EXPECT_EQ(store.Content(), bytes.str());
        // Settings belong to a graph file; without them reading it would be reported.
        for (const char* const section : {"BKCOLOR", "GRAPH_FONT", "SCALE_LINES", "AX_EDIT"}) {
            EXPECT_TRUE(store.HasSection(section)) << section;
        }
    }
}

TEST(SampleGraphs, ShowSomethingOnBlack) {
    for (const fs::path& file : SampleFiles()) {
        SCOPED_TRACE(file.filename().string());
        MIniData store;
        ASSERT_TRUE(store.Open(file.string()));
        std::vector<WavoGraph> graphs;
        std::string error_text;
        std::string add_text;
        ASSERT_TRUE(CreateGraphsFromIniData(store, graphs, error_text, add_text, 0.001));
        for (const WavoGraph& graph : graphs) {
            EXPECT_FALSE(graph.YCoorAxName.empty());
            if (graph.XCoorType == CoorType::kAxis) {
                EXPECT_FALSE(graph.XCoorAxName.empty());
                EXPECT_GE(graph.FadeOutTime, 1.0);
            }
            for (const ColorRef color : graph.YCoorAxColor) {
                const double brightness = 0.30 * (color & 0xFFU) + 0.59 * (color >> 8U & 0xFFU) +
                                          0.11 * (color >> 16U & 0xFFU);
                EXPECT_GT(brightness, 100.0) << color;
            }
        }
    }
}

}  // namespace
}  // namespace wavo
