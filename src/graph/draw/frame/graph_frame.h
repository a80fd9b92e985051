// Everything of a graph but its curves: layout, background, scale lines, zero lines, guiding
// circles, border and texts. Kept as an image of its own, and drawn again where it has changed.
//
// Invariants:
// 1. Texts are laid out in logical pixels; plot area and scale lines stand on device pixels of the
//    picture.
// 2. After Draw the picture shows the frame in its rectangle; the plot area, and the texts above
// and
//    below it, are touched only when something there has changed.
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPoint>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "graph/draw/frame/colors.h"
#include "graph/draw/frame/frame_painter.h"
#include "graph/draw/frame/guiding_circles.h"
#include "graph/draw/frame/labels.h"
#include "graph/draw/raster/mapping.h"
#include "graph/model/wavo_graph.h"
#include "graph/record/run_state.h"
#include "graph/values/time_window.h"

class QFontMetrics;

namespace wavo {

class GraphFrame {
 public:
    struct Looks {
        QColor background;
        QFont font;
        std::int32_t x_scale_lines = 5;                 ///< at least 1
        std::int32_t y_scale_lines = 3;                 ///< at least 1
        std::map<std::string, std::string> units = {};  ///< as in GraphDisplaySettings
        bool line_styles = false;                       ///< the same
    };

    /// A curve as far as the frame has to know of it.
    struct Curve {
        const ScaleLines& y_lines;  ///< the horizontal scale lines with the values of its y scale
        QColor chosen;              ///< by the user
        QColor shown;
    };

    /// What the frame says in a step.
    struct Content {
        TimeWindow window;
        RunState state = RunState::kRunning;
        ScaleDefinition x_scale;    ///< that is shown
        std::vector<Curve> curves;  ///< one per y axis
    };

    /// `graph` is not owned and outlives the frame; its scales, limits and circles are those of the
    /// moment when it is drawn.
    GraphFrame(const WavoGraph& graph, const Looks& looks, const QRect& rectangle);

    /// Moves the frame.
    void SetRectangle(const QRect& rectangle);
    /// Takes over the device pixels per logical pixel. True when they are others than before.
    bool FitToDevice(double ratio);
    /// Spreads the x scale over the vertical lines.
    void SetXRange(const ScaleRange& range) { FillScaleValues(m_vertical, range); }

    /// The texts of the y axes show the dashes of their curves from now on, or show none.
    void SetLineStyles(bool shown);

    /// What was painted is gone.
    void Invalidate() { m_is_valid = false; }

    /// Brings the frame in the picture up to date. True when the plot area was painted: what stood
    /// there is gone. REQUIRES: what the last call painted is still there, or Invalidate.
    bool Draw(QImage& picture, const Content& content);

    [[nodiscard]] const QRect& Rectangle() const { return m_rectangle; }
    [[nodiscard]] const QRect& PlotArea() const { return m_layout.plot; }
    /// The same in device pixels.
    [[nodiscard]] const QRect& DevicePlotArea() const { return m_device_plot; }
    [[nodiscard]] double DeviceRatio() const { return m_device_ratio; }
    /// The plot area in device pixels, and its scale lines: the vertical ones with the values of
    /// the x scale, the horizontal ones without, since they differ per y axis.
    [[nodiscard]] PlotGeometry Geometry() const {
        return {m_device_plot, m_vertical, m_horizontal};
    }
    /// The x value at a logical pixel column; -1 outside the plot area.
    [[nodiscard]] double XValueAt(int x) const;
    /// The logical pixel column of an x value; nothing outside the scale.
    [[nodiscard]] std::optional<int> PixelOfX(double value) const;

    /// The graph without its curves, and where it stands in the picture (device pixels).
    [[nodiscard]] const QImage& Image() const { return m_image; }
    [[nodiscard]] QPoint Origin() const { return m_image_rectangle.topLeft(); }

 private:
    /// What the texts say.
    struct Said {
        TimeWindow window;
        RunState state = RunState::kRunning;
        ScaleDefinition x;
        std::vector<ScaleDefinition> y;

        friend bool operator==(const Said&, const Said&) = default;
    };

    /// Lines of the plot area that move with the scales; pixels of the device.
    struct MovingLines {
        std::map<std::int32_t, QRgb> zero_rows;
        std::optional<std::int32_t> zero_column;
        GuidingCircles circles;

        friend bool operator==(const MovingLines&, const MovingLines&) = default;
    };

    void Layout();
    [[nodiscard]] int SlotWidth(const QFontMetrics& font_metrics) const;
    [[nodiscard]] QRect ToDevice(const QRect& logical) const;
    [[nodiscard]] QRect ToLogical(const QRect& device) const;

    [[nodiscard]] MovingLines LinesOf(const Content& content) const;
    void MakeImage(const QRect& rectangle);
    void PaintLines(const Content& content);
    void PaintTexts(const Content& content, const TextLines& lines);
    // The rows of the frame above and below the plot area: those of the texts.
    [[nodiscard]] QRect AbovePlot() const;
    [[nodiscard]] QRect BelowPlot() const;
    void CopyTo(QImage& picture, const QRect& part) const;

    const WavoGraph& m_graph;
    Looks m_looks;
    FrameColors m_colors;

    QRect m_rectangle;
    double m_device_ratio = 1.0;
    LabelMetrics m_metrics;
    FrameLayout m_layout;
    QRect m_device_plot;
    ScaleLines m_vertical;
    ScaleLines m_horizontal;

    QImage m_image;
    QRect m_image_rectangle;  ///< in the picture, device pixels
    bool m_is_valid = false;  ///< image and picture show what was drawn last
    Said m_said;
    MovingLines m_lines;
};

}  // namespace wavo
