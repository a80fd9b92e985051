// One kind of curve, as a graph draws it: what is shown lies behind this interface.
//
// Curves that follow the values of a graph are LiveCurves; curve_kinds.cpp lists them. Another run
// that lies behind them is a Curve alone (history_curve.h).
//
// Pixels are device pixels.
#pragma once

#include <QColor>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "graph/draw/curve/line_point.h"
#include "graph/draw/raster/dash_pattern.h"
#include "graph/draw/raster/mapping.h"
#include "graph/draw/raster/plot_canvas.h"
#include "graph/values/min_max_pyramid.h"
#include "graph/values/sample_buffer.h"

namespace wavo {

class TimeCurve;

/// What a curve is drawn on: plot area and mappings.
struct CurvePlot {
    CurvePlot(PlotGeometry geometry, double ratio)
        : area(geometry.plot),
          device_ratio(ratio),
          x(Coordinate::kX, std::move(geometry.vertical)),
          y(Coordinate::kY, std::move(geometry.horizontal)) {}

    /// Sets the pixels of a point from its values.
    void Map(LinePoint& point, bool force_x, bool force_y) {
        point.x = x.Map(point.x_value, force_x);
        point.y = y.Map(point.y_value, force_y);
    }

    QRect area;
    double device_ratio;  ///< device pixels per logical pixel
    AxisMapping x;
    AxisMapping y;
};

struct CurveStyle {
    QColor color;
    QColor background;        ///< sets marks off from what is around them
    bool points = false;      ///< single points instead of lines, where the curve can
    double point_size = 2.0;  ///< side of a point, logical pixels
    /// Age, samples, at which a point has vanished; nothing fades when it is not above 0.
    double fade_out_age = 0.0;
    DashPattern dashes = {};  ///< of lines
};

/// Which mappings have changed, and what they have to be asked for whatever they remember.
struct Remapping {
    bool x_changed = false;
    bool y_changed = false;
    bool force_x = false;
    bool force_y = false;
};

class Curve {
 public:
    Curve() = default;
    virtual ~Curve() = default;
    Curve(const Curve&) = delete;
    Curve& operator=(const Curve&) = delete;
    Curve(Curve&&) = delete;
    Curve& operator=(Curve&&) = delete;

    /// To be called when mappings have changed.
    virtual void Remap(CurvePlot& plot, const Remapping& what) = 0;
    /// Lists the curve on the canvas; plot and curve stay until the drawing ends. Nothing for fewer
    /// than 2 points.
    virtual void Draw(const CurvePlot& plot, const CurveStyle& style, PlotCanvas& canvas) = 0;
};

/// The values of a step.
struct CurveBatch {
    std::span<const double> x;  ///< over an axis: one per y value
    std::span<const double> y;
    bool at_start = false;    ///< over time: a sweep begins at the left
    double time_range = 0.0;  ///< over time: of the x scale, seconds
    SampleOrigin y_origin{};  ///< over time: of the y values, where they are as in their buffer
};

class LiveCurve : public Curve {
 public:
    /// Empties the curve; the next value begins it.
    virtual void Clear() = 0;
    /// Adds values. False, and nothing added, for those that do not fit together or into the curve;
    /// reported. REQUIRES: over time there are values.
    virtual bool Add(const CurveBatch& batch, CurvePlot& plot) = 0;

    [[nodiscard]] virtual std::uint64_t MaxPoints() const = 0;
    [[nodiscard]] virtual std::size_t Size() const = 0;
    /// The point at a place of the FIFO. REQUIRES: place < Size().
    [[nodiscard]] virtual LinePoint Point(std::size_t place, const CurvePlot& plot) const = 0;
    /// Copies the values of all points, oldest first; x values over an axis only.
    virtual void CopyValues(Coordinate coordinate, std::vector<double>& out) const = 0;
    /// Smallest and largest finite value that is shown; x values over an axis only.
    [[nodiscard]] virtual MinMax FiniteExtremes(Coordinate coordinate) = 0;

    /// The samples of a curve over time, of which a window can be shown; null over an axis.
    [[nodiscard]] virtual TimeCurve* OverTime() { return nullptr; }
};

}  // namespace wavo
