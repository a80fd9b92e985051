// Paints frame, scale lines, zero lines and texts of a graph.
#pragma once

#include <QPainter>
#include <QString>
#include <optional>
#include <vector>

#include "graph/draw/frame/colors.h"
#include "graph/draw/frame/labels.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/raster/dash_pattern.h"
#include "graph/draw/raster/mapping.h"
#include "graph/record/run_state.h"

namespace wavo {

/// The texts of one y axis and the colour of its curve.
struct YLabel {
    AxisText text;
    QString spacing;
    AxisText alone;  ///< the text where the spacing, which names the derivation, does not fit
    QColor color;
    /// Of the curve, shown below the text; nothing: they are not shown.
    std::optional<DashPattern> dashes = {};
};

/// Lines of text that are painted: those above and below the plot area.
struct TextLines {
    bool above = true;
    bool below = true;
};

struct FrameTexts {
    AxisText x_text;
    QString x_spacing;
    RunState state = RunState::kRunning;
    std::vector<YLabel> y;
};

/// Paints in device pixels: `painter` is scaled so that one unit is one pixel of the device.
/// The lines span the plot area; inner lines that stand too close to be told apart are left out.
void PaintScaleLines(QPainter& painter, const ScaleLines& vertical, const ScaleLines& horizontal,
                     const FrameColors& colors);

/// Where 0 stands on the scale lines of a coordinate; nothing when it lies not inside the scale.
std::optional<std::int32_t> ZeroPixel(Coordinate coordinate, const ScaleLines& lines);

/// Paints a zero line across the plot area. Device pixels.
void PaintZeroLine(QPainter& painter, Coordinate coordinate, std::int32_t pixel, const QRect& plot,
                   const QColor& color);

/// Paints the border of the plot area. Device pixels.
void PaintBorder(QPainter& painter, const QRect& plot, const FrameColors& colors);

/// Paints the texts of some lines with the painter's font, shortened (see shortened_text.h) where
/// there is no room for all of a text. Logical pixels.
void PaintTexts(QPainter& painter, const FrameLayout& layout, const LabelMetrics& metrics,
                const FrameTexts& texts, const FrameColors& colors, const TextLines& lines);

}  // namespace wavo
