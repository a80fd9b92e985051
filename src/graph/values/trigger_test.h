// Whether values pass the limit of a trigger: pure functions over values.
//
// Levels count, not crossings: a value that is already beyond the limit fires. NaN never does.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

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

}  // namespace wavo
