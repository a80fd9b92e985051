#include "ui/panes/polar_view.h"

#include <algorithm>

namespace wavo {

namespace {

constexpr double kPageSide = 88.0;  // mm, of the picture on the page

}  // namespace

void PolarView::Show(std::optional<report::PolarPicture> picture, const QString& text) {
    m_picture = std::move(picture);
    ShowAnew(m_picture.has_value(), text);
}

void PolarView::PaintContent(QPainter& painter, const QRectF& area) {
    report::PaintPolar(painter, area, *m_picture,
                       std::max(std::min(area.width(), area.height()) / kPageSide, 2.0));
}

}  // namespace wavo
