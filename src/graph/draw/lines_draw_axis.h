// The curve of one y axis with its scales: takes values, adapts automatic scales, maps and draws.
//
// Over time a curve is filled in one of two ways. Classic: a sweep from left to right that, when
// it has reached the right border, goes on from the left and overwrites the oldest points at a
// write index. Continuity: points fill the FIFO from the left, then scroll, so that new values
// enter at the right. Over an axis, points follow one another and the oldest leave. Each is a kind
// of LiveCurve (curve/curve_kinds.h).
//
// Invariants:
// 1. The FIFO holds at most MaxPoints() points, except while it shows a window (ShowWindow).
// 2. A point whose value or x value is NaN is a gap in the curve.
// 3. Pixels are those of the geometry last set: device pixels.
#pragma once

#include <QColor>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "graph/draw/curve/curve.h"
#include "graph/draw/curve/history_curve.h"
#include "graph/draw/curve/line_point.h"
#include "graph/draw/curve/time_curve.h"
#include "graph/draw/frame/scale.h"
#include "graph/draw/raster/mapping.h"
#include "graph/draw/raster/plot_canvas.h"
#include "graph/model/wavo_graph.h"
#include "source/history.h"

namespace wavo {

/// Colour that stands for the curve's own colour (bit 28).
inline constexpr ColorRef kOwnColor = 0x10000000;

/// Number of points that a curve over `range` seconds holds; at least 1.
std::uint64_t MaxCurvePoints(double range, double cycle_time);

class LinesDrawAxis {
 public:
    /// What a curve is, apart from its scales.
    struct Settings {
        CoorType x_type = CoorType::kTime;
        GraphMode mode{};
        AxisDrawMode mode_ax{};
        std::string axis_name;
        std::int32_t derivation = 0;
        ColorRef color = 0;
        ColorRef background = 0;     ///< behind the curve
        double cycle_time = 0.0;     ///< seconds from point to point
        double range = 0.0;          ///< seconds that the FIFO covers
        double fade_out_time = 0.0;  ///< seconds after which a point over an axis has vanished
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

    /// Lines are drawn in the dashes of the curve of this number from now on; 0: solid.
    void SetDashes(std::size_t number) { m_dashes = number; }

    /// To be called when the x scale was changed from outside: maps all points again.
    void XScaleChanged();

    /// Sets the pixels of a point from its values.
    void MapPoint(LinePoint& point, bool force_x, bool force_y) {
        m_plot.Map(point, force_x, force_y);
    }

    /// Adds the new values of a paint, the first of which was taken at `start_time` (seconds; 0
    /// begins a sweep at the left), and draws the curve. Without new values nothing is drawn.
    /// `canvas` may be null: the values are added only. Else the curve must stay until the
    /// drawing ends. `origin`: where the values stand in the buffer of their stream.
    void DrawLinesXIsTime(const std::vector<double>& values, double start_time, PlotCanvas* canvas,
                          const SampleOrigin& origin = {});

    /// Replaces the curve by parts of a buffer, in the order of time, row 0 at 0, and adapts an
    /// automatic scale to them. The buffer is not owned and stays until KeepWindow or Empty.
    void ShowWindow(const SampleBuffer& buffer, std::vector<RowPart> parts);

    /// The same for the times from `from` to `to`, seconds from the oldest sample that the curve
    /// holds.
    void ShowOwnWindow(double from, double to);

    /// Makes what a window shows the curve's own, before its ring goes.
    void KeepWindow();

    /// Shows lines of the past over time in place of the curve, the first at the left border, the
    /// last at the right one, and adapts an automatic scale to them. `history` is not owned and
    /// stays until ShowLive; null: nothing is shown.
    void ShowHistory(History* history, const LineRange& lines);
    /// Shows points over an axis in place of the curve; they fade over all of them. REQUIRES: as
    /// many x values as y values.
    void ShowPoints(const std::vector<double>& x_values, const std::vector<double>& y_values);
    /// Shows the curve again.
    void ShowLive();
    /// What is shown of the past is exact; else it comes closer with every drawing.
    [[nodiscard]] bool IsExact() const {
        return m_past_over_time == nullptr || m_past_over_time->IsComplete();
    }

    /// Draws the whole curve; nothing for fewer than 2 points or without a canvas.
    void DrawAllLinesXIsTime(ColorRef color, PlotCanvas* canvas);

