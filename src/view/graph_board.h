// The graphs on the screen: their definitions, the drawers that draw them, the value buffers that
// feed them, and which buffers take the values of which axis column.
//
// Invariants:
// 1. Drawers never outlive the buffers they refer to: DropBuffers detaches them first.
// 2. Distribution list a holds every buffer of axis a of the master, whatever its derivation. Axes
//    of one name share their buffers.
#pragma once

#include <QRect>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "graph/model/wavo_graph.h"
#include "graph/values/graph_value_registry.h"

class QImage;

namespace wavo {

struct ViewSettings;

class GraphBoard {
 public:
    /// Told the words of a fault that the user must see.
    using FaultReport = std::function<void(const std::string&)>;

    /// `host` serves the drawers; not owned, outlives the board.
    GraphBoard(GraphDrawHost& host, FaultReport report_fault);

    [[nodiscard]] std::vector<WavoGraph>& Graphs() { return m_graphs; }
    [[nodiscard]] const std::vector<WavoGraph>& Graphs() const { return m_graphs; }
    [[nodiscard]] GraphValueRegistry& Registry() { return m_registry; }
    [[nodiscard]] const std::vector<std::unique_ptr<GraphDraw>>& Drawers() const {
        return m_drawers;
    }

    /// The drawer of a graph that holds values, of several of that number the one with the newest;
    /// null when there is none.
    [[nodiscard]] const GraphDraw* FindDrawerWithValues(std::uint32_t graph_number) const;

    /// Makes a drawer for every graph, one below the other in `area` (pixels), with the buffers of
    /// its streams, and rebuilds the distribution lists for `axis_names`. While `cycle_time`
    /// (seconds) is 0 the drawers get no buffers.
    void CreateAllGraphRects(const QRect& area, double cycle_time,
                             const std::vector<std::string>& axis_names,
                             const ViewSettings& settings);

    /// Moves every drawer to its place in `area`.
    void Layout(const QRect& area);

    /// Destroys all graphs: definitions and drawers. The buffers stay.
    void Clear();

    /// Destroys all buffers and empties the distribution lists. The drawers keep what they show.
    void DropBuffers();

    /// Hands `line_count` lines of `axis_count` values to the buffers, in order.
    void Distribute(const double* lines, std::uint64_t line_count, std::uint64_t axis_count);

    /// One drawing step of all graphs; afterwards the new values of all buffers are emptied.
    void DrawAll(QImage& picture, bool restart);

    void ResetBuffers();
    /// Lets all buffers take values again; those that missed some begin their derivatives anew.
    void EnableBuffers();

    /// The buffers of column a, in the order in which they were made.
    [[nodiscard]] std::span<const std::vector<GraphValue*>> DistributionLists() const {
        return m_distribution;
    }

 private:
    void ExpectLines();
    void DistributeLineByLine(const double* lines, std::uint64_t line_count,
                              std::uint64_t axis_count);
    /// Tells the definitions how large their graphs are drawn.
    void NoteDrawnSizes();
    GraphStreams StreamsOf(const WavoGraph& graph, double cycle_time);
    GraphValue* FindBuffer(const std::string& axis_name, double cycle_time, double time_range,
                           std::int32_t derivation);

    GraphDrawHost& m_host;
    const FaultReport m_report_fault;
    std::vector<WavoGraph> m_graphs;
    GraphValueRegistry m_registry;
    std::vector<std::unique_ptr<GraphDraw>> m_drawers;
    std::vector<std::vector<GraphValue*>> m_distribution;
    std::vector<std::string> m_faults;     ///< found while the drawers are made, for the user
    std::int64_t m_lines = 0;              ///< handed out so far
    bool m_columns_share_buffers = false;  ///< the master has axes of the same name
};

/// Splits `area` into `count` rectangles of equal height (at least 1), one below the other.
std::vector<QRect> SplitGraphArea(const QRect& area, std::size_t count);

}  // namespace wavo
