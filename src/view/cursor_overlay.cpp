#include "view/cursor_overlay.h"

#include <QColor>
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <algorithm>

#include "graph/draw/display_settings.h"
#include "view/zoom_band.h"

namespace wavo {

namespace {

constexpr int kLabelMargin = 4;
constexpr int kCrossArm = 6;

/// The same size on every device.
QFont LabelFont() {
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, QFontInfo(font).pixelSize()));
    font.setBold(true);
    return font;
}

QString LabelText(CursorName name) {
    return name == CursorName::kA ? QStringLiteral("A") : QStringLiteral("B");
}

QSize LabelSize() {
    const QFontMetrics metrics(LabelFont());
    return {metrics.horizontalAdvance(QStringLiteral("A")) + 2 * kLabelMargin, metrics.height()};
}

QRect MovedInto(QRect rectangle, const QRect& area) {
    rectangle.moveLeft(std::clamp(rectangle.left(), area.left(),
                                  std::max(area.left(), area.right() - rectangle.width() + 1)));
    rectangle.moveTop(std::clamp(rectangle.top(), area.top(),
                                 std::max(area.top(), area.bottom() - rectangle.height() + 1)));
    return rectangle;
}

QRect LabelAt(const GraphDraw& graph, const QPoint& place) {
    const QSize size = LabelSize();
    const bool is_over_axis = graph.Graph().XCoorType == CoorType::kAxis;
    const QPoint top_left = is_over_axis ? place + QPoint(kCrossArm, -kCrossArm - size.height())
                                         : QPoint(place.x() - size.width() / 2, place.y());
    return MovedInto({top_left, size}, graph.PlotArea());
}

void PaintMark(QPainter& painter, const GraphDraw& graph, const CursorMark& mark, CursorName name,
               bool is_active, const QColor& color, const QColor& background) {
    painter.setPen(QPen(color, 1, is_active ? Qt::SolidLine : Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    if (graph.Graph().XCoorType == CoorType::kAxis) {
        painter.drawLine(mark.line.left(), mark.place.y(), mark.line.right(), mark.place.y());
        painter.drawLine(mark.place.x(), mark.line.top(), mark.place.x(), mark.line.bottom());
    } else {
        painter.drawLine(mark.place.x(), mark.line.top(), mark.place.x(), mark.line.bottom());
    }
    painter.setPen(QPen(color, 1));
    painter.setBrush(is_active ? color : background);
    painter.drawRect(mark.label.adjusted(0, 0, -1, -1));
    painter.setPen(is_active ? background : color);
    painter.drawText(mark.label, Qt::AlignCenter, LabelText(name));
}

}  // namespace

std::optional<CursorMark> MarkOf(const GraphDraw& graph, const GraphCursors& cursors,
                                 CursorName name) {
    const auto place = cursors.PlaceIn(graph, name);
    if (!place) {
        return std::nullopt;
    }
    CursorMark mark;
    mark.place = *place;
    mark.label = LabelAt(graph, *place);
    if (graph.Graph().XCoorType == CoorType::kAxis) {
        mark.line =
            QRect(*place - QPoint(kCrossArm, kCrossArm), *place + QPoint(kCrossArm, kCrossArm)) &
            graph.PlotArea();
    } else {
        mark.line = QRect(place->x(), graph.PlotArea().top(), 1, graph.PlotArea().height());
    }
    if (name == CursorName::kB) {
        // Below that of A where both would lie over each other.
        const auto a = cursors.PlaceIn(graph, CursorName::kA);
        if (a && LabelAt(graph, *a).intersects(mark.label)) {
            mark.label.moveTop(LabelAt(graph, *a).bottom() + 1);
        }
    }
    return mark;
}

void PaintCursors(QPainter& painter, const GraphBoard& board, const GraphCursors& cursors,
                  ColorRef background) {
    if (!cursors.IsShown()) {
        return;
    }
    painter.save();
    painter.setFont(LabelFont());
    const QColor color = MarkColor(background);
    for (const auto& drawer : board.Drawers()) {
        for (const bool active : {false, true}) {  // the active one over the other
            for (const CursorName name : kCursorNames) {
                const auto mark = active == (cursors.Active() == name)
                                      ? MarkOf(*drawer, cursors, name)
                                      : std::nullopt;
                if (mark) {
                    PaintMark(painter, *drawer, *mark, name, active, color, ToQColor(background));
                }
            }
        }
    }
    painter.restore();
}

QImage CursorsOver(const QImage& picture, const GraphBoard& board, const GraphCursors& cursors,
                   ColorRef background) {
    if (!cursors.IsShown() || picture.isNull()) {
        return {};
    }
    QImage over(picture.size(), QImage::Format_ARGB32_Premultiplied);
    over.setDevicePixelRatio(picture.devicePixelRatio());
    over.fill(Qt::transparent);
    QPainter painter(&over);
    PaintCursors(painter, board, cursors, background);
    return over;
}

}  // namespace wavo
