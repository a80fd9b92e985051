// Makes a text of a graph fit into a width without making it say something else.
//
// Invariants:
// 1. A range is shown in full or not at all: half of a number would be another number.
// 2. Beside its coordinate or its range the name of an axis loses its middle, never its end: names
//    differ there as often as in front.
#pragma once

#include <QFontMetrics>
#include <QString>

#include "graph/draw/frame/texts.h"

namespace wavo {

/// The width, pixels, that a text wants; 0 for none.
int TextWidth(const QFontMetrics& metrics, const QString& text);

/// `text`, if need be shortened to `width` pixels: it loses its end.
QString ShortenedText(const QString& text, const QFontMetrics& metrics, int width);

/// The same of a coordinate: its name is shortened first, then its range goes; a time range drops
/// out as a whole.
QString ShortenedText(const AxisText& text, const QFontMetrics& metrics, int width);

/// What is shown of a y axis where many have to share a line, for ShortenedText: the coordinate
/// goes before the range, and both before the name is cut.
AxisText WithoutWhatIsKnown(const AxisText& text, const QFontMetrics& metrics, int width);

}  // namespace wavo
