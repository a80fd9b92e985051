#include "ui/panes/polar_view.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

namespace wavo {

namespace {

constexpr int kLeastSide = 140;
constexpr int kUsualSide = 280;
constexpr double kPageSide = 88.0;  // mm, of the picture on the page
constexpr int kPolarMargin = 4;

}  // namespace

PolarView::PolarView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize PolarView::sizeHint() const {
    return {kUsualSide, kUsualSide};
}

QSize PolarView::minimumSizeHint() const {
    return {kLeastSide, kLeastSide};
}

void PolarView::Show(std::optional<report::PolarPicture> picture, const QString& text) {
    m_picture = std::move(picture);
    m_text = text;
    m_painted = {};
    update();
}

void PolarView::paintEvent(QPaintEvent* /*event*/) {
    const double ratio = devicePixelRatioF();
    const QSize size = this->size() * ratio;
    if (m_painted.size() != size) {
        m_painted = QPixmap(size);
        m_painted.setDevicePixelRatio(ratio);
        m_painted.fill(Qt::white);
        QPainter painter(&m_painted);
        painter.setFont(font());
        const QRectF area =
            QRectF(rect()).adjusted(kPolarMargin, kPolarMargin, -kPolarMargin, -kPolarMargin);
        if (m_picture) {
            report::PaintPolar(painter, area, *m_picture,
                               std::max(std::min(area.width(), area.height()) / kPageSide, 2.0));
        } else {
            painter.setPen(Qt::black);
            painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_text);
        }
    }
    QPainter(this).drawPixmap(0, 0, m_painted);
}

}  // namespace wavo
