// A part of a time axis.
#pragma once

namespace wavo {

/// A span of the displayed time axis, seconds; start == end when nothing but the scale's own time
/// range is shown.
struct TimeWindow {
    double start = 0.0;
    double end = 0.0;

    friend bool operator==(const TimeWindow&, const TimeWindow&) = default;
};

}  // namespace wavo
