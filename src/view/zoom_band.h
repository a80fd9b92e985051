// The rubber band of a zoom that is being chosen, by mouse or by keys. The graph keeps it as its
// tracker; it is painted over the picture when the view is exposed, never into it.
#pragma once

#include <QColor>
#include <QRect>
#include <optional>

#include "graph/draw/graph_draw.h"
#include "graph/values/time_window.h"
#include "support/color_ref.h"
#include "view/graph_board.h"

class QPainter;

namespace wavo {

/// Lines that a zoom has to show at least.
inline constexpr double kFewestZoomedSteps = 5.0;

/// The band between two pixel columns of a graph, over its whole height but for the border.
QRect BandBetween(const GraphDraw& drawer, int left, int right);

/// The span of the graph's band, seconds of its displayed time axis; nothing when there is no band
/// or a zoom to it would show less than kFewestZoomedSteps times `time_step` (seconds). A band that
/// leaves the plot area ends with it.
std::optional<TimeWindow> SpanOfBand(const GraphDraw& drawer, double time_step);

/// White or black, what shows on the background.
QColor MarkColor(ColorRef background);

/// Paints the bands of all graphs, to be told from `background`.
void PaintBands(QPainter& painter, const GraphBoard& board, ColorRef background);

/// Paints the sign that the keyboard is in the view around the graphs, to be told from
/// `background`.
void PaintFocus(QPainter& painter, const QRect& area, ColorRef background);

}  // namespace wavo
