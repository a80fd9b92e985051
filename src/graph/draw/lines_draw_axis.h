// The curve of one y axis: a FIFO of points that are mapped to pixels, and its drawing.
//
// Over time a curve is filled in one of two ways. Classic: a sweep from left to right that, when
// it has reached the right border, goes on from the left and overwrites the oldest points at a
// write index. Continuity: points fill the FIFO from the left, then scroll, so that new values
// enter at the right. Over an axis, points follow one another and the oldest leave.
//
// Invariants:
// 1. The FIFO holds at most MaxPoints() points, except while it shows a window (ShowWindow).
// 2. In continuity mode a full FIFO has its point k at the time k x step.
// 3. The write index is 0 until the FIFO is full; it is the place of the oldest point then.
// 4. A point whose value or x value is NaN is a gap in the curve.
// 5. Pixels are those of the geometry last set: device pixels.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "graph/draw/line_point.h"
#include "graph/draw/mapping.h"
#include "graph/draw/scale.h"
#include "graph/model/wavo_graph.h"

namespace wavo {

/// The plot area of a graph and its scale lines, borders included, in device pixels.
struct PlotGeometry {
    QRect plot;
    ScaleLines vertical;
    ScaleLines horizontal;
};

/// Colour that stands for the curve's own colour (bit 28).
inline constexpr ColorRef kOwnColor = 0x10000000;

/// Number of points that a curve over `range` seconds holds; at least 1.
std::uint64_t MaxCurvePoints(double range, double cycle_time);

class LinesDrawAxis {
 public:
    /// What a curve is, apart from its scales.
    struct Settings {
        GraphMode mode{};
        AxisDrawMode mode_ax{};
        std::string axis_name;
        std::int32_t derivation = 0;
        ColorRef color = 0;
        double cycle_time = 0.0;     ///< seconds from point to point
        double range = 0.0;          ///< seconds that the FIFO covers
        double fade_out_time = 0.0;  ///< seconds
        double point_size = 2.0;     ///< logical pixels, for AxisDrawMode::kPoints
    };

    /// The scales are not owned, outlive the curve, and are changed by the scale checks.
    LinesDrawAxis(const PlotGeometry& geometry, ScaleDefinition& x_scale, ScaleDefinition& y_scale,
                  Settings settings);
    virtual ~LinesDrawAxis() = default;
    LinesDrawAxis(const LinesDrawAxis&) = delete;
    LinesDrawAxis& operator=(const LinesDrawAxis&) = delete;
    LinesDrawAxis(LinesDrawAxis&&) = delete;
    LinesDrawAxis& operator=(LinesDrawAxis&&) = delete;

    /// Empties the curve; the next value begins it at the left.
    void Empty();

    /// Takes other scale lines and maps all points again. `device_ratio`: device pixels per
    /// logical pixel.
    void SetGeometry(const PlotGeometry& geometry, double device_ratio);

    /// To be called when the x scale was changed from outside: maps all points again.
    void XScaleChanged();

    /// Sets the pixels of a point from its values.
    void MapPoint(LinePoint& point, bool force_x, bool force_y);

    /// Adds the new values of a paint, the first of which was taken at `start_time` (seconds; 0
    /// begins a sweep at the left), and draws the curve. Without new values nothing is drawn.
    /// `painter` may be null: the values are added only.
    void DrawLinesXIsTime(const std::vector<double>& values, double start_time, QPainter* painter);

    /// Replaces the curve by values in the order of time, the first at 0.
    void ShowWindow(const std::vector<double>& values);

    /// Draws the whole curve; nothing for fewer than 2 points or without a painter.
    void DrawAllLinesXIsTime(ColorRef color, QPainter* painter);

    /// Adds points over an axis and draws the curve. Lists of different length are reported and
    /// not added.
    void DrawLinesXIsAx(const std::vector<double>& x_values, const std::vector<double>& y_values,
                        QPainter* painter);
    void DrawAllLinesXIsAx(ColorRef color, QPainter* painter);

    /// Adapts an automatic scale to the values that are about to be added.
    void CheckXScaleValue(const std::vector<double>& x_values);
    void CheckYScaleValue(const std::vector<double>& y_values);

    /// The time range of the x scale, seconds. 0 and an error-log entry when it is no time range.
    [[nodiscard]] double GetXTimeRange() const;

    [[nodiscard]] std::uint64_t MaxPoints() const { return m_max_points; }
    [[nodiscard]] std::size_t Size() const { return m_points.size(); }
    /// The point at a place of the FIFO. REQUIRES: place < Size().
    [[nodiscard]] LinePoint Point(std::size_t place) const { return m_points[place]; }
    [[nodiscard]] std::uint64_t WriteIndex() const { return m_write_index; }
    [[nodiscard]] double SweepPosition() const { return m_sweep_position; }

    /// Copies the values of all points, oldest first.
    void GetYValues(std::vector<double>& out) const;
    void GetXValues(std::vector<double>& out) const;

    [[nodiscard]] const std::string& AxisName() const { return m_settings.axis_name; }
    [[nodiscard]] std::int32_t Derivation() const { return m_settings.derivation; }
    [[nodiscard]] ColorRef Color() const { return m_settings.color; }
    /// The horizontal scale lines with the values of the y scale.
    [[nodiscard]] const ScaleLines& YLines() const { return m_y_mapping.Lines(); }
    [[nodiscard]] const ScaleLines& XLines() const { return m_x_mapping.Lines(); }

 private:
    void AddContinuity(const std::vector<double>& values);
    void AddClassic(const std::vector<double>& values);
    void AppendContinuity(const double* values, std::size_t count);
    void ScrollContinuity(const double* values, std::size_t count);
    LinePoint MakePoint(double x_value, double y_value);
    void MapAll(bool force_x, bool force_y);
    void ApplyScaleChange(AxisMapping& mapping, const ScaleDefinition& scale);
    [[nodiscard]] Extremes HeldExtremes(double LinePoint::*value) const;
    [[nodiscard]] QColor DrawColor(ColorRef color) const;
    void DrawSegments(QPainter& painter, const QColor& color, bool over_time) const;
    void DrawPoints(QPainter& painter, const QColor& color) const;
    /// Copies one value of all points, oldest first.
    void CopyValues(double LinePoint::*value, std::vector<double>& out) const;

    // Constant after construction.
    Settings m_settings;
    ScaleDefinition& m_x_scale;
    ScaleDefinition& m_y_scale;
    std::uint64_t m_max_points;

    QRect m_plot;
    double m_device_ratio = 1.0;
    AxisMapping m_x_mapping;
    AxisMapping m_y_mapping;
    std::deque<LinePoint> m_points;
    double m_sweep_position = 0.0;  ///< seconds, time of the last value of the sweep
    std::uint64_t m_write_index = 0;
    AutoScale m_x_auto;
    AutoScale m_y_auto;
};

}  // namespace wavo
