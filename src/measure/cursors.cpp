#include "measure/cursors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavo::measure {

namespace {

constexpr const char* kBeyond = "beyond the data";
constexpr const char* kMissing = "no value there";

/// Reads values in the direction of a search, and upside down for valleys.
class SearchedValues {
 public:
    SearchedValues(std::span<const double> values, std::size_t from, Search search, double sign)
        : m_values(values), m_from(from), m_search(search), m_sign(sign) {}

    [[nodiscard]] std::size_t Size() const {
        return m_search == Search::kForward ? m_values.size() - m_from : m_from + 1;
    }
    [[nodiscard]] double operator[](std::size_t step) const {
        return m_sign * m_values[Place(step)];
    }
    [[nodiscard]] std::size_t Place(std::size_t step) const {
        return m_search == Search::kForward ? m_from + step : m_from - step;
    }

 private:
    std::span<const double> m_values;
    std::size_t m_from;
    Search m_search;
    double m_sign;
};

std::optional<std::size_t> NextExtreme(const SearchedValues& values, double prominence) {
    double lowest = std::numeric_limits<double>::infinity();
    bool risen = false;
    std::size_t top = 0;
    std::size_t top_end = 0;  // last of the equal samples
    for (std::size_t step = 0; step < values.Size(); ++step) {
        const double value = values[step];
        if (std::isnan(value)) {
            lowest = std::numeric_limits<double>::infinity();
            risen = false;
        } else if (!risen) {
            lowest = std::min(lowest, value);
            risen = value - lowest > prominence;
            top = top_end = step;
        } else if (value > values[top]) {
            top = top_end = step;
        } else if (value == values[top] && top_end + 1 == step) {
            top_end = step;
        } else if (values[top] - value > prominence) {
            return values.Place((top + top_end) / 2);
        }
    }
    return std::nullopt;
}

/// The place of a time among cycles, where it lies between the first and the last.
std::optional<double> CycleAt(const Series& series, double time) {
    if (series.values.empty() || !std::isfinite(time)) {
        return std::nullopt;
    }
    const double first = series.TimeOf(0);
    const double last = series.TimeOf(series.values.size() - 1);
    if (time < first - kTimeTolerance || time > last + kTimeTolerance) {
        return std::nullopt;
    }
    return std::clamp(time, first, last) / series.cycle_time;
}

Figure ValueOfCycle(const Series& series, Cycle cycle) {
    const std::size_t place = series.PlaceFrom(cycle);
    if (place == series.values.size() || series.CycleOf(place) != cycle ||
        std::isnan(series.values[place])) {
        return Figure::Not(kMissing);
    }
    return series.values[place];
}

bool IsInteger(double value, double tolerance) {
    return std::abs(value - std::round(value)) <= tolerance;
}

int SignOf(double value) {
    return (value > 0.0) - (value < 0.0);
}

}  // namespace

CursorTimes TimesOf(double a, double b) {
    CursorTimes times{a, b, b - a, Figure::Not("both cursors stand at one time")};
    if (a != b) {
        times.frequency = 1.0 / std::abs(b - a);
    }
    return times;
}

Figure SampleAt(const Series& series, double time) {
    const auto cycle = CycleAt(series, time);
    if (!cycle) {
        return Figure::Not(kBeyond);
    }
    // Halfway is the earlier sample's, also where the division left some last digits.
    const double tolerance = 1e-6 + std::abs(*cycle) * 4e-16;
    return ValueOfCycle(series, static_cast<Cycle>(std::ceil(*cycle - 0.5 - tolerance)));
}

Figure InterpolatedAt(const Series& series, double time) {
    const auto cycle = CycleAt(series, time);
    if (!cycle) {
        return Figure::Not(kBeyond);
    }
    if (IsInteger(*cycle, kTimeTolerance / series.cycle_time)) {
        return ValueOfCycle(series, static_cast<Cycle>(std::round(*cycle)));
    }
    const double before = std::floor(*cycle);
    const Figure low = ValueOfCycle(series, static_cast<Cycle>(before));
    const Figure high = ValueOfCycle(series, static_cast<Cycle>(before) + 1);
    if (!low || !high) {
        return Figure::Not(kMissing);
    }
    return *low + (*cycle - before) * (*high - *low);
}

CurveReading ReadCurve(const Series& series, double a, double b) {
    CurveReading reading;
    reading.a = SampleAt(series, a);
    reading.b = SampleAt(series, b);
    if (reading.a && reading.b) {
        reading.difference = *reading.b - *reading.a;
        reading.per_second = a != b ? Figure(*reading.difference / (b - a))
                                    : Figure::Not("both cursors stand at one time");
    } else {
        reading.difference = reading.per_second = reading.a ? reading.b : reading.a;
    }
    reading.between = StatisticsBetween(series, a, b);
    return reading;
}

std::optional<std::size_t> NextPeak(std::span<const double> values, std::size_t from, Search search,
                                    double prominence) {
    if (from >= values.size()) {
        return std::nullopt;
    }
    return NextExtreme({values, from, search, 1.0}, prominence);
}

std::optional<std::size_t> NextValley(std::span<const double> values, std::size_t from,
                                      Search search, double prominence) {
    if (from >= values.size()) {
        return std::nullopt;
    }
    return NextExtreme({values, from, search, -1.0}, prominence);
}

std::optional<double> NextZeroCrossing(std::span<const double> values, double from, Search search) {
    const auto size = static_cast<double>(values.size());
    if (values.empty() || !(from >= 0.0) || from > size - 1.0) {
        return std::nullopt;
    }
    const bool forward = search == Search::kForward;
    const auto start = static_cast<std::size_t>(forward ? std::floor(from) : std::ceil(from));
    const SearchedValues searched(values, start, search, 1.0);
    std::size_t before = 0;  // the last sample that was not zero
    int sign = 0;            // its sign
    for (std::size_t step = 0; step < searched.Size(); ++step) {
        const double value = searched[step];
        const int here = SignOf(value);
        if (std::isnan(value)) {
            sign = 0;
        } else if (here != 0) {
            if (sign != 0 && here != sign) {
                const auto low = static_cast<double>(searched.Place(before));
                const auto high = static_cast<double>(searched.Place(step));
                const double share = searched[before] / (searched[before] - value);
                const double place =
                    step == before + 1 ? low + share * (high - low) : (low + high) / 2.0;
                if (forward ? place > from : place < from) {
                    return place;
                }
            }
            sign = here;
            before = step;
        }
    }
    return std::nullopt;
}

int DecimalsOf(std::span<const double> values, int most) {
    int decimals = 0;
    double factor = 1.0;
    for (const double value : values) {
        if (!std::isfinite(value)) {
            continue;
        }
        // Two units of the value's last binary digit, in units of the decimal asked for.
        while (decimals < most &&
               !IsInteger(value * factor, std::abs(value * factor) * 2.0 *
                                              std::numeric_limits<double>::epsilon())) {
            ++decimals;
            factor *= 10.0;
        }
    }
    return decimals;
}

}  // namespace wavo::measure
