// Charts of a report on the screen, below each other: dark lines on white, as on the page.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <vector>

#include "report/chart.h"

namespace wavo {

class ChartView : public QWidget {
 public:
    explicit ChartView(QWidget* parent);

    /// Shows other charts; none: `text` in their place.
    void Show(std::vector<report::Chart> charts, const QString& text);

    [[nodiscard]] QSize sizeHint() const override { return {320, 180}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {160, 90}; }

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    std::vector<report::Chart> m_charts;
    QString m_text;
    QPixmap m_painted;  ///< of the charts, as long as neither they nor the size are others
};

}  // namespace wavo
