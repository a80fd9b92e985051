#include "view/past_marks.h"

#include <QPainter>
#include <optional>

#include "view/zoom_band.h"

namespace wavo {

namespace {

constexpr int kDot = 4;  // logical pixels
constexpr int kDots = 3;

}  // namespace

void PaintNotExact(QPainter& painter, const GraphDraw& drawer, ColorRef background) {
    const QRect& plot = drawer.PlotArea();
    const QColor color = MarkColor(background);
    for (int dot = 1; dot <= kDots; ++dot) {
        painter.fillRect(plot.right() - 2 * kDot * dot, plot.top() + kDot, kDot, kDot, color);
    }
}

void PaintPlace(QPainter& painter, const GraphDraw& drawer, std::int64_t line,
                ColorRef background) {
    const std::optional<double> time = drawer.Places().TimeOf(line);
    const std::optional<int> column = time ? drawer.Places().PixelAt(*time) : std::nullopt;
    if (!column) {
        return;
    }
    const QRect& plot = drawer.PlotArea();
    painter.setPen(QPen(MarkColor(background), 1, Qt::DashDotLine));
    painter.drawLine(*column, plot.top(), *column, plot.bottom());
}

}  // namespace wavo
