// The texts that a widget paints, and how well each is seen.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>
#include <vector>

class QWidget;

namespace wavo::testing {

struct PaintedText {
    QString text;
    QRect place;  ///< in the widget; its letters and little around them
};

/// The texts that a widget itself paints, without those of the widgets in it.
std::vector<PaintedText> TextsOf(QWidget& widget);

/// The contrast of the letters in a part of a picture: that of the pixel which stands out most
/// against the colour that is there most. 1 where there is one colour alone.
double SeenContrastIn(const QImage& picture, const QRect& part);

}  // namespace wavo::testing