    /// Adds points over an axis and draws the curve. Lists of different length are reported and
    /// not added.
    void DrawLinesXIsAx(const std::vector<double>& x_values, const std::vector<double>& y_values,
                        PlotCanvas* canvas);
    void DrawAllLinesXIsAx(ColorRef color, PlotCanvas* canvas);

    /// Adapts an automatic scale to the values that are about to be added.
    void CheckXScaleValue(const std::vector<double>& x_values);
    void CheckYScaleValue(const std::vector<double>& y_values);

    /// The time range of the x scale, seconds. 0 and an error-log entry when it is no time range.
    [[nodiscard]] double GetXTimeRange() const;

    [[nodiscard]] std::uint64_t MaxPoints() const { return m_curve->MaxPoints(); }
    [[nodiscard]] std::size_t Size() const { return m_curve->Size(); }
    /// Samples over time that the curve holds itself, whatever a window shows.
    [[nodiscard]] std::uint64_t HeldSamples() const {
        return m_over_time ? m_over_time->HeldSamples() : 0;
    }
    /// The point at a place of the FIFO. REQUIRES: place < Size().
    [[nodiscard]] LinePoint Point(std::size_t place) const { return m_curve->Point(place, m_plot); }
    /// The same of the points over an axis that are shown: of the past, else of the curve.
    [[nodiscard]] std::size_t ShownSize() const { return ShownOverAxis().Size(); }
    [[nodiscard]] LinePoint ShownPoint(std::size_t place) const {
        return ShownOverAxis().Point(place, m_plot);
    }
    [[nodiscard]] std::uint64_t WriteIndex() const {
        return m_over_time ? m_over_time->WriteIndex() : 0;
    }
    /// The samples of a curve over time; null over an axis.
    [[nodiscard]] const TimeCurve* OverTime() const { return m_over_time; }

    /// Copies the values of all points, oldest first; x values over an axis only.
    void GetYValues(std::vector<double>& out) const { m_curve->CopyValues(Coordinate::kY, out); }
    void GetXValues(std::vector<double>& out) const { m_curve->CopyValues(Coordinate::kX, out); }

    [[nodiscard]] std::int32_t Derivation() const { return m_settings.derivation; }
    /// The user's colour.
    [[nodiscard]] ColorRef Color() const { return m_settings.color; }
    /// The colour that the curve is drawn with: the user's, where it can be seen.
    [[nodiscard]] const QColor& ShownColor() const { return m_shown_color; }
    /// The horizontal scale lines with the values of the y scale.
    [[nodiscard]] const ScaleLines& YLines() const { return m_plot.y.Lines(); }
    [[nodiscard]] const ScaleLines& XLines() const { return m_plot.x.Lines(); }
    /// What the curve is drawn on.
    [[nodiscard]] const CurvePlot& Plot() const { return m_plot; }
    /// Seconds from point to point.
    [[nodiscard]] double Step() const { return m_settings.cycle_time; }
    /// How another run behind the curve looks: dimmed, nothing fades.
    [[nodiscard]] CurveStyle BackStyle() const;

 private:
    void ApplyScaleChange(Coordinate coordinate);
    void Remap(const Remapping& what);
    void DrawIn(ColorRef color, PlotCanvas* canvas);
    [[nodiscard]] CurveStyle StyleIn(ColorRef color) const;
    [[nodiscard]] const LiveCurve& ShownOverAxis() const {
        return m_past_over_axis != nullptr ? *m_past_over_axis : *m_curve;
    }
    void FitScaleToWindow(const MinMax& extremes);
    void CheckScale(Coordinate coordinate, const std::vector<double>& new_values);

    // Constant after construction.
    Settings m_settings;
    QColor m_shown_color;
    ScaleDefinition& m_x_scale;
    ScaleDefinition& m_y_scale;

    CurvePlot m_plot;
    std::unique_ptr<LiveCurve> m_curve;
    TimeCurve* m_over_time;  ///< of the curve; null over an axis
    bool m_shows_past = false;
    std::unique_ptr<Curve> m_past;                ///< in place of the curve; null: nothing is shown
    HistoryCurve* m_past_over_time = nullptr;     ///< the same; null over an axis
    const LiveCurve* m_past_over_axis = nullptr;  ///< the same; null over time
    double m_past_points = 0.0;                   ///< over an axis
    std::size_t m_dashes = 0;
    AutoScale m_x_auto;
    AutoScale m_y_auto;
};

}  // namespace wavo
