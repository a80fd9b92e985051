#include "view/zoom_band.h"

#include <QPainter>
#include <algorithm>

#include "graph/draw/display_settings.h"

namespace wavo {

namespace {

constexpr int kFillAlpha = 70;

}  // namespace

QColor MarkColor(ColorRef background) {
    return ToQColor(background).lightness() < 128 ? QColor(Qt::white) : QColor(Qt::black);
}

QRect BandBetween(const GraphDraw& drawer, int left, int right) {
    const QRect& graph = drawer.Rectangle();
    const QRect band(QPoint(left, graph.top() + 1), QPoint(right, graph.bottom() - 1));
    return band & graph;
}

std::optional<TimeWindow> SpanOfBand(const GraphDraw& drawer, double time_step) {
    const QRect& band = drawer.Tracker();
    const QRect& plot = drawer.PlotArea();
    if (band.isNull() || plot.isEmpty()) {
        return std::nullopt;
    }
    const TimeWindow span{drawer.PixelToTime(std::clamp(band.left(), plot.left(), plot.right())),
                          drawer.PixelToTime(std::clamp(band.right(), plot.left(), plot.right()))};
    if (span.start < 0.0 || span.end <= span.start) {
        return std::nullopt;
    }
    const double fewest = kFewestZoomedSteps * time_step;
    const TimeWindow shown = drawer.Places().ZoomSpanOf(span);
    const bool is_long = span.end - span.start >= fewest && shown.end - shown.start >= fewest;
    return is_long ? std::optional(span) : std::nullopt;
}

void PaintBands(QPainter& painter, const GraphBoard& board, ColorRef background) {
    for (const auto& drawer : board.Drawers()) {
        const QRect& band = drawer->Tracker();
        if (band.isNull()) {
            continue;
        }
        const QColor color = MarkColor(background);
        QColor fill = color;
        fill.setAlpha(kFillAlpha);
        painter.fillRect(band, fill);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(color, 1, Qt::DashLine));
        painter.drawRect(band.adjusted(0, 0, -1, -1));
    }
}

void PaintFocus(QPainter& painter, const QRect& area, ColorRef background) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(MarkColor(background), 1, Qt::DotLine));
    painter.drawRect(area.adjusted(0, 0, -1, -1));
}

}  // namespace wavo
