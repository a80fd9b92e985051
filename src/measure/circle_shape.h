// What the shape of measured circles consists of: one fit over the turns of both senses.
//
// Radial model, th the angle of the actual path about the centre, s = +1 counter-clockwise:
//   r - R = a_k cos + b_k sin + dR + R/2 (Sx-Sy) cos 2th + R/2 eps sin 2th - s v/2 dtau sin 2th
//           - sx Bx/2 cos - sy By/2 sin,   sx = -s sgn(sin), sy = s sgn(cos)
// Of one sense alone squareness and servo mismatch are one column: the oval at 45 degrees. Zones
// about the reversals of the axes are left out.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/circle_fit.h"
#include "measure/circle_runs.h"
#include "measure/figure.h"
#include "measure/steps.h"

namespace wavo::measure {

struct ShapeTurn {
    Arc points;
    Sense sense = Sense::kCounterClockwise;
    double feed = 0.0;  ///< mean path feed, mm/s
    Circle circle;      ///< through the points, where the fit starts
};

struct ShapeSetup {
    double zone = 5.0;            ///< half width of the zones about the reversals, degrees
    double widest_zone = 15.0;    ///< behind a reversal, degrees
    std::optional<double> noise;  ///< known noise of the radius, um
    double spike_window = 15.0;   ///< behind a reversal, degrees
    double spike_share = 0.5;     ///< of the height, at which the width is taken
};

/// A figure with its standard error.
struct FittedFigure {
    Figure value;
    double error = 0.0;  ///< standard error, for the residual as noise
};

struct ReversalSpike {
    Sense sense = Sense::kCounterClockwise;
    int degrees = 0;  ///< of the reversal: 0 and 180 of x, 90 and 270 of y
    Figure height;    ///< um, outward positive
    Figure width;     ///< degrees
    Figure duration;  ///< ms
};

struct CircleShape {
    double radius = 0.0;            ///< R of the model, mm
    FittedFigure radius_change;     ///< dR, um
    FittedFigure scale_difference;  ///< Sx - Sy, um/m
    FittedFigure squareness;        ///< eps, um/m
    FittedFigure servo_mismatch;    ///< dtau = tau_y - tau_x, ms
    FittedFigure oval;              ///< s2 = R eps/2 - s v dtau/2, um; of one sense only
    FittedFigure backlash_x;        ///< um
    FittedFigure backlash_y;
    std::vector<Circle> centres;     ///< per turn, mm
    double residual = 0.0;           ///< rms over the rows, each turn weighing the same, um
    std::vector<double> deviations;  ///< per turn, standard deviation of the residual, um
    double condition = 0.0;          ///< of the matrix with columns of unit length
    double zone_before = 0.0;        ///< left out about each reversal, degrees
    double zone_behind = 0.0;
    int rounds = 0;
    std::vector<ReversalSpike> spikes;  ///< per turn at 0, 90, 180 and 270 degrees
    std::vector<std::string> notes;     ///< what the user should know
};

/// Fits the model about the radius `radius`, mm. REQUIRES: one turn or more.
/// Not told where points are too few or leave the model undetermined.
Steps<Told<CircleShape>> FitShape(std::span<const ShapeTurn> turns, double radius,
                                  ShapeSetup setup);

}  // namespace wavo::measure
