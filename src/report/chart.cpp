#include "report/chart.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "measure/polar_scale.h"
#include "measure/words.h"
#include "report/ink.h"

namespace wavo::report {

namespace {

/// From values to places, and where the frame stands.
class ChartFrame {
 public:
    ChartFrame(const QRectF& rectangle, const Chart& chart, const QFontMetricsF& metrics)
        : m_chart(chart),
          m_frame(rectangle.adjusted(metrics.height() * 4.2, metrics.height() * 1.9,
                                     -metrics.height() * 0.8, -metrics.height() * 2.6)) {
        double low = std::numeric_limits<double>::infinity();
        double high = -low;
        for (const ChartCurve& curve : chart.curves) {
            for (const QPointF& point : curve.points) {
                if (std::isfinite(point.y())) {
                    low = std::min(low, point.y());
                    high = std::max(high, point.y());
                }
            }
        }
        for (const double level : chart.levels) {
            low = std::min(low, level);
            high = std::max(high, level);
        }
        if (!(high >= low)) {
            low = 0.0;
            high = 1.0;
        }
        const double room = high > low ? (high - low) * 0.06 : std::max(std::abs(high), 1.0) * 0.1;
        m_low = chart.y_first.value_or(low - room);
        m_high = chart.y_last.value_or(high + room);
    }

    [[nodiscard]] const QRectF& Frame() const { return m_frame; }
    [[nodiscard]] double Low() const { return m_low; }
    [[nodiscard]] double High() const { return m_high; }
    [[nodiscard]] double X(double value) const {
        const double share =
            m_chart.x_logarithmic
                ? std::log(value / m_chart.x_first) / std::log(m_chart.x_last / m_chart.x_first)
                : (value - m_chart.x_first) / (m_chart.x_last - m_chart.x_first);
        return m_frame.left() + share * m_frame.width();
    }
    [[nodiscard]] double Y(double value) const {
        return m_frame.bottom() - (value - m_low) / (m_high - m_low) * m_frame.height();
    }

