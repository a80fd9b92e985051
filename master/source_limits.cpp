#include "master/source_limits.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <tuple>
#include <utility>

namespace wavo::master {

namespace {

struct KnownAxis {
    std::string_view name;
    double velocity;      // mm/s or degrees/s
    double acceleration;  // the same per second
};
constexpr KnownAxis kKnownAxes[] = {
    {"X", 400.0, 3000.0}, {"Y", 400.0, 3000.0}, {"Z", 250.0, 3000.0}, {"A", 180.0, 3000.0}};

/// Follows an axis from line to line.
struct FollowedAxis {
    AxisReach reach;
    double last = 0.0;
    double last_step = 0.0;

    void Begin(double value) { reach.lowest = reach.highest = last = value; }

    void Add(double value, bool has_step) {
        const double step = value - last;
        reach.lowest = std::min(reach.lowest, value);
        reach.highest = std::max(reach.highest, value);
        reach.largest_step = std::max(reach.largest_step, std::abs(step));
        if (has_step) {
            reach.largest_change = std::max(reach.largest_change, std::abs(step - last_step));
        }
        last = value;
        last_step = step;
    }
};

/// Moves both ends outwards to a multiple of a plain step.
std::pair<double, double> RoundedOutwards(double lowest, double highest) {
    const double span = highest - lowest;
    const double step = span > 0.0 ? RoundedUp(span) / 4.0 : 1.0;
    const double lower = std::floor(lowest / step) * step;
    const double upper = std::ceil(highest / step) * step;
    return lower < upper ? std::pair(lower, upper) : std::pair(lower - step, upper + step);
}

/// The usual limit, where what was reached keeps to it.
double Limit(double reached, double usual) {
    return reached <= usual ? usual : RoundedUp(reached);
}

}  // namespace

double RoundedUp(double value) {
    if (value <= 0.0) {
        return 0.0;
    }
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (value <= factor * power) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

AxisLimits LimitsOf(const std::string& axis, const AxisReach& reach, double cycle_time) {
    AxisLimits limits;
    limits.axis = axis;
    AxisCapabilities& values = limits.values;
    std::tie(values.lower_limit, values.upper_limit) = RoundedOutwards(reach.lowest, reach.highest);
    const auto known = std::ranges::find(kKnownAxes, axis, &KnownAxis::name);
    const bool is_known = known != std::end(kKnownAxes);
    values.velocity_limit =
        Limit(reach.largest_step / cycle_time, is_known ? known->velocity : 0.0);
    values.acceleration_limit = Limit(reach.largest_change / (cycle_time * cycle_time),
                                      is_known ? known->acceleration : 0.0);
    return limits;
}

std::vector<AxisLimits> LimitsOf(const LineSource& source, double cycle_time) {
    if (auto told = source.Limits(cycle_time)) {
        return *told;
    }
    const std::vector<std::string>& names = source.AxisNames();
    std::vector<double> line(names.size());
    std::vector<FollowedAxis> axes(names.size());
    source.Line(0, line);
    for (std::size_t i = 0; i < axes.size(); ++i) {
        axes[i].Begin(line[i]);
    }
    for (std::uint64_t number = 1; number < source.LinesPerRound(); ++number) {
        source.Line(number, line);
        for (std::size_t i = 0; i < axes.size(); ++i) {
            axes[i].Add(line[i], number > 1);
        }
    }
    std::vector<AxisLimits> limits;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        limits.push_back(LimitsOf(names[i], axes[i].reach, cycle_time));
    }
    return limits;
}

}  // namespace wavo::master
