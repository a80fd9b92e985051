// The polar picture of a circle test: radial errors magnified about the nominal circle.
#pragma once

#include <QPainter>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

#include "measure/polar_scale.h"
#include "measure/radial_errors.h"

namespace wavo::report {

struct PolarTrace {
    measure::Sense sense = measure::Sense::kCounterClockwise;
    std::vector<measure::RadialError> errors;
};

/// Radial errors that are within limits, um.
struct PolarBand {
    double inner = 0.0;
    double outer = 0.0;
};

struct PolarPicture {
    std::vector<PolarTrace> traces;
    std::optional<PolarBand> band;
    std::optional<double> step;  ///< um per grid circle; chosen by itself where there is none
    QString first_axis = QStringLiteral("X");
    QString second_axis = QStringLiteral("Y");
};

/// The scale that a picture is drawn with.
measure::PolarScale ScaleOf(const PolarPicture& picture);

/// Paints into the largest square in the middle of a rectangle. `millimetre`: one in the painter's
/// units, for the widths of lines; text is set in the painter's font. Errors beyond the picture are
/// cut off at its edge.
void PaintPolar(QPainter& painter, const QRectF& rectangle, const PolarPicture& picture,
                double millimetre);

}  // namespace wavo::report
