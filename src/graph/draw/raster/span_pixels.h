// The innermost loops of painting: pixels of a few columns, row by row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "support/processor.h"

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

/// A curve in some columns.
struct StackedSpans {
    const std::int16_t* top;  ///< of the first of the columns
    const std::int16_t* bottom;
    std::uint32_t color;
    int first_row;  ///< it covers nothing above
    int last_row;   ///< nor below
};

/// Some columns of a picture, and the background under them.
struct PixelColumns {
    std::uint32_t* pixels;  ///< of the first column in row `top_row`
    std::ptrdiff_t stride;
    const std::uint32_t* under;  ///< the same of the background
    std::ptrdiff_t under_stride;
    const int* under_rows;  ///< by row: the row of the background that stands for it
    int top_row;
    int count;

    [[nodiscard]] std::uint32_t* Row(int row) const { return pixels + (row - top_row) * stride; }
    [[nodiscard]] const std::uint32_t* Under(int row) const {
        return under + (under_rows[row] - top_row) * under_stride;
    }
};

/// The rows from `first_row` to `last_row`: the background, and on it the curves, the last one on
/// top.
void PaintStack(const PixelColumns& columns, int first_row, int last_row,
                std::span<const StackedSpans> curves, Instructions use = BestInstructions());

}  // namespace wavo
