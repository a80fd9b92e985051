#include "ui/panes/chart_view.h"

#include <QPaintEvent>
#include <QPainter>

namespace wavo {

namespace {

constexpr double kMillimetre = 3.0;  // logical pixels of a printed one
constexpr int kChartMargin = 4;

}  // namespace

ChartView::ChartView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ChartView::Show(std::vector<report::Chart> charts, const QString& text) {
    m_charts = std::move(charts);
    m_text = text;
    m_painted = {};
    update();
}

void ChartView::paintEvent(QPaintEvent* /*event*/) {
    const double ratio = devicePixelRatioF();
    const QSize size = this->size() * ratio;
    if (m_painted.size() != size) {
        m_painted = QPixmap(size);
        m_painted.setDevicePixelRatio(ratio);
        m_painted.fill(Qt::white);
        QPainter painter(&m_painted);
        painter.setFont(font());
        const QRectF area =
            QRectF(rect()).adjusted(kChartMargin, kChartMargin, -kChartMargin, -kChartMargin);
        const double height =
            area.height() / static_cast<double>(std::max<std::size_t>(m_charts.size(), 1));
        for (std::size_t i = 0; i < m_charts.size(); ++i) {
            report::PaintChart(painter,
                               QRectF(area.left(), area.top() + static_cast<double>(i) * height,
                                      area.width(), height),
                               m_charts[i], kMillimetre);
        }
        if (m_charts.empty()) {
            painter.setPen(Qt::black);
            painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_text);
        }
    }
    QPainter(this).drawPixmap(0, 0, m_painted);
}

}  // namespace wavo
