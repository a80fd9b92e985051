// Limits of the axes of a line source, for the capability modules.
#pragma once

#include <string>
#include <vector>

#include "master/capability_module.h"
#include "master/line_source.h"

namespace wavo::master {

/// What an axis does in a round.
struct AxisReach {
    double lowest = 0.0;
    double highest = 0.0;
    double largest_step = 0.0;    ///< from a line to the next
    double largest_change = 0.0;  ///< from a step to the next
};

/// Limits of an axis that hold what it does: positions rounded outwards to a plain number; velocity
/// and acceleration those of the machine of our recordings for X, Y, Z and A, or what is reached,
/// rounded up, where that is more or the axis is another one. `cycle_time` is seconds per line.
AxisLimits LimitsOf(const std::string& axis, const AxisReach& reach, double cycle_time);

/// Those of all axes of a source: as it tells them, else found from the lines of one round.
std::vector<AxisLimits> LimitsOf(const LineSource& source, double cycle_time);

/// `value` rounded up to 1, 2 or 5 times a power of ten; 0 stays 0.
/// REQUIRES: value >= 0 and finite.
double RoundedUp(double value);

}  // namespace wavo::master
