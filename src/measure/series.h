// The samples of one column of a recording, as rings, files and recordings hand them in.
//
// Times come from cycle numbers, never from places: sample i was taken at its cycle times the cycle
// time. A cycle without a line is missing: it stands in no series with cycle numbers, and as NaN
// where a function takes plain values that follow each other cycle by cycle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace wavo::measure {

using Cycle = std::int64_t;

struct Series {
    std::span<const double> values;
    double cycle_time = 0.001;  ///< s
    Cycle first_cycle = 0;      ///< of values[0]; counts only where `cycles` is empty
    /// The cycle of each value, rising; empty where each line follows the one before.
    std::span<const Cycle> cycles;

    [[nodiscard]] Cycle CycleOf(std::size_t place) const {
        return cycles.empty() ? first_cycle + static_cast<Cycle>(place) : cycles[place];
    }
    [[nodiscard]] double TimeOf(std::size_t place) const {
        return static_cast<double>(CycleOf(place)) * cycle_time;
    }
    /// The first place whose cycle is not before `cycle`; values.size() when there is none.
    [[nodiscard]] std::size_t PlaceFrom(Cycle cycle) const;
};

/// Places from `first` to before `end`.
struct Stretch {
    std::size_t first = 0;
    std::size_t end = 0;

    [[nodiscard]] std::size_t Size() const { return end - first; }
    bool operator==(const Stretch&) const = default;
};

/// The longest stretches in which every column holds finite values. REQUIRES: columns of one size.
std::vector<Stretch> WholeStretches(std::span<const std::span<const double>> columns);

/// The values of a series cycle by cycle from its first to its last, NaN where a cycle is missing.
std::vector<double> LaidOut(const Series& series);

/// Cycles in `seconds`, rounded, at least `least`.
std::size_t CyclesIn(double seconds, double cycle_time, std::size_t least);

/// The median, of an even number the mean of the two in the middle; NaN when there are none.
/// Changes the order of the values.
double MedianOf(std::span<double> values);

}  // namespace wavo::measure
