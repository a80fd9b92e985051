// Charts of a report on the screen, below each other.
#pragma once

#include <vector>

#include "report/chart.h"
#include "ui/panes/page_view.h"

namespace wavo {

class ChartView : public PageView {
 public:
    explicit ChartView(QWidget* parent) : PageView(parent) {}

    /// Shows other charts; none: `text` in their place.
    void Show(std::vector<report::Chart> charts, const QString& text);

    [[nodiscard]] QSize sizeHint() const override { return {320, 180}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {160, 90}; }

 protected:
    void PaintContent(QPainter& painter, const QRectF& area) override;

 private:
    std::vector<report::Chart> m_charts;
};

}  // namespace wavo
