// From places of a swept picture to the times of its samples.
//
// A sweep that has wrapped shows its newest samples left of a gap and its oldest ones right of it:
// places rise from left to right, times do not.
#pragma once

#include <optional>
#include <vector>

#include "graph/draw/curve/time_curve.h"
#include "graph/values/time_window.h"

namespace wavo {

/// The stretch of time that the places from `marked.start` to `marked.end` (seconds from the left
/// border) show, measured from the oldest sample of the curve. Of a mark across a gap it is that of
/// the side that holds more of it. Nothing when the mark shows no sample. `step`: seconds from
/// sample to sample.
std::optional<TimeWindow> StretchOfPlaces(const std::vector<CurveRun>& runs, double step,
                                          const TimeWindow& marked);

}  // namespace wavo
