// What a curve over time looks like on given scale lines: spans per column, or segments where it
// has too few samples for that. Kept until curve or scales change.
#pragma once

#include <QLine>
#include <QRect>
#include <cstdint>
#include <vector>

#include "graph/draw/curve/curve_reduction.h"
#include "graph/draw/curve/time_curve.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/mapping.h"
#include "graph/draw/raster/pixel_edges.h"

namespace wavo {

class CurveShape {
 public:
    /// To be called when scale lines or values of a mapping have changed.
    void XChanged();
    void YChanged();

    /// Brings the shape up to date. `plot`: the pixels of the mappings; `step`: seconds from sample
    /// to sample. False when there is nothing to draw on.
    bool Update(TimeCurve& curve, const AxisMapping& x, const AxisMapping& y, const QRect& plot,
                double step);

    /// Whether Spans shows the curve; else Segments does. REQUIRES (all three): Update.
    [[nodiscard]] bool HasSpans() const { return m_has_spans; }
    [[nodiscard]] const ColumnSpans& Spans() const { return m_spans; }
    /// In pixels.
    [[nodiscard]] const std::vector<QLine>& Segments() const { return m_segments; }
    /// Changes with the shape.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

 private:
    void FindPixels(TimeCurve& curve, const AxisMapping& x, const AxisMapping& y, const QRect& plot,
                    double step);

    PixelEdges m_columns;
    PixelEdges m_rows;
    bool m_columns_found = false;
    bool m_rows_found = false;
    StepColumns m_step_columns;
    std::uint64_t m_step_columns_end = 0;  // steps that they were found for
    SumColumns m_sum_columns;

    bool m_reduced = false;
    std::uint64_t m_curve_version = 0;  // that the shape is of
    std::uint64_t m_version = 0;
    bool m_has_spans = false;
    ReductionState m_reduction;
    ColumnSpans m_spans;
    std::vector<QLine> m_segments;
};

}  // namespace wavo
