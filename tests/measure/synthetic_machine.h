// A machine with known errors that runs circles.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "measure/circle_runs.h"

namespace wavo::measure {

struct MachineErrors {
    double lag_x = 0.0;  ///< s; the axes follow exactly, so much later
    double lag_y = 0.0;
    double scale_x = 0.0;  ///< mm/mm
    double scale_y = 0.0;
    double squareness = 0.0;  ///< mm/mm: x gets so much of y
    double play_x = 0.0;      ///< mm, seen by the encoder
    double play_y = 0.0;
    double spike_x = 0.0;  ///< mm, outward at each reversal of the axis
    double spike_y = 0.0;
    double spike_time = 0.010;  ///< s
    double noise = 0.0;         ///< mm
    double resolution = 0.0;    ///< mm; 0 for none
    double growth = 0.0;        ///< mm of radius per turn
};

struct CircleProgram {
    double radius = 20.0;  ///< mm
    double feed = 100.0;   ///< mm/s
    double centre_x = 0.0;
    double centre_y = 0.0;
    double cycle_time = 0.001;
    double acceleration = 2000.0;          ///< along the path, mm/s^2
    double pause = 0.1;                    ///< before, between and behind, s
    std::vector<double> turns{2.0, -2.0};  ///< counter-clockwise positive
    std::uint64_t seed = 1;
};

struct RunData {
    double cycle_time = 0.001;
    std::vector<double> x, y, x_cmd, y_cmd;

    [[nodiscard]] PlanePath Path() const { return {cycle_time, x, y, x_cmd, y_cmd}; }
    [[nodiscard]] PlanePath ActualOnly() const { return {cycle_time, x, y, {}, {}}; }
};

RunData RunCircles(const CircleProgram& program, const MachineErrors& errors = {});

}  // namespace wavo::measure
