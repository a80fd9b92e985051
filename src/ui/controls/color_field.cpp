#include "ui/controls/color_field.h"

#include <QPainter>

namespace wavo {

void ColorField::SetColor(const QColor& color) {
    m_color = color;
    repaint();
}

QSize ColorField::sizeHint() const {
    const int height = fontMetrics().height() + 8;
    return {4 * height, height};
}

void ColorField::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), m_color);
    // The border tells the field from a window of the same colour, and shows the focus.
    painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace wavo
