#include "graph/draw/curve/sweep.h"

#include <algorithm>

namespace wavo {

namespace {

/// Part of a step by which a stretch is wider than its samples: rounding takes none of them away.
constexpr double kMargin = 1e-6;

/// The places of a run, seconds; its last sample has the step that follows it.
TimeWindow PlacesOf(const CurveRun& run, double step) {
    // A sweep that follows another begins one step from the left border, where the last sample of
    // that one stands as well.
    const bool from_border = run.step == 1 && run.position > 0;
    const double begin = from_border ? 0.0 : static_cast<double>(run.step);
    const auto end = static_cast<double>(run.step + run.count);
    return {(begin - kMargin) * step, (end + kMargin) * step};
}

TimeWindow Common(const TimeWindow& a, const TimeWindow& b) {
    return {std::max(a.start, b.start), std::min(a.end, b.end)};
}

}  // namespace

std::optional<TimeWindow> StretchOfPlaces(const std::vector<CurveRun>& runs, double step,
                                          const TimeWindow& marked) {
    const CurveRun* most = nullptr;
    TimeWindow held;
    for (const CurveRun& run : runs) {
        const TimeWindow common = Common(marked, PlacesOf(run, step));
        const double length = common.end - common.start;
        if (length > 0.0 && (most == nullptr || length >= held.end - held.start)) {
            most = &run;
            held = common;
        }
    }
    if (most == nullptr) {
        return std::nullopt;
    }
    if (runs.size() == 1) {
        held = marked;  // there is no gap
    }
    const double later =
        (static_cast<double>(most->position) - static_cast<double>(most->step)) * step;
    return TimeWindow{held.start + later, held.end + later};
}

}  // namespace wavo
