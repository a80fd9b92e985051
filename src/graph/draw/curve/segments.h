// Painting the segments of a curve that has too few samples for spans.
#pragma once

#include <QColor>
#include <QImage>
#include <QLine>
#include <QRect>
#include <vector>

namespace wavo {

/// Paints segments of one pixel inside `area`, each on its own: the picture does not depend on how
/// many there are. Device pixels, whatever ratio the picture says of itself. Returns a rectangle
/// that holds all pixels that may have been changed.
QRect PaintSegments(QImage& picture, const std::vector<QLine>& segments, const QRect& area,
                    const QColor& color);

}  // namespace wavo
