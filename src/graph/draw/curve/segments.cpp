#include "graph/draw/curve/segments.h"

#include <QPainter>
#include <QPen>

namespace wavo {

QRect PaintSegments(QImage& picture, const std::vector<QLine>& segments, const QRect& area,
                    const QColor& color) {
    // The same pixels without a ratio: scaling by the ratio and back may miss 1 by a rounding, and
    // segments then leave pixels beside those of their ends.
    QImage pixels(picture.bits(), picture.width(), picture.height(), picture.bytesPerLine(),
                  picture.format());
    QPainter painter(&pixels);
    painter.setClipRect(area);
    QPen pen(color);
    pen.setWidth(1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.drawLines(segments.data(), static_cast<int>(segments.size()));
    QRect touched;
    for (const QLine& segment : segments) {
        touched |= QRect(segment.p1(), QSize(1, 1)) | QRect(segment.p2(), QSize(1, 1));
    }
    return touched;
}

}  // namespace wavo
