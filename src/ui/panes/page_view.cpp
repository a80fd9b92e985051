#include "ui/panes/page_view.h"

namespace wavo {

namespace {

constexpr int kPageViewMargin = 4;

}  // namespace

PageView::PageView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PageView::ShowAnew(bool has_content, const QString& text) {
    m_has_content = has_content;
    m_text = text;
    m_painted = {};
    update();
}

void PageView::paintEvent(QPaintEvent* /*event*/) {
    const double ratio = devicePixelRatioF();
    const QSize size = this->size() * ratio;
    if (m_painted.size() != size) {
        m_painted = QPixmap(size);
        m_painted.setDevicePixelRatio(ratio);
        m_painted.fill(Qt::white);
        QPainter painter(&m_painted);
        painter.setFont(font());
        const QRectF area = QRectF(rect()).adjusted(kPageViewMargin, kPageViewMargin,
                                                    -kPageViewMargin, -kPageViewMargin);
        if (m_has_content) {
            PaintContent(painter, area);
        } else {
            painter.setPen(Qt::black);
            painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_text);
        }
    }
    QPainter(this).drawPixmap(0, 0, m_painted);
}

}  // namespace wavo
