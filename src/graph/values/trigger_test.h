// Whether values pass the limit of a trigger: pure functions over values and histories.
//
// Levels count, not crossings: a value that is already beyond the limit fires. NaN never does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "source/history.h"

namespace wavo {

enum class TriggerSide {
    kAbove,  ///< fires with values greater than the limit
    kBelow,  ///< fires with values less than the limit
};

inline bool IsBeyond(double value, TriggerSide side, double limit) {
    return side == TriggerSide::kAbove ? value > limit : value < limit;
}

/// The position of the first value that fires; nothing when none does.
std::optional<std::size_t> FirstBeyond(std::span<const double> values, TriggerSide side,
                                       double limit);

struct LineSearch {
    HistoryAnswer answer = HistoryAnswer::kAll;  ///< kNotLoaded: nothing is found yet, ask again
    std::optional<std::int64_t> line;
};

/// The first of some lines of a history whose value fires. Asks for extremes first and for values
/// only where one of them fires: the cost does not grow with the number of lines.
LineSearch FirstLineBeyond(History& history, const LineRange& lines, TriggerSide side,
                           double limit);

}  // namespace wavo
