// From the samples of a curve over time to what is drawn.
#pragma once

#include <QLine>
#include <QPoint>
#include <cstdint>
#include <vector>

#include "graph/draw/curve/time_curve.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_edges.h"

namespace wavo {

/// The columns and rows of a plot area as a curve sees them.
struct CurvePixels {
    const std::vector<std::uint64_t>& first_steps;  ///< per column, and one past the last
    const PixelEdges& rows;                         ///< bottom to top
};

/// What a reduction works with, kept from one to the next for its memory. Per column.
struct ReductionRoom {
    std::vector<double> first;
    std::vector<double> minimum;
    std::vector<double> maximum;
    std::vector<std::int32_t> first_row;
    std::vector<std::int32_t> top;
    std::vector<std::int32_t> bottom;
    std::vector<std::size_t> bounds;  ///< of the slots, and the end of the last column
    // Columns whose first sample is neither least nor largest.
    std::vector<std::int32_t> others;
    std::vector<double> other;
    std::vector<std::int32_t> other_row;
    // What blocks tell without a look at the samples.
    std::vector<double> inner_minimum;
    std::vector<double> inner_maximum;
    std::vector<double> first_minimum;
    std::vector<double> first_maximum;
    std::vector<std::int32_t> inner_top;
    std::vector<std::int32_t> inner_bottom;
    std::vector<std::int32_t> first_top;
    int runs_without_blocks = 0;  ///< that are read before blocks are tried again

    void Resize(std::size_t columns);
};

/// Reduces a curve to what it covers in each column; the cost does not grow with the number of
/// samples, unless there are NaN among them: columns with NaN are read sample by sample. False
/// when the curve has too few samples for that (a segment passes over a whole column); `spans` is
/// of no use then.
bool ReduceCurve(TimeCurve& curve, const CurvePixels& pixels, ReductionRoom& room,
                 ColumnSpans& spans);

/// All segments of a curve, in pixels; `bottom_left` is the pixel of column 0, lowest row.
std::vector<QLine> CurveSegments(TimeCurve& curve, const CurvePixels& pixels,
                                 const QPoint& bottom_left);

}  // namespace wavo
