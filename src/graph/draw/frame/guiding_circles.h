// The guiding circles of an axis-over-axis graph: circles around the zero point of both axes that
// a curve is compared with, such as the tolerances of a circular path.
//
// A circle has a radius in x units and one in y units. On the screen it is an ellipse, unless one
// x unit is as long as one y unit there; RoundPlot gives a plot area in which it is so.
//
// Invariants:
// 1. Zero need not lie inside the scales: a scale goes on evenly beyond its ends.
// 2. What is painted lies in the plot area, and takes as long for a huge circle as for a small one.
#pragma once

#include <QPainter>
#include <QRect>
#include <optional>

#include "graph/draw/frame/colors.h"
#include "graph/draw/raster/mapping.h"
#include "graph/model/wavo_graph.h"

namespace wavo {

/// Where a guiding circle stands, device pixels. Whole numbers are the middles of pixels.
struct CirclePlace {
    double x = 0.0;  ///< centre
    double y = 0.0;
    double x_radius = 0.0;  ///< above 0
    double y_radius = 0.0;

    friend bool operator==(const CirclePlace&, const CirclePlace&) = default;
};

/// The place of a circle with radii in x units and y units on scale lines with their values.
/// Nothing when a radius is not set, not finite or not above 0, when a scale has no extent, or
/// when the place cannot be told in numbers.
std::optional<CirclePlace> PlaceCircle(double x_radius, double y_radius, const ScaleLines& vertical,
                                       const ScaleLines& horizontal);

/// The circles of a graph.
struct GuidingCircles {
    std::optional<CirclePlace> inner;
    std::optional<CirclePlace> outer;

    friend bool operator==(const GuidingCircles&, const GuidingCircles&) = default;
};

/// The circles of an axis-over-axis graph, by its radii as they are; none for a graph over time.
GuidingCircles PlaceCircles(const WavoGraph& graph, const ScaleLines& vertical,
                            const ScaleLines& horizontal);

/// The largest plot area in the middle of `available` in which one x unit is as long as one y unit,
/// so that circles are round. `available` itself for a graph in which nothing has to be round (no
/// automatic circle or none that is set, over time, a scale that follows the values), that has zero
/// outside a scale (a part of a circle is not seen to be round), or in which the circle would have
/// no room (kLeastRoundSide) however it is drawn. Pixels, of whatever kind.
inline constexpr int kLeastRoundSide = 3;
QRect RoundPlot(const QRect& available, const WavoGraph& graph);

/// The colour for circles that stands out from the curve.
QColor CircleColor(const FrameColors& colors, const QColor& curve);

/// Paints the circles inside the plot area, the inner one as a line, the outer one dashed. Device
/// pixels: `painter` is scaled so that one unit is one pixel of the device; `device_ratio` is the
/// width of the lines.
void PaintCircles(QPainter& painter, const QRect& plot, const GuidingCircles& circles,
                  const QColor& color, double device_ratio);

}  // namespace wavo
