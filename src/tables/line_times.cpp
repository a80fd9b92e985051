#include "tables/line_times.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace wavo::tables {

namespace {

/// Longest time of a recording, seconds; nanoseconds since 1970 fit beyond it.
constexpr double kLongest = 8e9;
/// Digits of a cycle time that tells nothing more exactly.
constexpr int kDigits = 6;

double Rounded(double seconds) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, seconds, std::chars_format::scientific,
                                   kDigits - 1);
    std::from_chars(text, end.ptr, seconds);
    return seconds;
}

}  // namespace

std::optional<double> CycleTimeOf(const std::vector<double>& times) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < times.size(); ++i) {
        if (times[i] >= times[i - 1]) {
            steps.push_back(times[i] - times[i - 1]);
        }
    }
    if (steps.empty()) {
        return std::nullopt;
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>((steps.size() - 1) / 2);
    std::ranges::nth_element(steps, middle);
    return *middle > 0.0 ? std::optional(Rounded(*middle)) : std::nullopt;
}

LineTimes::Place LineTimes::Next(double time) {
    Place place{m_next, 0, false};
    if (!std::isfinite(time)) {
        if (m_last) {
            *m_last += m_cycle_time;
        }
        ++m_next;
        return place;
    }
    if (m_last) {
        const double cycles = (time - *m_last) / m_cycle_time;
        const double whole = std::round(cycles);
        ++m_steps;
        m_uneven += std::abs(cycles - std::max(whole, 1.0)) > kEven ? 1 : 0;
        place.goes_back = time < *m_last;
        const double line = static_cast<double>(m_next) + whole;
        if (whole > 1.0 && line * m_cycle_time < kLongest) {
            place.lost = static_cast<std::uint64_t>(whole) - 1;
            place.line += place.lost;
        }
    }
    m_last = time;
    m_next = place.line + 1;
    return place;
}

}  // namespace wavo::tables
