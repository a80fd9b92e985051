// From the times of the rows of a table to the numbers of the lines of a recording.
//
// A row is a line behind the one before as many cycles as its time is, rounded, at least one: where
// the time jumps, lines are missing. Where it goes back, the lines go on and the time begins anew.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace wavo::tables {

/// The cycle time of rows with these times, seconds: the median of their steps, without the digits
/// that rounding left. Nothing with fewer than two times, or when they stand still.
std::optional<double> CycleTimeOf(const std::vector<double>& times);

class LineTimes {
 public:
    /// A step that differs by more than this part of the cycle time is uneven.
    static constexpr double kEven = 0.1;

    /// `cycle_time` in seconds.
    explicit LineTimes(double cycle_time) : m_cycle_time(cycle_time) {}

    struct Place {
        std::uint64_t line = 0;
        std::uint64_t lost = 0;  ///< lines that are missing before it
        bool goes_back = false;  ///< its time lies before the one of the line before
    };
    /// The next row, at `time` seconds; NaN: a cycle behind the one before.
    Place Next(double time);

    [[nodiscard]] std::uint64_t Steps() const { return m_steps; }
    [[nodiscard]] std::uint64_t UnevenSteps() const { return m_uneven; }

 private:
    const double m_cycle_time;
    std::optional<double> m_last;  // time of the row before
    std::uint64_t m_next = 0;      // the line behind it
    std::uint64_t m_steps = 0;
    std::uint64_t m_uneven = 0;
};

}  // namespace wavo::tables
