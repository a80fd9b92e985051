// From the samples of a curve over time to what is drawn.
#pragma once

#include <QLine>
#include <QPoint>
#include <cstdint>
#include <vector>

#include "graph/draw/curve/sample_rows.h"
#include "graph/draw/curve/time_curve.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/pixel_edges.h"

namespace wavo {

/// The columns and rows of a plot area as a curve sees them.
struct CurvePixels {
    const std::vector<std::uint64_t>& first_steps;  ///< per column, and one past the last
    const PixelEdges& rows;                         ///< bottom to top
};

/// What is remembered of a curve from one reduction to the next.
struct ReductionState {
    SampleRows rows;              ///< of the samples, where a column has few
    int with_these_rows = 0;      ///< reductions since the rows of pixels had other values
    int runs_without_blocks = 0;  ///< that are read before blocks are tried again

    /// To be called when the rows of pixels have other values.
    void RowsChanged() {
        rows.Forget();
        with_these_rows = 0;
    }
};

/// Reduces a curve to what it covers in each column; the cost does not grow with the number of
/// samples, unless there are NaN among them: columns with NaN are read sample by sample. False
/// when the curve has too few samples for that (a segment passes over a whole column); `spans` is
/// of no use then.
bool ReduceCurve(TimeCurve& curve, const CurvePixels& pixels, ReductionState& state,
                 ColumnSpans& spans);

/// All segments of a curve, in pixels; `bottom_left` is the pixel of column 0, lowest row.
std::vector<QLine> CurveSegments(TimeCurve& curve, const CurvePixels& pixels,
                                 const QPoint& bottom_left);

}  // namespace wavo
