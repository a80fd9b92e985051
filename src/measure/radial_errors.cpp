#include "measure/radial_errors.h"

#include <algorithm>
#include <cmath>

#include "measure/units.h"

namespace wavo::measure {

namespace {

RadialError ErrorAt(const PlanePath& path, std::size_t place, const Circle& circle) {
    const double u = path.x[place] - circle.x;
    const double w = path.y[place] - circle.y;
    const double degrees = std::atan2(w, u) * kDegrees;
    return {degrees < 0.0 ? degrees + 360.0 : degrees,
            (std::hypot(u, w) - circle.radius) * kMicrometres};
}

/// Of the distance from the centre: larger where that is, and quicker to have.
double SquareAt(const PlanePath& path, std::size_t place, const Circle& circle) {
    const double u = path.x[place] - circle.x;
    const double w = path.y[place] - circle.y;
    return u * u + w * w;
}

}  // namespace

std::vector<RadialError> RadialErrorsOf(const PlanePath& path, const Stretch& turn,
                                        const Circle& circle, std::size_t most) {
    const std::size_t pieces = std::max<std::size_t>(most / 2, 1);
    std::vector<RadialError> errors;
    if (turn.Size() <= most) {
        for (std::size_t i = turn.first; i < turn.end; ++i) {
            errors.push_back(ErrorAt(path, i, circle));
        }
        return errors;
    }
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        const std::size_t first = turn.first + piece * turn.Size() / pieces;
        const std::size_t end = turn.first + (piece + 1) * turn.Size() / pieces;
        std::size_t low = first;
        std::size_t high = first;
        double smallest = SquareAt(path, first, circle);
        double largest = smallest;
        for (std::size_t i = first + 1; i < end; ++i) {
            const double square = SquareAt(path, i, circle);
            low = square < smallest ? i : low;
            smallest = std::min(square, smallest);
            high = square > largest ? i : high;
            largest = std::max(square, largest);
        }
        errors.push_back(ErrorAt(path, std::min(low, high), circle));
        errors.push_back(ErrorAt(path, std::max(low, high), circle));
    }
    return errors;
}

}  // namespace wavo::measure
