// Putting a curve over time on the canvas: its spans, and painting its segments where it has too
// few samples for spans.
#pragma once

#include <QImage>
#include <QLine>
#include <QRect>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/raster/column_spans.h"
#include "graph/draw/raster/plot_canvas.h"

namespace wavo {

/// Lists spans as a style wants them. `dashed` takes what is painted of them where the style is not
/// solid; it stays, as the spans do, until the drawing ends.
void AddSpans(const ColumnSpans& spans, const CurveStyle& style, ColumnSpans& dashed,
              PlotCanvas& canvas);

/// Paints segments of one pixel inside `area`, the plot area, each on its own: the picture does not
/// depend on how many there are. Device pixels, whatever ratio the picture says of itself. Returns
/// a rectangle that holds all pixels that may have been changed.
QRect PaintSegments(QImage& picture, const std::vector<QLine>& segments, const QRect& area,
                    const CurveStyle& style);

}  // namespace wavo
