// Colours and pens of printed figures: told apart without colour too.
#pragma once

#include <QColor>
#include <QPen>

namespace wavo::report {

inline const QColor kText(20, 20, 20);
inline const QColor kFaint(110, 110, 110);
inline const QColor kGrid(200, 200, 200);
inline const QColor kCounterClockwiseInk(11, 79, 158);
inline const QColor kClockwiseInk(196, 66, 12);
inline const QColor kBandInk(30, 130, 60);
inline const QColor kPassInk(20, 110, 50);
inline const QColor kFailInk(180, 20, 20);

/// A pen of a width in millimetres where `millimetre` is one in the painter's units.
inline QPen PenOf(const QColor& color, double width, double millimetre,
                  Qt::PenStyle style = Qt::SolidLine) {
    QPen pen(color, width * millimetre, style);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

}  // namespace wavo::report
