// What stands in one row of an exported file belongs to one line of the master.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "edit_graph.h"
#include "export_fixture.h"

namespace wavo {
namespace {

using testing::EditGraph;

/// A circle of radius 100, one line per 4 ms, on X and Y; Z counts the lines.
class ExportedRows : public testing::Export {
 protected:
    static WavoGraph Graph(std::uint32_t number, const std::vector<std::string>& axes,
                           double range) {
        WavoGraph graph;
        graph.InitGraph(number, axes.front().c_str(), 0, nullptr);
        for (std::size_t i = 1; i < axes.size(); ++i) {
            graph.YCoorAxName.push_back(axes[i]);
            graph.YCoorAxColor.push_back(0);
            graph.YCoorAxDerivation.push_back(0);
            graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, axes[i]});
            graph.YScales.push_back(graph.YScales.front());
        }
        graph.XScale.TimeRange = range;
        return graph;
    }

    void Rebuild() {
        m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, {"X", "Y", "Z"}, {});
        m_board.DrawAll(m_picture, false);
    }

    /// Batches of 100 ms, each drawn.
    void Run(double seconds) {
        const int batches = static_cast<int>(std::lround(seconds / kCycleTime)) / 25;
        for (int batch = 0; batch < batches; ++batch) {
            std::vector<std::array<double, 3>> lines(25);
            for (std::array<double, 3>& line : lines) {
                const double angle = 2.0 * m_line;
                line = {100.0 * std::cos(angle), 100.0 * std::sin(angle), m_line++};
            }
            m_streams.Distribute({lines.front().data(), lines.size(), 3});
            m_board.DrawAll(m_picture, false);
        }
    }

    /// The rows of the file, as numbers.
    [[nodiscard]] std::vector<std::vector<double>> Rows() const {
        std::vector<std::vector<double>> rows;
        std::istringstream text(Text());
        std::string row;
        std::getline(text, row);  // the header
        while (std::getline(text, row)) {
            rows.emplace_back();
            std::istringstream numbers(row);
            for (std::string number; std::getline(numbers, number, ',');) {
                rows.back().push_back(std::strtod(number.c_str(), nullptr));
            }
        }
        return rows;
    }

    void ExpectCircle(std::size_t least_rows) const {
        const std::vector<std::vector<double>> rows = Rows();
        EXPECT_GE(rows.size(), least_rows);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            ASSERT_NEAR(std::hypot(rows[row][0], rows[row][1]), 100.0, 1e-5) << "row " << row;
        }
    }

    double m_line = 0.0;
    QImage m_picture{300, 200, QImage::Format_RGB32};
};

TEST_F(ExportedRows, OfStreamsThatReachBackDifferentlyAreOnACircle) {
    m_graphs.Replace({Graph(7, {"X", "Y"}, 2.0), Graph(8, {"X"}, 60.0)});
    Rebuild();
    Run(20.0);
    EditGraph(m_graphs, 0, [](WavoGraph& graph) { graph.XScale.TimeRange = 30.0; });
    Rebuild();
    Save();
    ExpectCircle(490);
    Run(3.0);
    Save();
    ExpectCircle(1240);
}

TEST_F(ExportedRows, OfAStreamThatATriggerStoppedEndWithItsLastLine) {
    m_graphs.Replace({Graph(7, {"X", "Y", "Z"}, 10.0), Graph(8, {"X"}, 10.0)});
    EditGraph(m_graphs, 1, [](WavoGraph& graph) {
        graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 99.99, "X"};
    });
    Rebuild();
    Run(0.2);
    ASSERT_EQ(m_board.Drawers()[1]->State(), RunState::kStoppedAfterStop);
    Run(2.0);
    Save();
    ExpectCircle(25);
    EXPECT_LT(Rows().back()[2], 50.0);
    // It takes values again: the lines that it missed are left out.
    m_board.Drawers()[1]->SetZoomRange(0.1, 0.5);  // which leaves the trigger
    m_board.DrawAll(m_picture, false);
    m_streams.Enable();
    Run(1.0);
    Save();
    ExpectCircle(25 + 250);
    const std::vector<std::vector<double>> rows = Rows();
    int jumps = 0;
    for (std::size_t row = 1; row < rows.size(); ++row) {
        jumps += rows[row][2] == rows[row - 1][2] + 1.0 ? 0 : 1;
    }
    EXPECT_EQ(jumps, 1);
}

TEST_F(ExportedRows, OfAZoomAreThoseOfItsSpan) {
    m_graphs.Replace({Graph(7, {"Z"}, 4.0)});
    Rebuild();
    Run(3.0);
    m_graphs.Put(Graph(7, {"X", "Y", "Z"}, 4.0));
    Rebuild();
    Run(1.0);
    m_board.Drawers()[0]->SetZoomRange(2.5, 3.5);
    m_board.DrawAll(m_picture, false);
    Save();
    ExpectCircle(125);
    EXPECT_EQ(Rows().front()[2], 750.0);
    EXPECT_EQ(Rows().back()[2], 874.0);
}

TEST_F(ExportedRows, OfADerivativeThatBeganLaterSayWhereItHasNoValue) {
    m_graphs.Replace({Graph(7, {"Z"}, 4.0)});
    Rebuild();
    Run(0.4);
    WavoGraph graph = Graph(7, {"Z", "X"}, 4.0);
    graph.YCoorAxDerivation[1] = 2;
    m_graphs.Put(graph);
    Rebuild();
    Run(0.1);
    Save();
    const std::vector<std::vector<double>> rows = Rows();
    ASSERT_EQ(rows.size(), 25U);
    EXPECT_EQ(rows[0][0], 100.0);
    EXPECT_TRUE(std::isnan(rows[0][1]));
    EXPECT_TRUE(std::isnan(rows[1][1]));
    EXPECT_FALSE(std::isnan(rows[2][1]));
}

}  // namespace
}  // namespace wavo
