#include "view/graph_board.h"

#include <algorithm>
#include <set>
#include <utility>

#include "support/diagnostics.h"
#include "ui/dialogs/view_settings.h"

namespace wavo {

GraphBoard::GraphBoard(GraphDrawHost& host, FaultReport report_fault)
    : m_host(host), m_report_fault(std::move(report_fault)) {}

std::vector<QRect> SplitGraphArea(const QRect& area, std::size_t count) {
    std::vector<QRect> rectangles;
    if (count == 0) {
        return rectangles;
    }
    const int height = std::max(1, area.height() / static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
        rectangles.emplace_back(area.left(), area.top() + static_cast<int>(i) * height,
                                area.width(), height);
    }
    return rectangles;
}

const GraphDraw* GraphBoard::FindDrawerWithValues(std::uint32_t graph_number) const {
    const GraphDraw* found = nullptr;
    double latest = 0.0;
    for (const auto& drawer : m_drawers) {
        if (drawer->Graph().GraphNumber == graph_number && drawer->LatestTime() > latest) {
            found = drawer.get();
            latest = drawer->LatestTime();
        }
    }
    return found;
}

void GraphBoard::CreateAllGraphRects(const QRect& area, double cycle_time,
                                     const std::vector<std::string>& axis_names,
                                     const ViewSettings& settings) {
    m_drawers.clear();
    const std::vector<QRect> rectangles = SplitGraphArea(area, m_graphs.size());
    const GraphDisplaySettings display{settings.background, settings.font, settings.scale_lines_x,
                                       settings.scale_lines_y};
    for (std::size_t i = 0; i < m_graphs.size(); ++i) {
        m_drawers.push_back(std::make_unique<GraphDraw>(
            rectangles[i], m_graphs[i], m_host, display, cycle_time, settings.scale_lines_x,
            settings.scale_lines_y, StreamsOf(m_graphs[i], cycle_time)));
    }
    NoteDrawnSizes();
    m_columns_share_buffers =
        std::set<std::string>(axis_names.begin(), axis_names.end()).size() != axis_names.size();
    m_distribution.assign(axis_names.size(), {});
    for (std::size_t a = 0; a < axis_names.size(); ++a) {
        for (GraphValue& value : m_registry.Values()) {
            if (value.Name() == axis_names[a]) {
                m_distribution[a].push_back(&value);
            }
        }
    }
    // A box runs an event loop, which must not meet a board that is half built.
    for (const std::string& fault : std::exchange(m_faults, {})) {
        m_report_fault(fault);
    }
}

GraphStreams GraphBoard::StreamsOf(const WavoGraph& graph, double cycle_time) {
    const double time_range = GraphTimeRange(graph);
    GraphStreams streams;
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        streams.y.push_back(
            FindBuffer(graph.YCoorAxName[i], cycle_time, time_range, graph.YCoorAxDerivation[i]));
    }
    if (graph.XCoorType == CoorType::kAxis) {
        streams.x = FindBuffer(graph.XCoorAxName, cycle_time, time_range, 0);
    }
    return streams;
}

GraphValue* GraphBoard::FindBuffer(const std::string& axis_name, double cycle_time,
                                   double time_range, std::int32_t derivation) {
    if (cycle_time == 0.0) {  // no master yet: nothing is known of time
        return nullptr;
    }
    const auto [value, reason] =
        m_registry.GetGraphValueFifo(axis_name, cycle_time, time_range, derivation);
    if (value == nullptr) {
        MERRLOG("CWavoView::GetGraphValueFifo(): %s", reason);
        m_faults.emplace_back(reason);
        MERRLOG("CWavoView::CreateAllGraphRects(): GetGraphValueFifo() failed");
    }
    return value;
}

void GraphBoard::Clear() {
    m_drawers.clear();
    m_graphs.clear();
}

void GraphBoard::Layout(const QRect& area) {
    const std::vector<QRect> rectangles = SplitGraphArea(area, m_drawers.size());
    for (std::size_t i = 0; i < m_drawers.size(); ++i) {
        m_drawers[i]->SetRectangle(rectangles[i]);
    }
    NoteDrawnSizes();
}

void GraphBoard::NoteDrawnSizes() {
    // The user may have added or removed graphs since the drawers were made.
    for (const auto& drawer : m_drawers) {
        const auto graph = std::find_if(m_graphs.begin(), m_graphs.end(), [&](const WavoGraph& g) {
            return g.GraphNumber == drawer->Graph().GraphNumber;
        });
        if (graph != m_graphs.end()) {
            graph->Drawn = {drawer->PlotArea().width(), drawer->PlotArea().height()};
        }
    }
}

void GraphBoard::DropBuffers() {
    for (const auto& drawer : m_drawers) {
        drawer->DetachValues();
    }
    m_distribution.clear();
    m_registry.Clear();
}

void GraphBoard::Distribute(const double* lines, std::uint64_t line_count,
                            std::uint64_t axis_count) {
    ExpectLines();
    m_lines += static_cast<std::int64_t>(line_count);
    if (m_columns_share_buffers) {
        DistributeLineByLine(lines, line_count, axis_count);
        return;
    }
    const std::size_t columns =
        std::min<std::size_t>(m_distribution.size(), static_cast<std::size_t>(axis_count));
    for (std::size_t a = 0; a < columns; ++a) {
        for (GraphValue* const value : m_distribution[a]) {
            if (value != nullptr) {
                value->SetValues(lines + a, line_count, axis_count);
            }
        }
    }
}

// The buffers may have missed lines, each others.
void GraphBoard::ExpectLines() {
    for (GraphValue& value : m_registry.Values()) {
        value.ExpectLine(m_lines);
    }
}

// A buffer that takes more than one column gets the values in the order of the lines.
void GraphBoard::DistributeLineByLine(const double* lines, std::uint64_t line_count,
                                      std::uint64_t axis_count) {
    const std::size_t columns =
        std::min<std::size_t>(m_distribution.size(), static_cast<std::size_t>(axis_count));
    for (std::uint64_t i = 0; i < line_count; ++i) {
        for (std::size_t a = 0; a < columns; ++a) {
            for (GraphValue* const value : m_distribution[a]) {
                value->SetValue(lines[i * axis_count + a]);
            }
        }
    }
}

void GraphBoard::DrawAll(QImage& picture, bool restart) {
    for (const auto& drawer : m_drawers) {
        drawer->DrawGraph(picture, restart);
    }
    for (GraphValue& value : m_registry.Values()) {
        value.EmptyNewValues();
    }
}

void GraphBoard::ResetBuffers() {
    for (GraphValue& value : m_registry.Values()) {
        value.Reset();
    }
}

void GraphBoard::EnableBuffers() {
    for (GraphValue& value : m_registry.Values()) {
        if (!value.Enabled()) {  // it missed samples
            value.ForgetHistory();
            value.SetEnabled(true);
        }
    }
}

}  // namespace wavo