 private:
    const Chart& m_chart;
    QRectF m_frame;
    double m_low = 0.0;
    double m_high = 1.0;
};

QString LabelOf(double value, int decimals) {
    return QString::fromStdString(measure::Decimals(value, decimals));
}

/// Places and texts of the labels below.
std::vector<std::pair<double, QString>> XLabels(const Chart& chart) {
    std::vector<std::pair<double, QString>> labels;
    if (chart.x_logarithmic) {
        const int first = static_cast<int>(std::floor(std::log10(chart.x_first)));
        for (int decade = first; decade < first + 12; ++decade) {
            for (const double step : {1.0, 2.0, 5.0}) {
                const double value = step * std::pow(10.0, decade);
                if (value >= chart.x_first * (1.0 - 1e-9) && value <= chart.x_last * (1.0 + 1e-9)) {
                    labels.emplace_back(value, LabelOf(value, std::max(0, -decade)));
                }
            }
        }
        return labels;
    }
    LabelSteps steps = LabelStepsFor(chart.x_first, chart.x_last, 10);
    if (chart.x_step > 0.0) {
        steps = {chart.x_first, chart.x_step, 0};
    }
    for (int i = 0; steps.first + i * steps.step <= chart.x_last + steps.step * 1e-6; ++i) {
        const double value = steps.first + i * steps.step;
        labels.emplace_back(value, LabelOf(value, steps.decimals));
    }
    return labels;
}

void PaintFrame(QPainter& painter, const ChartFrame& frame, const Chart& chart, double millimetre) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double height = metrics.height();
    const QRectF& box = frame.Frame();
    const QPen grid = PenOf(kGrid, 0.1, millimetre);
    for (const auto& [value, text] : XLabels(chart)) {
        const double x = frame.X(value);
        painter.setPen(grid);
        painter.drawLine(QPointF(x, box.top()), QPointF(x, box.bottom()));
        painter.setPen(kText);
        painter.drawText(
            QRectF(x - 5.0 * height, box.bottom() + 0.15 * height, 10.0 * height, height),
            Qt::AlignCenter, text);
    }
    const LabelSteps steps = LabelStepsFor(
        frame.Low(), frame.High(), std::max(2, static_cast<int>(box.height() / height / 2.2)));
    for (int i = 0; steps.first + i * steps.step <= frame.High() + steps.step * 1e-6; ++i) {
        const double value = steps.first + i * steps.step;
        const double y = frame.Y(value);
        painter.setPen(std::abs(value) < steps.step * 1e-6 ? PenOf(kFaint, 0.15, millimetre)
                                                           : grid);
        painter.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
        painter.setPen(kText);
        painter.drawText(QRectF(box.left() - 5.0 * height, y - height / 2.0, 4.7 * height, height),
                         Qt::AlignRight | Qt::AlignVCenter, LabelOf(value, steps.decimals));
    }
    painter.setPen(PenOf(kText, 0.15, millimetre));
    painter.drawRect(box);
    painter.setPen(kText);
    painter.drawText(QRectF(box.left(), box.bottom() + 1.2 * height, box.width(), height * 1.2),
                     Qt::AlignCenter, chart.x_title);
    painter.drawText(
        QRectF(box.left() - 4.2 * height, box.top() - 1.8 * height, box.width(), height * 1.2),
        Qt::AlignLeft | Qt::AlignVCenter, chart.y_title);
}

QPen PenOfCurve(const ChartCurve& curve, double millimetre) {
    QPen pen = PenOf(curve.color, 0.25, millimetre);
    if (curve.dashed) {
        pen.setDashPattern({5.0, 2.5});
        pen.setCapStyle(Qt::FlatCap);
    }
    return pen;
}

void PaintCurves(QPainter& painter, const ChartFrame& frame, const Chart& chart,
                 double millimetre) {
    painter.save();
    painter.setClipRect(frame.Frame());
    painter.setPen(PenOf(kBandInk, 0.25, millimetre, Qt::DashDotLine));
    for (const double level : chart.levels) {
        painter.drawLine(QPointF(frame.Frame().left(), frame.Y(level)),
                         QPointF(frame.Frame().right(), frame.Y(level)));
    }
    for (const ChartCurve& curve : chart.curves) {
        painter.setPen(PenOfCurve(curve, millimetre));
        QPolygonF line;
        for (const QPointF& point : curve.points) {
            if (std::isfinite(point.y())) {
                line.append(QPointF(frame.X(point.x()), frame.Y(point.y())));
                continue;
            }
            painter.drawPolyline(line);
            line.clear();
        }
        painter.drawPolyline(line);
    }
    painter.restore();
}

/// Names with a piece of their line, from the right, above the frame.
void PaintKey(QPainter& painter, const ChartFrame& frame, const Chart& chart, double millimetre) {
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double height = metrics.height();
    double right = frame.Frame().right();
    const double middle = frame.Frame().top() - 1.1 * height;
    std::for_each(chart.curves.rbegin(), chart.curves.rend(), [&](const ChartCurve& curve) {
        if (curve.name.isEmpty()) {
            return;
        }
        const double width = metrics.horizontalAdvance(curve.name) + 0.3 * height;
        painter.setPen(kText);
        painter.drawText(QRectF(right - width, middle - height / 2.0, width, height),
                         Qt::AlignRight | Qt::AlignVCenter, curve.name);
        painter.setPen(PenOfCurve(curve, millimetre));
        painter.drawLine(QPointF(right - width - 3.0 * height, middle),
                         QPointF(right - width - 0.2 * height, middle));
        right -= width + 4.0 * height;
    });
}

}  // namespace

LabelSteps LabelStepsFor(double first, double last, int most) {
    const double step = measure::PolarScaleFor((last - first) * measure::PolarScale::kCircles /
                                                   static_cast<double>(std::max(most, 1)),
                                               1e-12)
                            .step;
    return {std::ceil(first / step - 1e-9) * step, step,
            std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)))};
}

void PaintChart(QPainter& painter, const QRectF& rectangle, const Chart& chart, double millimetre) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const ChartFrame frame(rectangle, chart, QFontMetricsF(painter.font(), painter.device()));
    PaintFrame(painter, frame, chart, millimetre);
    PaintCurves(painter, frame, chart, millimetre);
    PaintKey(painter, frame, chart, millimetre);
    painter.restore();
}

}  // namespace wavo::report
