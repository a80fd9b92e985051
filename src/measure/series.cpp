#include "measure/series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavo::measure {

std::size_t Series::PlaceFrom(Cycle cycle) const {
    if (!cycles.empty()) {
        return static_cast<std::size_t>(std::ranges::lower_bound(cycles, cycle) - cycles.begin());
    }
    const Cycle place = std::max<Cycle>(cycle - first_cycle, 0);
    return std::min(static_cast<std::size_t>(place), values.size());
}

std::vector<Stretch> WholeStretches(std::span<const std::span<const double>> columns) {
    std::vector<Stretch> stretches;
    const std::size_t size = columns.empty() ? 0 : columns.front().size();
    bool whole_before = false;
    for (std::size_t i = 0; i < size; ++i) {
        const bool whole = std::ranges::all_of(
            columns, [i](std::span<const double> column) { return std::isfinite(column[i]); });
        if (whole && !whole_before) {
            stretches.push_back({i, i});
        }
        if (whole) {
            stretches.back().end = i + 1;
        }
        whole_before = whole;
    }
    return stretches;
}

std::vector<double> LaidOut(const Series& series) {
    if (series.cycles.empty() || series.values.empty()) {
        return {series.values.begin(), series.values.end()};
    }
    const Cycle first = series.cycles.front();
    std::vector<double> values(static_cast<std::size_t>(series.cycles.back() - first) + 1,
                               std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < series.values.size(); ++i) {
        values[static_cast<std::size_t>(series.cycles[i] - first)] = series.values[i];
    }
    return values;
}

std::size_t CyclesIn(double seconds, double cycle_time, std::size_t least) {
    const double cycles = std::round(seconds / cycle_time);
    return cycles > static_cast<double>(least) ? static_cast<std::size_t>(cycles) : least;
}

double MedianOf(std::span<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) {
        return *middle;
    }
    return (*std::max_element(values.begin(), middle) + *middle) / 2.0;
}

}  // namespace wavo::measure
