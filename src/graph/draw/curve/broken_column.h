// A column of a history whose line is broken by lines without values: which rows it covers.
//
// What lies between two breaks covers its rows and those between them; single values cover none. To
// know where the breaks are, all values would have to be read. They are only where they may add a
// row: a part whose rows, and those of the way to the next part, are covered already, is left as it
// is. What is kept is bounded by the rows, not by the lines.
//
// Invariants:
// 1. Parts are looked at from left to right, and each once; where the history lets a drawing read
//    no further, the next one goes on.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_edges.h"
#include "graph/draw/raster/row_set.h"
#include "source/history.h"

namespace wavo {

class BrokenColumn {
 public:
    /// The column of these lines. REQUIRES: `outline` is exact, has extremes, and misses lines.
    BrokenColumn(const LineRange& lines, const ColumnOutline& outline)
        : m_lines(lines), m_range{outline.certain_minimum, outline.certain_maximum} {}

    /// Looks further. False when the history has spent what a drawing may read. REQUIRES: the same
    /// history and rows each time.
    bool GoOn(History& history, const PixelEdges& rows);
    [[nodiscard]] bool IsDone() const { return m_is_done; }

    /// Draws it. REQUIRES: IsDone.
    void Emit(std::int32_t column, SpanBuilder& builder, ColumnSpans& spans) const;

 private:
    /// Lines that were cut into parts. Of each part first itself is looked at, then the way to the
    /// next one.
    struct Node {
        std::vector<std::int64_t> bounds;
        std::vector<ColumnOutline> parts;
        std::size_t step = 0;

        [[nodiscard]] LineRange LinesOf(std::size_t part) const {
            return {bounds[part], bounds[part + 1]};
        }
    };
    /// Who is asked, and for which rows.
    struct Asked {
        History& history;
        const PixelEdges& rows;

        [[nodiscard]] RowStretch Of(const MinMax& range) const {
            const std::int32_t lowest = rows.Size() - 1;
            return {lowest - rows.IndexOf(range.maximum), lowest - rows.IndexOf(range.minimum)};
        }
    };

    // False: as GoOn, and nothing has changed.
    bool FindEnds(const Asked& asked);
    bool TakeStep(const Asked& asked);
    bool LookInto(const Asked& asked, const LineRange& lines);
    bool TakeValues(const Asked& asked, const LineRange& lines);
    void TakeKnown(const Asked& asked, const Node& node);

    /// The rows that a part may cover, and no other ones.
    [[nodiscard]] RowStretch RowsOf(const Asked& asked, const ColumnOutline& part) const;

    LineRange m_lines;
    MinMax m_range;
    double m_first = std::numeric_limits<double>::quiet_NaN();  ///< of its first line
    double m_last = std::numeric_limits<double>::quiet_NaN();   ///< of its last line
    std::size_t m_ends_found = 0;
    bool m_is_begun = false;
    bool m_is_done = false;
    RowSet m_covered;
    std::vector<Node> m_nodes;  ///< the last one is in work, and lies in the one before
};

}  // namespace wavo
