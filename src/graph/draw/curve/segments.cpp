#include "graph/draw/curve/segments.h"

#include <QPainter>
#include <QPen>
#include <QPoint>
#include <QRegion>
#include <cmath>
#include <cstdlib>

namespace wavo {

namespace {

/// The columns of the plot area that are painted, or those in gaps.
QRegion ColumnsOf(const DashPattern& dashes, const QRect& area, bool painted) {
    std::vector<QRect> stripes;
    for (int begin = 0; begin < area.width();) {
        int end = begin + 1;
        while (end < area.width() && dashes.Paints(end) == dashes.Paints(begin)) {
            ++end;
        }
        if (dashes.Paints(begin) == painted) {
            stripes.emplace_back(area.left() + begin, area.top(), end - begin, area.height());
        }
        begin = end;
    }
    QRegion region;
    region.setRects(stripes.data(), static_cast<int>(stripes.size()));
    return region;
}

/// The ends of segments that cover many rows of each column: what a gap does not hide.
std::vector<QLine> EndsOfSteepOnes(const std::vector<QLine>& segments, const DashPattern& dashes) {
    std::vector<QLine> ends;
    for (const QLine& segment : segments) {
        const double rows = std::abs(static_cast<double>(segment.dy()));
        if (rows >= dashes.MostHidden() * (std::abs(static_cast<double>(segment.dx())) + 1.0)) {
            const double part = (dashes.EndRows() - 1) / rows;
            const QPoint way(static_cast<int>(std::lround(segment.dx() * part)),
                             static_cast<int>(std::lround(segment.dy() * part)));
            ends.emplace_back(segment.p1(), segment.p1() + way);
            ends.emplace_back(segment.p2() - way, segment.p2());
        }
    }
    return ends;
}

void DrawAll(QPainter& painter, const std::vector<QLine>& segments) {
    painter.drawLines(segments.data(), static_cast<int>(segments.size()));
}

}  // namespace

void AddSpans(const ColumnSpans& spans, const CurveStyle& style, ColumnSpans& dashed,
              PlotCanvas& canvas) {
    if (style.dashes.IsSolid()) {
        canvas.Add(spans, style.color.rgb());
    } else {
        style.dashes.Cut(spans, dashed);
        canvas.Add(dashed, style.color.rgb());
    }
}

QRect PaintSegments(QImage& picture, const std::vector<QLine>& segments, const QRect& area,
                    const CurveStyle& style) {
    // The same pixels without a ratio: scaling by the ratio and back may miss 1 by a rounding, and
    // segments then leave pixels beside those of their ends.
    QImage pixels(picture.bits(), picture.width(), picture.height(), picture.bytesPerLine(),
                  picture.format());
    QPainter painter(&pixels);
    QPen pen(style.color);
    pen.setWidth(1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    if (style.dashes.IsSolid()) {
        painter.setClipRect(area);
        DrawAll(painter, segments);
    } else {
        painter.setClipRegion(ColumnsOf(style.dashes, area, true));
        DrawAll(painter, segments);
        painter.setClipRegion(ColumnsOf(style.dashes, area, false));
        DrawAll(painter, EndsOfSteepOnes(segments, style.dashes));
    }
    QRect touched;
    for (const QLine& segment : segments) {
        touched |= QRect(segment.p1(), QSize(1, 1)) | QRect(segment.p2(), QSize(1, 1));
    }
    return touched;
}

}  // namespace wavo
