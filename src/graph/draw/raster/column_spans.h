// What a curve covers in each pixel column, and how samples become that.
//
// The picture is, pixel for pixel, the union of the segments between successive samples, each drawn
// by the painter as one line of one device pixel. A segment within a column covers the rows between
// its ends. A segment to the next column covers, in the first of them, the rows from its first end
// up to but not including its second, and in the next the row of its second end. On long ways down
// the painter leaves the second end in the first column (EndsEarly).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "graph/draw/raster/pixel_edges.h"
#include "graph/values/min_max_pyramid.h"

namespace wavo {

/// Whether the painter leaves the last row of a segment that goes one column to the right and
/// `rows` rows down in its first column.
bool EndsEarly(std::int32_t rows);
/// Segments that go down less never end early.
inline constexpr std::int32_t kLongWayDown = 181;

/// Rows of a plot area that a curve covers, column by column; row 0 is the top.
struct ColumnSpans {
    struct Span {
        std::int32_t column;
        std::int16_t top;
        std::int16_t bottom;

        friend bool operator==(const Span&, const Span&) = default;
    };

    /// The most rows there can be.
    static constexpr std::int32_t kMostRows = 32767;
    /// top > bottom: nothing in this column.
    static constexpr std::int16_t kNoTop = 32767;
    static constexpr std::int16_t kNoBottom = -1;

    std::vector<std::int16_t> top;
    std::vector<std::int16_t> bottom;
    std::vector<Span> more;  ///< further spans of a column, apart from its first

    void Clear(std::int32_t columns);
    [[nodiscard]] std::int32_t Columns() const { return static_cast<std::int32_t>(top.size()); }
    /// Adds rows to a column: to its span when they touch it.
    void Add(std::int32_t column, std::int32_t first_row, std::int32_t last_row);
    /// The same for successive columns from `column` on.
    void AddRow(std::int32_t column, std::span<const std::int32_t> first_rows,
                std::span<const std::int32_t> last_rows);

 private:
    std::int32_t m_empty_from = 0;  ///< nothing was added from this column on
};

/// Builds the spans of a curve, left to right.
class SpanBuilder {
 public:
    /// `rows`: the edges of the rows, bottom to top. Both outlive the builder.
    SpanBuilder(ColumnSpans& spans, const PixelEdges& rows)
        : m_spans(spans), m_rows(rows), m_lowest(rows.Size() - 1) {}
    ~SpanBuilder() { Break(); }
    SpanBuilder(const SpanBuilder&) = delete;
    SpanBuilder& operator=(const SpanBuilder&) = delete;
    SpanBuilder(SpanBuilder&&) = delete;
    SpanBuilder& operator=(SpanBuilder&&) = delete;

    /// All samples of a curve in a column, none of them NaN; `several`: more than one.
    /// REQUIRES: the column of the last sample or the next one, unless Break was called.
    void Column(std::int32_t column, double first, const MinMax& range, double last, bool several);

    /// One sample more; not NaN. REQUIRES: as Column.
    void Sample(std::int32_t column, double sample) {
        Column(column, sample, {sample, sample}, sample, false);
    }

    /// Ends the line: the next sample is not joined to the last one.
    void Break();

 private:
    [[nodiscard]] std::int32_t RowOf(double sample) const {
        return m_lowest - m_rows.IndexOf(sample);
    }
    /// Draws the segment from the last sample to one in the next column. True when it brings ink to
    /// that column.
    bool LeadTo(std::int32_t row);
    void Flush();

    ColumnSpans& m_spans;
    const PixelEdges& m_rows;
    std::int32_t m_lowest;

    bool m_open = false;  // there is a sample that a segment may leave from
    bool m_ink = false;   // a sample without a segment draws nothing
    std::int32_t m_column = 0;
    std::int32_t m_top = 0;
    std::int32_t m_bottom = 0;
    double m_last = 0.0;
};

}  // namespace wavo
