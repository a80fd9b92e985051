// What a graph has recorded after a trigger, stream by stream: its buffers may have run on, its
// curves have not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "session/line_values.h"

namespace wavo {

/// Whether the curves of a graph show a recording, be it zoomed.
[[nodiscard]] bool HoldsRecording(const GraphDraw& graph);

/// The lines of the points that the curves of a graph hold, oldest first. Sequences count as the
/// recorder's rows.
[[nodiscard]] std::vector<LineLog::Run> LinesOfCurves(const GraphDraw& graph);

/// The lines of the points of a graph over an axis, oldest first; sequences count as its points, up
/// to a constant.
[[nodiscard]] std::vector<LineLog::Run> LinesOfPoints(const GraphDraw& graph);

/// The graph shows a past that its buffers do not hold: an open recording.
[[nodiscard]] bool ShowsOpenRecording(const GraphDraw& graph);

/// The lines that a graph can show something of, oldest first: of the recording that is open, with
/// its gaps; of its own recording; else all that its buffers hold.
[[nodiscard]] std::vector<LineLog::Run> LinesOfGraph(const GraphDraw& graph);

/// The lines that a graph shows now, from the oldest to the newest of them.
[[nodiscard]] LineRange ShownLines(const GraphDraw& graph);

/// A line of an open recording that has a value in a curve of the graph: the line itself, else the
/// next one in a direction (1 or -1), else in the other. Nothing when there is none. REQUIRES:
/// ShowsOpenRecording.
[[nodiscard]] std::optional<std::int64_t> LineWithValue(const GraphDraw& graph, std::int64_t line,
                                                        int direction);

class RecordedValues final : public LineValues {
 public:
    /// `stream` counts as in the recorder: the y axes, then the x axis. The graph is not owned and
    /// outlives the values; it holds a recording whenever it is asked.
    RecordedValues(const GraphDraw& graph, std::size_t stream) : m_graph(graph), m_stream(stream) {}

    // LineValues
    [[nodiscard]] LineRange Lines() const override;
    bool Read(std::int64_t first, std::span<double> values) override;

 private:
    [[nodiscard]] double ValueOf(std::uint64_t place) const;

    const GraphDraw& m_graph;
    const std::size_t m_stream;
};

}  // namespace wavo
