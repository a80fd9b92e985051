// Limits of the axes of a line source, for the capability modules.
#pragma once

#include <vector>

#include "master/capability_module.h"
#include "master/line_source.h"

namespace wavo::master {

/// Finds limits that hold every line of one round: positions rounded outwards to a plain number;
/// velocity and acceleration those of the machine of our recordings for X, Y, Z and A, or what the
/// lines reach, rounded up, where that is more or the axis is another one.
/// `cycle_time` is seconds per line.
std::vector<AxisLimits> LimitsOf(const LineSource& source, double cycle_time);

/// `value` rounded up to 1, 2 or 5 times a power of ten; 0 stays 0.
/// REQUIRES: value >= 0 and finite.
double RoundedUp(double value);

}  // namespace wavo::master
