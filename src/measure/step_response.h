// Steps and positioning moves of one axis: what commanded and actual values tell of them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

enum class StepTarget {
    kReached,    ///< mean of the last 50 ms
    kCommanded,  ///< the new commanded value
};

struct StepSetup {
    double resolution = 1e-7;         ///< changes of the commanded value up to this are none
    double standstill_before = 0.05;  ///< of a step, s
    double standstill_behind = 0.1;   ///< of a step, s
    double dwell = 0.1;               ///< behind a move, at least, s
    double start_mean = 0.02;         ///< before a step, for the value it starts from, s
    double end_mean = 0.05;           ///< at the end of a step, s
    StepTarget target = StepTarget::kReached;
    double rise_from = 10.0;  ///< % of the step
    double rise_to = 90.0;    ///< %
    double settled = 2.0;     ///< % of the step about the target
    /// Where positive: settled within so many units of the target instead.
    double step_window = 0.0;
    /// Positioning is over within so many units of the commanded value.
    double move_window = 0.01;
};

struct StepResponse {
    std::size_t place = 0;  ///< first cycle with the new commanded value
    double from = 0.0;      ///< commanded values
    double to = 0.0;
    Figure rise;          ///< ms
    Figure overshoot;     ///< %
    Figure settling;      ///< from the new value on, ms
    Figure steady_error;  ///< new commanded value less mean of the end, in um of mm
};

struct Move {
    std::size_t first = 0;  ///< first cycle with a changed commanded value
    std::size_t last = 0;   ///< first cycle with the final one
    std::size_t end = 0;    ///< of the dwell behind: the next change, or the end of the data
    double from = 0.0;
    double to = 0.0;
    double speed = 0.0;   ///< fastest commanded, units per s
    Figure following;     ///< largest following error, um of mm
    Figure settling;      ///< from `last` on, ms
    Figure overshoot;     ///< beyond the final value, um of mm; 0 without
    Figure steady_error;  ///< final value less mean of the last 50 ms of the dwell, um of mm
};

struct StepsAndMoves {
    std::vector<StepResponse> steps;
    std::vector<Move> moves;
    std::size_t not_counted = 0;  ///< changes without the standstill that a step or move needs
    Figure mean_settling;         ///< of the moves, ms; told where all of them settled
};

/// REQUIRES: columns of one size. Missing values end what they lie in.
StepsAndMoves FindStepsAndMoves(std::span<const double> commanded, std::span<const double> actual,
                                double cycle_time, const StepSetup& setup = {});

/// How long the actual value rests at a reversal of the commanded one, beyond the rest of that.
struct ReversalDwell {
    std::size_t place = 0;  ///< where the commanded value turns
    double at = 0.0;        ///< that value
    bool upper = false;     ///< it is a maximum
    Figure dwell;           ///< ms
};

/// At each place where the commanded value turns round by more than `window` on both sides,
/// without a standstill of 50 ms or more: the time that the actual value stays within `window` of
/// its own extreme, less the same of the commanded value. In the unit of the axis.
std::vector<ReversalDwell> FindReversalDwells(std::span<const double> commanded,
                                              std::span<const double> actual, double cycle_time,
                                              double window);

/// The definitions that a setup chooses, in words, as a report prints them.
std::string DefinitionsOf(const StepSetup& setup);

}  // namespace wavo::measure
