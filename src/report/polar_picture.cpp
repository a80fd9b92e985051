#include "report/polar_picture.h"

#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "measure/units.h"
#include "measure/words.h"
#include "report/ink.h"

namespace wavo::report {

namespace {

using measure::PolarScale;

/// From errors to places in the picture.
class PolarMapping {
 public:
    PolarMapping(const QPointF& centre, double half_size, const PolarScale& scale)
        : m_centre(centre), m_half_size(half_size), m_scale(scale) {}

    [[nodiscard]] double Radius(double error) const {
        return std::clamp(m_scale.Radius(error, m_half_size), 0.0, m_half_size);
    }
    [[nodiscard]] QPointF At(double degrees, double error) const {
        return OnRadius(degrees, Radius(error));
    }
    [[nodiscard]] QPointF OnRadius(double degrees, double radius) const {
        const double angle = degrees / measure::kDegrees;
        return m_centre + QPointF(radius * std::cos(angle), -radius * std::sin(angle));
    }
    [[nodiscard]] const QPointF& Centre() const { return m_centre; }
    [[nodiscard]] double HalfSize() const { return m_half_size; }

 private:
    QPointF m_centre;
    double m_half_size;
    PolarScale m_scale;
};

QPen PenOfSense(measure::Sense sense, double millimetre) {
    const bool ccw = sense == measure::Sense::kCounterClockwise;
    QPen pen = PenOf(ccw ? kCounterClockwiseInk : kClockwiseInk, 0.3, millimetre);
    if (!ccw) {
        pen.setDashPattern({5.0, 2.5});
        pen.setCapStyle(Qt::FlatCap);
    }
    return pen;
}

void PaintGrid(QPainter& painter, const PolarMapping& mapping, const PolarScale& scale,
               double millimetre) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(PenOf(kGrid, 0.1, millimetre));
    for (int i = -PolarScale::kCircles; i <= PolarScale::kCircles; ++i) {
        if (i != 0) {
            const double radius = mapping.Radius(i * scale.step);
            painter.drawEllipse(mapping.Centre(), radius, radius);
        }
    }
    for (int degrees = 0; degrees < 360; degrees += 45) {
        painter.setPen(PenOf(kGrid, degrees % 90 == 0 ? 0.2 : 0.1, millimetre));
        painter.drawLine(
            mapping.OnRadius(degrees, mapping.Radius(-PolarScale::kCircles * scale.step)),
            mapping.OnRadius(degrees, mapping.HalfSize() * 0.97));
    }
    painter.setPen(PenOf(kText, 0.2, millimetre));
    painter.drawEllipse(mapping.Centre(), mapping.Radius(0.0), mapping.Radius(0.0));
}

void PaintBand(QPainter& painter, const PolarMapping& mapping, const PolarBand& band,
               double millimetre) {
    painter.setPen(PenOf(kBandInk, 0.25, millimetre, Qt::DashDotLine));
    for (const double error : {band.inner, band.outer}) {
        painter.drawEllipse(mapping.Centre(), mapping.Radius(error), mapping.Radius(error));
    }
}

void PaintTrace(QPainter& painter, const PolarMapping& mapping, const PolarTrace& trace,
                double millimetre) {
    QPolygonF line;
    for (const auto& error : trace.errors) {
        line.append(mapping.At(error.degrees, error.error));
    }
    painter.setPen(PenOfSense(trace.sense, millimetre));
    painter.drawPolyline(line);
}

/// Circles (counter-clockwise) and squares (clockwise) where the axes turn round.
void PaintReversals(QPainter& painter, const PolarMapping& mapping, const PolarTrace& trace,
                    double millimetre) {
    // One around the other where both lie at one place.
    const bool ccw = trace.sense == measure::Sense::kCounterClockwise;
    const double size = (ccw ? 1.3 : 0.6) * millimetre;
    painter.setPen(PenOf(PenOfSense(trace.sense, millimetre).color(), 0.25, millimetre));
    painter.setBrush(ccw ? Qt::NoBrush : QBrush(Qt::white));
    for (int degrees = 0; degrees < 360; degrees += 90) {
        const auto away = [&](const measure::RadialError& error) {
            return std::abs(std::remainder(error.degrees - degrees, 360.0));
        };
        const auto nearest = std::ranges::min_element(trace.errors, {}, away);
        if (nearest == trace.errors.end() || away(*nearest) > 2.0) {
            continue;
        }
        const QPointF at = mapping.At(nearest->degrees, nearest->error);
        if (ccw) {
            painter.drawEllipse(at, size, size);
        } else {
            painter.drawRect(QRectF(at.x() - size, at.y() - size, 2.0 * size, 2.0 * size));
        }
    }
    painter.setBrush(Qt::NoBrush);
}

void PaintNames(QPainter& painter, const PolarMapping& mapping, const PolarPicture& picture,
                const PolarScale& scale) {
    painter.setPen(kText);
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double height = metrics.height();
    const auto centred = [&](const QPointF& at, const QString& text) {
        const double width = metrics.horizontalAdvance(text) + 2.0;
        painter.drawText(QRectF(at.x() - width / 2.0, at.y() - height / 2.0, width, height),
                         Qt::AlignCenter, text);
    };
    // In the corners between the axes, where no curve comes.
    const double edge = mapping.HalfSize() * 0.99 - height / 2.0;
    const double beside = height * 0.9;
    centred(mapping.Centre() + QPointF(edge, -beside), QStringLiteral("+") + picture.first_axis);
    centred(mapping.Centre() + QPointF(-edge, -beside), QStringLiteral("-") + picture.first_axis);
    centred(mapping.Centre() + QPointF(beside * 1.2, -edge),
            QStringLiteral("+") + picture.second_axis);
    centred(mapping.Centre() + QPointF(beside * 1.2, edge),
            QStringLiteral("-") + picture.second_axis);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(scale.step) - 1e-9)));
    centred(mapping.Centre(), QString::fromStdString(measure::Decimals(scale.step, decimals)) +
                                  QStringLiteral(" µm/div"));
}

}  // namespace

PolarScale ScaleOf(const PolarPicture& picture) {
    if (picture.step) {
        return {*picture.step};
    }
    double largest = 0.0;
    for (const PolarTrace& trace : picture.traces) {
        for (const auto& error : trace.errors) {
            largest = std::max(largest, std::abs(error.error));
        }
    }
    return measure::PolarScaleFor(largest);
}

void PaintPolar(QPainter& painter, const QRectF& rectangle, const PolarPicture& picture,
                double millimetre) {
    const PolarScale scale = ScaleOf(picture);
    const PolarMapping mapping(rectangle.center(),
                               std::min(rectangle.width(), rectangle.height()) / 2.0, scale);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    PaintGrid(painter, mapping, scale, millimetre);
    if (picture.band) {
        PaintBand(painter, mapping, *picture.band, millimetre);
    }
    for (const PolarTrace& trace : picture.traces) {
        PaintTrace(painter, mapping, trace, millimetre);
    }
    for (const PolarTrace& trace : picture.traces) {
        PaintReversals(painter, mapping, trace, millimetre);
    }
    PaintNames(painter, mapping, picture, scale);
    painter.restore();
}

}  // namespace wavo::report
