// What stands over graphs that show the past, painted when the view is exposed, never into the
// picture.
#pragma once

#include <cstdint>

#include "graph/draw/graph_draw.h"
#include "support/color_ref.h"

class QPainter;

namespace wavo {

/// The sign that the picture is drawn from the coarser levels, in the upper right corner of the
/// graph's plot area.
void PaintNotExact(QPainter& painter, const GraphDraw& drawer, ColorRef background);

/// The place of a line, if it is seen, over the height of the plot area. REQUIRES: the graph shows
/// the past over time.
void PaintPlace(QPainter& painter, const GraphDraw& drawer, std::int64_t line, ColorRef background);

}  // namespace wavo
