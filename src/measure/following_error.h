// Following error and velocity lag of one axis: commanded less actual, cycle by cycle.
#pragma once

#include <span>
#include <string>

#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

/// Which cycles take part.
enum class LagSamples {
    kConstantSpeed,  ///< moving at a speed that held for 0.2 s; where there are none: moving
    kMoving,         ///< faster than 10 % of the fastest
    kAll,            ///< every cycle of the stretch: an evaluated turn of a circle
};

struct FollowingError {
    LagSamples samples = LagSamples::kConstantSpeed;  ///< those that were taken
    std::size_t count = 0;
    Figure largest;      ///< largest magnitude, um
    Figure rms;          ///< um
    Figure lag;          ///< tau of e = tau v + e0, ms
    Figure offset;       ///< e0, um; told where the axis moves in both directions
    Figure gain;         ///< Kv = 1 / tau, 1/s
    Figure linear_gain;  ///< Kv in (m/min)/mm, of linear axes
};

/// The following error of the cycles of a stretch; values around it serve for the speed. Cycles
/// with a missing value take no part. REQUIRES: columns of one size.
FollowingError FollowingErrorOf(std::span<const double> commanded, std::span<const double> actual,
                                double cycle_time, const Stretch& stretch,
                                LagSamples samples = LagSamples::kConstantSpeed);

/// In words: "constant speed", "moving", "all".
std::string NameOf(LagSamples samples);

}  // namespace wavo::measure
