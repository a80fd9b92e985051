// A chart of curves over a common x axis, for printed pages.
#pragma once

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

namespace wavo::report {

struct ChartCurve {
    std::vector<QPointF> points;  ///< NaN in y interrupts the line
    QColor color;
    bool dashed = false;
    QString name;
};

struct Chart {
    QString x_title;  ///< with the unit
    QString y_title;
    std::vector<ChartCurve> curves;
    std::vector<double> levels;  ///< horizontal lines: limits
    double x_first = 0.0;
    double x_last = 1.0;
    double x_step = 0.0;  ///< between labels; 0: chosen
    bool x_logarithmic = false;
    std::optional<double> y_first;  ///< else from the curves
    std::optional<double> y_last;
};

/// Labels from first to last at most `most` apart by 1, 2 or 5 times a power of ten.
struct LabelSteps {
    double first = 0.0;
    double step = 1.0;
    int decimals = 0;
};
LabelSteps LabelStepsFor(double first, double last, int most);

/// Paints within a rectangle. `millimetre`: one in the painter's units.
void PaintChart(QPainter& painter, const QRectF& rectangle, const Chart& chart, double millimetre);

}  // namespace wavo::report
