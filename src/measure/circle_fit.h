// Circles through measured points: least squares and minimum zone.
#pragma once

#include <span>
#include <vector>

#include "measure/figure.h"
#include "measure/steps.h"

namespace wavo::measure {

struct Circle {
    double x = 0.0;  ///< centre, mm
    double y = 0.0;
    double radius = 0.0;  ///< mm
};

/// Points of one arc, finite ones. Each arc of a fit weighs the same, however many points it has.
struct Arc {
    std::span<const double> x;  ///< mm
    std::span<const double> y;
};

/// The circle with the least sum of squared distances from the points: algebraic start, then Gauss
/// and Newton. Not told for less than three points, points on a line or in one place, and where the
/// steps do not end.
Told<Circle> FitCircle(std::span<const Arc> arcs);
Steps<Told<Circle>> FitCircleInSteps(std::span<const Arc> arcs);

/// The algebraic start alone: within 1 nm on a full turn, biased towards smaller radii on arcs.
Told<Circle> FitCircleQuickly(std::span<const Arc> arcs);
Steps<Told<Circle>> FitCircleQuicklyInSteps(std::span<const Arc> arcs);

/// Smallest and largest distance of the points from a place.
struct RadialRange {
    double smallest = 0.0;  ///< mm
    double largest = 0.0;   ///< mm

    [[nodiscard]] double Width() const { return largest - smallest; }
};

RadialRange RadialRangeAbout(std::span<const Arc> arcs, double x, double y);

/// Root of the mean squared distance of the points from the circle, mm.
double RadialResidual(std::span<const Arc> arcs, const Circle& circle);

/// The centre about which the radial range is least (minimum zone), from a start near it; its
/// radius lies in the middle of the zone. Not told where the steps do not end.
Told<Circle> FitMinimumZone(std::span<const Arc> arcs, const Circle& start);

}  // namespace wavo::measure
