// Radial errors over the angle, as pictures show them.
#pragma once

#include <vector>

#include "measure/circle_test.h"

namespace wavo::measure {

struct RadialError {
    double degrees = 0.0;  ///< of the point about the centre, from the first axis, 0 to 360
    double error = 0.0;    ///< distance from the centre less the radius, um
};

/// The errors of a turn in the order of time, about a centre and a radius in mm. At most `most`
/// points: of more lines, the smallest and the largest error of each piece of them in their order.
std::vector<RadialError> RadialErrorsOf(const PlanePath& path, const Stretch& turn,
                                        const Circle& circle, std::size_t most = 4000);

}  // namespace wavo::measure
