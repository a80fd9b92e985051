// Contour error: how far the actual path is from the commanded one, wherever along it.
//
// Not the following error, which compares the same cycle and is 10 to 100 times as large.
#pragma once

#include <span>
#include <vector>

#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

struct ContourSetup {
    /// Segments of the commanded path looked at on either side of the cycle.
    std::size_t reach = 20;
    std::size_t widest_reach = 1000;  ///< where the nearest one is the last looked at
};

/// Segments to look at for the largest lag of the axes, s.
std::size_t ContourReach(double largest_lag, double cycle_time);

/// One axis of the path.
struct ContourAxis {
    std::span<const double> commanded;  ///< mm
    std::span<const double> actual;
};

/// Distance of each cycle of a stretch from the commanded path, mm; NaN where a value is missing.
/// REQUIRES: two or three axes, columns of one size.
std::vector<double> ContourErrors(std::span<const ContourAxis> axes, const Stretch& stretch,
                                  const ContourSetup& setup = {});

/// The same of two axes with a sign: positive left of the direction of travel.
std::vector<double> SignedContourErrors(std::span<const ContourAxis> axes, const Stretch& stretch,
                                        const ContourSetup& setup = {});

struct ContourFigures {
    Figure largest;              ///< largest contour error, um
    Figure rms;                  ///< um
    std::size_t largest_at = 0;  ///< its place
    Figure largest_following;    ///< largest following error as a vector, um
};

ContourFigures ContourFiguresOf(std::span<const ContourAxis> axes, const Stretch& stretch,
                                const ContourSetup& setup = {});

/// The same of errors that are known, of the cycles from the first one on.
ContourFigures ContourFiguresOf(std::span<const ContourAxis> axes, std::span<const double> errors);

}  // namespace wavo::measure
