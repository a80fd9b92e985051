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
        RadialError low = ErrorAt(path, first, circle);
        RadialError high = low;
        bool low_comes_first = true;
        for (std::size_t i = first + 1; i < end; ++i) {
            const RadialError error = ErrorAt(path, i, circle);
            if (error.error < low.error) {
                low = error;
                low_comes_first = false;
            }
            if (error.error > high.error) {
                high = error;
                low_comes_first = true;
            }
        }
        errors.push_back(low_comes_first ? low : high);
        errors.push_back(low_comes_first ? high : low);
    }
    return errors;
}

}  // namespace wavo::measure
