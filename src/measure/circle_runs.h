// Finding the full turns of a circle test in a recording, and their sense.
//
// A run is where path speed and curvature stay near their medians. Both tests are needed: the
// approach runs at the feed of the circle, and a reversal of the sense is one slow cycle, no
// standstill. Of a run with enough angle one turn is evaluated, from the middle of it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/circle_fit.h"
#include "measure/series.h"
#include "measure/steps.h"

namespace wavo::measure {

enum class Sense { kCounterClockwise = 1, kClockwise = -1 };

/// +1 or -1.
inline double SignOf(Sense sense) {
    return sense == Sense::kCounterClockwise ? 1.0 : -1.0;
}

/// The two axes of a plane, cycle by cycle; NaN where a cycle or a value is missing.
struct PlanePath {
    double cycle_time = 0.001;  ///< s
    std::span<const double> x;  ///< actual, mm
    std::span<const double> y;
    std::span<const double> x_cmd;  ///< commanded, mm; both empty where there are none
    std::span<const double> y_cmd;

    [[nodiscard]] bool HasCommanded() const { return !x_cmd.empty() && !y_cmd.empty(); }
};

struct RunSetup {
    double speed_width = 0.010;      ///< half width of the difference for the speed, s
    double curvature_width = 0.050;  ///< half width of the three points for the curvature, s
    double window = 0.100;           ///< of the seed of a run, s
    double speed_tolerance = 0.02;   ///< share of the median
    double curvature_tolerance = 0.30;
    double margin = 0.2;         ///< left out at both ends of a run, s
    double short_margin = 0.05;  ///< where less than a turn would be left, s
    /// Time constant of the position loop, s, where it is known: the margin is five of it.
    std::optional<double> loop_time;
};

struct CircleRun {
    Stretch stretch;  ///< at speed and curvature
    Sense sense = Sense::kCounterClockwise;
    double angle = 0.0;           ///< turned, degrees
    Circle circle;                ///< of the path
    double margin = 0.0;          ///< taken at both ends, s
    bool shortened = false;       ///< the margin was, for lack of angle
    std::optional<Stretch> turn;  ///< the evaluated turn
    std::string reason;           ///< why there is none
};

/// All runs in the order of time, in the whole stretches of the columns.
Steps<std::vector<CircleRun>> FindCircleRuns(PlanePath path, RunSetup setup);

/// Speed of the path at place `i`, mm/s: the length of the central difference with half width `k`.
/// REQUIRES: k <= i < size - k.
double PathSpeed(std::span<const double> x, std::span<const double> y, std::size_t i, std::size_t k,
                 double cycle_time);

/// Curvature of the path at a place from three points, per mm, positive counter-clockwise; 0 where
/// two of them are the same. REQUIRES: k <= i < size - k.
double PathCurvature(std::span<const double> x, std::span<const double> y, std::size_t i,
                     std::size_t k);

}  // namespace wavo::measure
