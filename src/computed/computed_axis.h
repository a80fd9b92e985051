// An axis that no machine has: its values are computed of those of other axes, line by line.
#pragma once

#include <cstddef>
#include <string>

namespace wavo::computed {

/// As the user wrote it; whether it makes sense is another matter (ComputedProgram).
struct ComputedAxis {
    std::string name;
    std::string expression;
    std::string unit;  ///< of its values, shown with them; may be empty

    friend bool operator==(const ComputedAxis&, const ComputedAxis&) = default;
};

/// Axes, and bytes of their parts, that a program takes. Far beyond what anybody writes, so that a
/// file that somebody has damaged neither stalls nor fills the memory.
inline constexpr std::size_t kMostComputedAxes = 200;
inline constexpr std::size_t kLongestComputedName = 100;
inline constexpr std::size_t kLongestExpression = 1000;
inline constexpr std::size_t kLongestUnit = 40;

}  // namespace wavo::computed
