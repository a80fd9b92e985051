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

/// What one axis does in a round.
struct Extremes {
    double lowest = 0.0;
    double highest = 0.0;
    double largest_step = 0.0;    // from a line to the next
    double largest_change = 0.0;  // from a step to the next
    double last = 0.0;
    double last_step = 0.0;

    void Begin(double value) { lowest = highest = last = value; }

    void Add(double value, bool has_step) {
        const double step = value - last;
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
        largest_step = std::max(largest_step, std::abs(step));
        if (has_step) {
            largest_change = std::max(largest_change, std::abs(step - last_step));
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

std::vector<AxisLimits> LimitsOf(const LineSource& source, double cycle_time) {
    const std::vector<std::string>& names = source.AxisNames();
    std::vector<double> line(names.size());
    std::vector<Extremes> axes(names.size());
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
    std::vector<AxisLimits> limits(names.size());
    for (std::size_t i = 0; i < axes.size(); ++i) {
        limits[i].axis = names[i];
        AxisCapabilities& values = limits[i].values;
        std::tie(values.lower_limit, values.upper_limit) =
            RoundedOutwards(axes[i].lowest, axes[i].highest);
        const auto known = std::ranges::find(kKnownAxes, names[i], &KnownAxis::name);
        const bool is_known = known != std::end(kKnownAxes);
        values.velocity_limit =
            Limit(axes[i].largest_step / cycle_time, is_known ? known->velocity : 0.0);
        values.acceleration_limit = Limit(axes[i].largest_change / (cycle_time * cycle_time),
                                          is_known ? known->acceleration : 0.0);
    }
    return limits;
}

}  // namespace wavo::master
