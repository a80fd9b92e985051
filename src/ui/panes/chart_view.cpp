#include "ui/panes/chart_view.h"

namespace wavo {

namespace {

constexpr double kMillimetre = 3.0;  // logical pixels of a printed one

}  // namespace

void ChartView::Show(std::vector<report::Chart> charts, const QString& text) {
    m_charts = std::move(charts);
    ShowAnew(!m_charts.empty(), text);
}

void ChartView::PaintContent(QPainter& painter, const QRectF& area) {
    const double height = area.height() / static_cast<double>(m_charts.size());
    double top = area.top();
    for (const report::Chart& chart : m_charts) {
        report::PaintChart(painter, QRectF(area.left(), top, area.width(), height), chart,
                           kMillimetre);
        top += height;
    }
}

}  // namespace wavo
