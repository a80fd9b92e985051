// Where the lines that a demonstration master publishes come from.
//
// A source is a function of the line's number: the same number always gives the same values, so a
// test can compare what arrived with what was published.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "master/capability_module.h"

namespace wavo::master {

class LineSource {
 public:
    virtual ~LineSource() = default;

    /// Names of the axes, one value of each in every line.
    [[nodiscard]] virtual const std::vector<std::string>& AxisNames() const = 0;

    /// Lines of one round, after which the motion begins again; at least 1.
    [[nodiscard]] virtual std::uint64_t LinesPerRound() const = 0;

    /// Writes the values of line `number` (from 0, also beyond one round).
    /// REQUIRES: `values` has as many places as there are axes.
    virtual void Line(std::uint64_t number, std::span<double> values) const = 0;

    /// Seconds per line, where the source tells it.
    [[nodiscard]] virtual std::optional<double> CycleTime() const { return std::nullopt; }

    /// Limits that hold every line, at `cycle_time` seconds per line, where they can be told
    /// without going through all lines.
    [[nodiscard]] virtual std::optional<std::vector<AxisLimits>> Limits(
        double /*cycle_time*/) const {
        return std::nullopt;
    }
};

}  // namespace wavo::master
