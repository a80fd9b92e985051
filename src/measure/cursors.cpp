#include "measure/cursors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavo::measure {

namespace {

constexpr const char* kBeyond = "beyond the data";
constexpr const char* kMissing = "no value there";

int SignOf(double value) {
    return (value > 0.0) - (value < 0.0);
}

/// Values at the places that lie in the direction of a search.
class SearchedPlaces {
 public:
    SearchedPlaces(std::size_t size, std::size_t from, Search search)
        : m_size(size), m_from(from), m_search(search) {}

    [[nodiscard]] std::size_t Size() const {
        return m_search == Search::kForward ? m_size - m_from : m_from + 1;
    }
    [[nodiscard]] std::size_t Place(std::size_t step) const {
        return m_search == Search::kForward ? m_from + step : m_from - step;
    }

 private:
    std::size_t m_size;
    std::size_t m_from;
    Search m_search;
};

std::optional<std::size_t> NextExtreme(std::span<const double> values, std::size_t from,
                                       Search search, PeakSearch&& extremes) {
    if (from >= values.size()) {
        return std::nullopt;
    }
    const SearchedPlaces places(values.size(), from, search);
    for (std::size_t step = 0; step < places.Size(); ++step) {
        if (extremes.Take(values[places.Place(step)])) {
            return places.Place(static_cast<std::size_t>(extremes.FoundStep()));
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

}  // namespace

bool PeakSearch::Take(double value) {
    const double signed_value = m_sign * value;
    const std::int64_t step = m_step++;
    if (std::isnan(value)) {
        m_lowest = std::numeric_limits<double>::infinity();
        m_has_risen = false;
    } else if (!m_has_risen) {
        m_lowest = std::min(m_lowest, signed_value);
        m_has_risen = signed_value - m_lowest > m_prominence;
        m_top_value = signed_value;
        m_top = m_top_end = step;
    } else if (signed_value > m_top_value) {
        m_top_value = signed_value;
        m_top = m_top_end = step;
    } else if (signed_value == m_top_value && m_top_end + 1 == step) {
        m_top_end = step;
    } else if (m_top_value - signed_value > m_prominence) {
        return true;
    }
    return false;
}

bool PeakSearch::CanSkip(const Summary& values) const {
    const double lowest = m_sign > 0.0 ? values.minimum : -values.maximum;
    const double highest = m_sign > 0.0 ? values.maximum : -values.minimum;
    return m_has_risen ? highest < m_top_value && m_top_value - lowest <= m_prominence
                       : highest - std::min(m_lowest, lowest) <= m_prominence;
}

void PeakSearch::Skip(std::int64_t count, const Summary& values) {
    m_step += count;
    if (!m_has_risen) {
        m_lowest = std::min(m_lowest, m_sign > 0.0 ? values.minimum : -values.maximum);
    }
}

bool CrossingSearch::Take(double value) {
    const std::int64_t step = m_step++;
    const int here = SignOf(value);
    const int before = SignOf(m_value_before);
    if (std::isnan(value)) {
        m_value_before = 0.0;
        return false;
    }
    if (here == 0) {
        return false;
    }
    const bool found = before != 0 && here != before;
    if (found) {
        m_share = m_value_before / (m_value_before - value);
        m_found_before = m_before;
        m_found_behind = step;
    }
    m_value_before = value;
    m_before = step;
    return found;
}

bool CrossingSearch::CanSkip(const Summary& values) const {
    return m_value_before > 0.0 ? values.minimum > 0.0
                                : m_value_before < 0.0 && values.maximum < 0.0;
}

void CrossingSearch::Skip(std::int64_t count, const Summary& values) {
    m_step += count;
    m_before = m_step - 1;
    m_value_before = values.last;
}

std::int64_t CrossingSearch::FoundStep() const {
    return m_found_before + (m_found_behind - m_found_before + 1) / 2;
}

double CrossingSearch::PlaceBetween(double before, double behind) const {
    return m_found_behind == m_found_before + 1 ? before + m_share * (behind - before)
                                                : (before + behind) / 2.0;
}

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
    return NextExtreme(values, from, search, PeakSearch(prominence));
}

std::optional<std::size_t> NextValley(std::span<const double> values, std::size_t from,
                                      Search search, double prominence) {
    return NextExtreme(values, from, search, PeakSearch(prominence, -1.0));
}

std::optional<double> NextZeroCrossing(std::span<const double> values, double from, Search search) {
    const auto size = static_cast<double>(values.size());
    if (values.empty() || !(from >= 0.0) || from > size - 1.0) {
        return std::nullopt;
    }
    const bool forward = search == Search::kForward;
    const auto start = static_cast<std::size_t>(forward ? std::floor(from) : std::ceil(from));
    const SearchedPlaces places(values.size(), start, search);
    CrossingSearch crossings;
    for (std::size_t step = 0; step < places.Size(); ++step) {
        if (!crossings.Take(values[places.Place(step)])) {
            continue;
        }
        const auto place_of = [&places](std::int64_t at) {
            return static_cast<double>(places.Place(static_cast<std::size_t>(at)));
        };
        const double place = crossings.PlaceBetween(place_of(crossings.StepBefore()),
                                                    place_of(crossings.StepBehind()));
        if (forward ? place > from : place < from) {
            return place;
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
