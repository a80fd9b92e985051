// The innermost loops of painting: pixels of a few columns, row by row.
#pragma once

#include <cstdint>

namespace wavo {

/// Columns that are painted together.
inline constexpr int kBlockColumns = 16;

/// What the spans of a block cover.
struct BlockRows {
    int top;       ///< first row; above the last one when there is none
    int bottom;    ///< last row
    int pixels;    ///< number of pixels
    int full_top;  ///< the rows that every column covers; none when below full_bottom
    int full_bottom;
};

/// Looks at `count` columns, at most kBlockColumns.
BlockRows FindBlockRows(const std::int16_t* top, const std::int16_t* bottom, int count);

/// One row of `count` columns: `color` where the row lies from top to
/// bottom of the column, else `under`. `under` may be `pixels`.
void PaintSpanRow(std::uint32_t* pixels, const std::uint32_t* under, const std::int16_t* top,
                  const std::int16_t* bottom, int count, int row, std::uint32_t color);

}  // namespace wavo
