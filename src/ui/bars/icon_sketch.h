// A drawing of 16 by 16 units that is painted at any size: corners lie on whole pixels and lines
// are whole pixels wide, so that straight edges are sharp.
#pragma once

#include <QColor>
#include <QPalette>
#include <QPointF>
#include <QPolygonF>
#include <vector>

class QPainter;

namespace wavo {

enum class IconInk { kLine, kPaper, kGrey, kBlue, kGreen, kRed, kYellow };

class IconSketch {
 public:
    /// Paints with `painter` into the square of `side` pixels at the origin, in colours that show
    /// on the windows of `palette`.
    IconSketch(QPainter& painter, int side, const QPalette& palette, bool disabled);

    /// A closed shape of straight edges.
    void Polygon(const std::vector<QPointF>& corners, IconInk fill, IconInk outline);
    void Box(double left, double top, double right, double bottom, IconInk fill, IconInk outline);
    void Circle(double x, double y, double radius, IconInk fill, IconInk outline);
    /// An open line, `width` units wide but at least a pixel.
    void Line(const std::vector<QPointF>& points, IconInk ink, double width = 1);

    /// The colour of an ink.
    [[nodiscard]] QColor Color(IconInk ink) const;

 private:
    [[nodiscard]] int PenWidth(double units) const;
    [[nodiscard]] QPolygonF Snapped(const std::vector<QPointF>& points, int pen) const;

    QPainter& m_painter;
    const double m_unit;  ///< pixels
    const QPalette m_palette;
    const bool m_dark;
    const bool m_disabled;
};

}  // namespace wavo
