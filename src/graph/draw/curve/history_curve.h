// Another run, laid over the time axis of a graph: the past of a stream at an offset in time.
//
// Asks its history for whole rows of columns, and for values only where there are gaps within a
// column or fewer lines than columns. The picture is that of the segments between successive
// values, each drawn by the painter.
#pragma once

#include <QLine>
#include <cstdint>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_edges.h"
#include "source/history.h"

namespace wavo {

class HistoryCurve final : public Curve {
 public:
    /// Which part of a history stands where.
    struct Place {
        std::int64_t first_line = 0;  ///< lines before it are not shown
        double offset = 0.0;          ///< time of the first line on the axis, seconds
        double step = 0.0;            ///< seconds from line to line; above 0
    };

    /// `history` is not owned and outlives the curve. It may grow between two drawings.
    HistoryCurve(History& history, const Place& place) : m_history(history), m_place(place) {}

    // Curve
    void Remap(CurvePlot& plot, const Remapping& what) override;
    void Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) override;

    /// The last drawing had all that it asked for; else it shows what was there, and should be done
    /// again.
    [[nodiscard]] bool IsComplete() const { return m_is_complete; }

 private:
    void FindPixels(const CurvePlot& plot);
    /// Finds the first line of each column, and the end of the last.
    void FindBounds(const CurvePlot& plot);
    [[nodiscard]] double TimeOf(std::int64_t line) const;
    [[nodiscard]] std::int64_t FirstLineFrom(double time) const;
    [[nodiscard]] bool IsDense() const;
    void BuildSpans();
    void BuildSegments(const QRect& area);
    /// The values of lines; those that are not there are NaN.
    [[nodiscard]] std::vector<double> ValuesOf(std::int64_t first, std::int64_t end);

    History& m_history;
    Place m_place;

    PixelEdges m_columns;
    PixelEdges m_rows;
    bool m_pixels_found = false;
    LineRange m_lines;  ///< of the history that may be shown
    std::vector<std::int64_t> m_bounds;
    ColumnRow m_row;
    ColumnSpans m_spans;
    std::vector<QLine> m_segments;
    std::uint64_t m_drawings = 0;
    bool m_is_complete = true;
};

}  // namespace wavo
