// Where things stand in a graph over time: logical pixel columns, times of the displayed axis,
// lines of the master and values, each from each.
//
// Lines have their absolute numbers: a mark that stands on a line stays on it while the picture
// moves, is zoomed, or begins anew after a reset. Lines that a master never told count back from
// the newest, which is -1.
//
// Over an axis nothing stands anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "graph/values/line_log.h"
#include "graph/values/time_window.h"

namespace wavo {

class GraphDraw;
class TimeCurve;

/// Looks at a graph, which is not owned; for use until its next step.
class GraphPlaces {
 public:
    explicit GraphPlaces(const GraphDraw& graph) : m_graph(graph) {}

    /// The time, seconds, at a logical pixel column of the displayed time axis; -1 outside the plot
    /// area.
    [[nodiscard]] double TimeAt(int x) const;
    /// The logical pixel column of a time; nothing outside the displayed time axis.
    [[nodiscard]] std::optional<int> PixelAt(double time) const;

    /// The span for SetZoomRange that shows the samples at places of the display, `marked` seconds
    /// from its left border. In the order of time these are one; the picture of a sweep that has
    /// wrapped is not. A mark across the gap of a sweep takes the side that holds more of it.
    [[nodiscard]] TimeWindow ZoomSpanOf(const TimeWindow& marked) const;

    /// The line whose values are seen at a time: that of the nearest sample. Of a sweep that has
    /// passed twice it is the newer one.
    [[nodiscard]] std::optional<std::int64_t> LineAt(double time) const;
    /// The time at which a line is seen; nothing for one that is not.
    [[nodiscard]] std::optional<double> TimeOf(std::int64_t line) const;

    /// The time at which a line is seen, or would be if the time axis went on to both sides;
    /// nothing while no line is seen at all.
    [[nodiscard]] std::optional<double> TimeOfLine(std::int64_t line) const;

    /// The value that a y axis shows at a time; nothing where it has none. REQUIRES: the axis is
    /// one of the graph.
    [[nodiscard]] std::optional<double> ValueAt(std::size_t axis, double time) const;

 private:
    [[nodiscard]] std::optional<double> PastValueAt(std::size_t axis, double time) const;
    /// The samples of a curve that shows some; null when there is none.
    [[nodiscard]] const TimeCurve* AnyCurve() const;
    /// The lines of the rows in the zoom window.
    [[nodiscard]] std::vector<LineLog::Run> WindowLines() const;
    /// The row, of all that were taken, of the first sample that a curve shows.
    [[nodiscard]] std::uint64_t FirstRow(const TimeCurve& curve) const;
    /// The lines of what a curve shows, by those rows.
    [[nodiscard]] std::vector<LineLog::Run> CurveLines(const TimeCurve& curve) const;

    const GraphDraw& m_graph;
};

}  // namespace wavo
