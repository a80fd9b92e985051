// The columns of a history on a plot area, looked at only as closely as their pixels need.
//
// From far a column is known by what is certain of its values and what is possible. Where both fall
// on the same rows, and the way to the next column stays within them, nothing closer can change a
// pixel. The others are looked at closer, from left to right, as far as the history lets it in one
// drawing; what is then still in doubt is drawn with what is possible.
//
// What was found out is kept until the bounds have changed, or lines within them were lost.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "graph/draw/curve/broken_column.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_edges.h"
#include "graph/values/min_max_pyramid.h"
#include "source/history.h"

namespace wavo {

class HistoryColumns {
 public:
    /// `history` is not owned and outlives this object.
    explicit HistoryColumns(History& history) : m_history(history) {}

    /// Takes the columns of other bounds. False when the history has no outlines; the other calls
    /// are then of no use. REQUIRES: the bounds do not fall.
    bool SetBounds(const std::vector<std::int64_t>& bounds);

    /// Looks at the columns and writes what they cover, by rows from bottom to top. True when all
    /// of it is exact, and still is. REQUIRES: no column between two others is without lines.
    bool Build(const PixelEdges& rows, ColumnSpans& spans);

    /// Every column that has lines was looked at exactly.
    [[nodiscard]] bool AreAllExact() const;
    /// Smallest and largest finite one of the extremes that are known to be possible, of all
    /// columns.
    [[nodiscard]] MinMax Extremes() const;
    /// An infinite one is among them: it stands before a finite one that is not known.
    [[nodiscard]] bool HasInfinite() const;

 private:
    /// Rows of what is certain of a column, and of what is possible; none when top > bottom.
    struct Rows {
        std::int32_t certain_top = 0;
        std::int32_t certain_bottom = -1;
        std::int32_t possible_top = 0;
        std::int32_t possible_bottom = -1;
    };

    [[nodiscard]] LineRange LinesOf(std::size_t column) const {
        return {m_bounds[column], m_bounds[column + 1]};
    }
    void FindRows(const PixelEdges& rows, std::size_t column);
    /// A closer look may change pixels of the column or of one beside it.
    [[nodiscard]] bool IsInDoubt(const PixelEdges& rows, std::size_t column) const;
    /// The way from a column to the next one may leave the rows that it covers.
    [[nodiscard]] bool MayLeave(std::size_t column) const;
    /// It has values, and breaks between them.
    [[nodiscard]] bool IsBroken(std::size_t column) const {
        return m_columns[column].IsExact() && m_columns[column].missing &&
               m_columns[column].HasExtremes();
    }
    /// Forgets what was found for other rows.
    void TakeRows(const PixelEdges& rows);
    // False when the history has spent what a drawing may read.
    bool LookCloser(const PixelEdges& rows);
    bool LookIntoBroken(const PixelEdges& rows);
    void Emit(const PixelEdges& rows, ColumnSpans& spans) const;

    History& m_history;
    std::vector<std::int64_t> m_bounds;
    HistoryMoment m_since;  ///< when they were taken
    std::vector<ColumnOutline> m_columns;
    std::vector<Rows> m_rows;
    std::vector<double> m_edges;                   ///< of rows that m_broken was found for
    std::map<std::size_t, BrokenColumn> m_broken;  ///< columns that are, as far as they were found
};

}  // namespace wavo
