// Makes a text of a graph fit into a width without making it say something else.
//
// Invariants:
// 1. A range is shown in full or not at all: half of a number would be another number.
// 2. The name of an axis loses its middle, never its end: names differ there as often as in front.
#pragma once

#include <QFontMetrics>
#include <QString>

namespace wavo {

/// The width, pixels, that a text wants; 0 for none.
int TextWidth(const QFontMetrics& metrics, const QString& text);

/// `text`, if need be shortened to `width` pixels: "Y: name=(minimum ... maximum)" first in its
/// name, then by its range; a time range drops out; any other text loses its end.
QString ShortenedText(const QString& text, const QFontMetrics& metrics, int width);

}  // namespace wavo
