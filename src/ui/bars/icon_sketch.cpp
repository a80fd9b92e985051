#include "ui/bars/icon_sketch.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

/// Whether all edges run along rows or columns of pixels: they need no half covered pixels.
bool IsUpright(const QPolygonF& points) {
    for (qsizetype index = 1; index < points.size(); ++index) {
        if (points[index].x() != points[index - 1].x() &&
            points[index].y() != points[index - 1].y()) {
            return false;
        }
    }
    return true;
}

}  // namespace

IconSketch::IconSketch(QPainter& painter, int side, const QPalette& palette, bool disabled)
    : m_painter(painter),
      m_unit(side / 16.0),
      m_palette(palette),
      m_dark(palette.color(QPalette::Window).lightness() < 128),
      m_disabled(disabled) {}

QColor IconSketch::Color(IconInk ink) const {
    QColor color;
    switch (ink) {
        case IconInk::kLine:
            color = m_palette.color(QPalette::Active, QPalette::WindowText);
            break;
        case IconInk::kPaper:
            color = m_dark ? QColor(0x30, 0x34, 0x3a) : QColor(Qt::white);
            break;
        case IconInk::kGrey:
            color = QColor(m_dark ? 0xff8a9099 : 0xffb4bac2);
            break;
        case IconInk::kBlue:
            color = QColor(m_dark ? 0xff5aa9f0 : 0xff2f7fd0);
            break;
        case IconInk::kGreen:
            color = QColor(m_dark ? 0xff4ccf7c : 0xff22a052);
            break;
        case IconInk::kRed:
            color = QColor(m_dark ? 0xffff6b62 : 0xffd2382e);
            break;
        case IconInk::kYellow:
            color = QColor(m_dark ? 0xffe9bd4e : 0xfff2c14a);
            break;
    }
    if (m_disabled) {
        const int grey = qGray(color.rgb());
        color = QColor(grey, grey, grey);
        color.setAlphaF(0.4F);
    }
    return color;
}

int IconSketch::PenWidth(double units) const {
    return std::max(1, static_cast<int>(std::floor(units * m_unit + 0.25)));
}

QPolygonF IconSketch::Snapped(const std::vector<QPointF>& points, int pen) const {
    const double shift = pen % 2 == 1 ? 0.5 : 0.0;
    QPolygonF snapped;
    for (const QPointF& point : points) {
        snapped << QPointF(std::round(point.x() * m_unit - shift) + shift,
                           std::round(point.y() * m_unit - shift) + shift);
    }
    return snapped;
}

void IconSketch::Polygon(const std::vector<QPointF>& corners, IconInk fill, IconInk outline) {
    const int pen = PenWidth(1);
    m_painter.setPen(QPen(Color(outline), pen, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    m_painter.setBrush(Color(fill));
    QPolygonF closed = Snapped(corners, pen);
    closed << closed.first();
    m_painter.setRenderHint(QPainter::Antialiasing, !IsUpright(closed));
    m_painter.drawPolygon(closed);
}

void IconSketch::Box(double left, double top, double right, double bottom, IconInk fill,
                     IconInk outline) {
    Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}}, fill, outline);
}

void IconSketch::Circle(double x, double y, double radius, IconInk fill, IconInk outline) {
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setPen(QPen(Color(outline), PenWidth(1)));
    m_painter.setBrush(Color(fill));
    m_painter.drawEllipse(QPointF(x * m_unit, y * m_unit), radius * m_unit, radius * m_unit);
}

void IconSketch::Line(const std::vector<QPointF>& points, IconInk ink, double width) {
    const int pen = PenWidth(width);
    m_painter.setPen(QPen(Color(ink), pen, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    m_painter.setBrush(Qt::NoBrush);
    const QPolygonF line = Snapped(points, pen);
    m_painter.setRenderHint(QPainter::Antialiasing, !IsUpright(line));
    m_painter.drawPolyline(line);
}

}  // namespace wavo
