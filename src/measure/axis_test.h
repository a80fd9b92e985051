// The axis test: what commanded and actual values of one axis tell of its loop.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "measure/following_error.h"
#include "measure/frequency_response.h"
#include "measure/step_response.h"
#include "measure/steps.h"

namespace wavo::measure {

/// A commanded and an actual column that belong together.
struct AxisPair {
    std::string axis;       ///< "X"
    std::string commanded;  ///< name of the column: "X_cmd"
    std::string actual;     ///< "X_act", "X_fb" or "X"
};

/// The pairs among names of columns: X_cmd with the first of X_act, X_fb and X that is there.
std::vector<AxisPair> FindAxisPairs(std::span<const std::string> names);

struct AxisSetup {
    StepSetup step;
    double reversal_window = 0.001;  ///< within which an axis rests at a reversal, units
    bool response = false;           ///< also the closed-loop frequency response
    ResponseSetup response_setup;
    bool rotary = false;  ///< degrees: no Kv in (m/min)/mm
};

struct AxisResult {
    double cycle_time = 0.001;  ///< s
    std::size_t lines = 0;
    FollowingError following;  ///< over all lines, at constant speed where there is such
    StepsAndMoves motion;
    std::vector<ReversalDwell> reversals;
    Figure mean_dwell;  ///< of the reversals, ms
    Figure longest_dwell;
    Told<FrequencyResponse> response;
    std::vector<std::string> notes;  ///< what the user should know, in words
};

/// REQUIRES: columns of one size.
AxisResult TestAxis(std::span<const double> commanded, std::span<const double> actual,
                    double cycle_time, const AxisSetup& setup = {});
/// In steps, figure by figure. REQUIRES: the columns stay as they are until the end.
Steps<AxisResult> TestAxisInSteps(std::span<const double> commanded, std::span<const double> actual,
                                  double cycle_time, AxisSetup setup);

}  // namespace wavo::measure
