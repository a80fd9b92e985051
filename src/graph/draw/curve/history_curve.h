// The past of a stream over the time axis of a graph: another run at an offset in time, or a window
// of a recording.
//
// Asks its history for outlines of columns where it has them, else for whole rows of columns; for
// values only where there are gaps within a column or fewer lines than columns. The picture is that
// of the segments between successive values, each drawn by the painter.
#pragma once

#include <QLine>
#include <cstdint>
#include <limits>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/curve/finite_search.h"
#include "graph/draw/curve/history_columns.h"
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
        /// Lines behind it are not shown; it is, even if the scale ends a rounding error before it.
        std::int64_t last_line = std::numeric_limits<std::int64_t>::max() - 1;
    };

    /// `history` is not owned and outlives the curve. It may grow between two drawings.
    HistoryCurve(History& history, const Place& place)
        : m_history(history), m_place(place), m_outlined(history), m_finite(history) {}

    /// Shows another part.
    void SetPlace(const Place& place) { m_place = place; }
    [[nodiscard]] const History& Past() const { return m_history; }

    /// Smallest and largest finite value of what is shown; while that is not complete, of what is
    /// possible.
    [[nodiscard]] MinMax FiniteExtremes(const CurvePlot& plot);

    // Curve
    void Remap(CurvePlot& plot, const Remapping& what) override;
    void Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) override;

    /// The last drawing had all that it asked for, and nothing of it was lost since; else it shows
    /// what was there, and should be done again.
    [[nodiscard]] bool IsComplete() const {
        return m_is_complete && m_losses == m_history.Losses();
    }

 private:
    void FindPixels(const CurvePlot& plot);
    /// Finds the first line of each column, and the end of the last.
    void FindBounds(const CurvePlot& plot);
    [[nodiscard]] double TimeOf(std::int64_t line) const;
    [[nodiscard]] std::int64_t FirstLineFrom(double time) const;
    [[nodiscard]] bool IsDense() const;
    [[nodiscard]] MinMax ExtremesOf(const LineRange& lines);
    /// Takes m_whole for other lines. False when the history has no outlines.
    bool TakeWhole(const LineRange& lines);
    [[nodiscard]] MinMax FindFinite(const LineRange& lines);
    void BuildSpans();
    void BuildSegments(const QRect& area);
    /// The values of lines; those that are not there are NaN.
    [[nodiscard]] std::vector<double> ValuesOf(std::int64_t first, std::int64_t end);

    History& m_history;
    Place m_place;

    PixelEdges m_columns;
    PixelEdges m_rows;
    bool m_columns_found = false;
    bool m_rows_found = false;
    LineRange m_lines;  ///< of the history that may be shown
    std::vector<std::int64_t> m_bounds;
    HistoryColumns m_outlined;
    FiniteSearch m_finite;
    ColumnRow m_row;
    ColumnSpans m_spans;
    ColumnSpans m_dashed;  ///< what is painted of them where the curve is dashed
    std::vector<QLine> m_segments;
    /// What is known of all lines that are shown.
    struct Whole {
        LineRange lines;
        HistoryMoment since;
        ColumnOutline outline;
    };
    Whole m_whole;
    bool m_is_complete = true;
    bool m_is_scale_complete = true;  ///< the last FiniteExtremes had all
    bool m_is_scale_new = false;      ///< it was for the next drawing
    std::uint64_t m_losses = 0;       ///< when the last drawing began, with its scale
};

}  // namespace wavo
