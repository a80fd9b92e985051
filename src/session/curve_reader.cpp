#include "session/curve_reader.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace wavo {

namespace {

using measure::Figure;
using measure::Search;

constexpr const char* kBeyond = "beyond the data";
constexpr const char* kMissing = "no value there";
constexpr const char* kNoCursor = "the cursor is not on the data";

constexpr int kMostDecimals = 9;
/// Lines that the decimals are found from, at most, when they are asked for.
constexpr std::int64_t kLinesForDecimals = 4096;
/// Lines that a search reads at first.
constexpr std::int64_t kFirstSearched = 4096;

Figure DifferenceOf(const Figure& a, const Figure& b) {
    if (!a || !b) {
        return a ? b : a;
    }
    return *b - *a;
}

std::optional<double> ToPlace(std::optional<std::size_t> place) {
    return place ? std::optional(static_cast<double>(*place)) : std::nullopt;
}

std::optional<std::int64_t> ToLine(std::optional<double> line) {
    return line ? std::optional(static_cast<std::int64_t>(*line)) : std::nullopt;
}

}  // namespace

CurveReader::CurveReader(std::unique_ptr<LineValues> values, double cycle_time,
                         std::int32_t derivation)
    : m_values(std::move(values)), m_cycle_time(cycle_time), m_derivation(derivation) {}

Figure CurveReader::ValueAt(std::int64_t line) {
    const LineRange lines = Lines();
    if (line < lines.begin || line >= lines.end) {
        return Figure::Not(kBeyond);
    }
    double value = 0.0;
    m_values->Read(line, std::span(&value, 1));
    return std::isnan(value) ? Figure::Not(kMissing) : Figure(value);
}

measure::CurveReading CurveReader::Between(std::optional<std::int64_t> a,
                                           std::optional<std::int64_t> b) {
    measure::CurveReading reading;
    reading.a = a ? ValueAt(*a) : Figure::Not(kNoCursor);
    reading.b = b ? ValueAt(*b) : Figure::Not(kNoCursor);
    reading.difference = DifferenceOf(reading.a, reading.b);
    reading.per_second = reading.difference;
    measure::Moments moments;
    if (a && b) {
        if (reading.difference) {
            reading.per_second =
                *a != *b
                    ? Figure(*reading.difference / (static_cast<double>(*b - *a) * m_cycle_time))
                    : Figure::Not("both cursors stand at one time");
        }
        const LineRange lines = Lines();
        const std::int64_t first = std::max(std::min(*a, *b), lines.begin);
        const std::int64_t end = std::min(std::max(*a, *b) + 1, lines.end);
        m_moments.Forget(lines.begin);
        moments = m_moments.Of(
            first, end,
            [this](measure::Cycle from, std::span<double> room) -> measure::MomentBlocks::Part {
                const auto lying = m_values->InMemory(from, room.size());
                if (!lying.empty()) {
                    return {lying, true};
                }
                const bool is_whole = m_values->Read(from, room);
                return {room, is_whole};
            });
    }
    reading.between = measure::StatisticsOf(moments, m_cycle_time);
    return reading;
}

// Reads ever longer stretches: what is searched is near mostly, and the stream may be long.
std::optional<double> CurveReader::Find(std::int64_t line, Search search, const Finder& finder) {
    const LineRange lines = Lines();
    if (line < lines.begin || line >= lines.end) {
        return std::nullopt;
    }
    const bool forward = search == Search::kForward;
    const std::int64_t all = forward ? lines.end - line : line - lines.begin + 1;
    std::vector<double> values;
    for (std::int64_t count = std::min(kFirstSearched, all);; count = std::min(4 * count, all)) {
        const std::int64_t first = forward ? line : line - count + 1;
        values.resize(static_cast<std::size_t>(count));
        m_values->Read(first, values);
        if (const auto place = finder(values, static_cast<std::size_t>(line - first))) {
            return static_cast<double>(first) + *place;
        }
        if (count == all) {
            return std::nullopt;
        }
    }
}

std::optional<std::int64_t> CurveReader::NextPeak(std::int64_t line, Search search,
                                                  double prominence) {
    return ToLine(Find(line, search, [&](std::span<const double> values, std::size_t from) {
        return ToPlace(measure::NextPeak(values, from, search, prominence));
    }));
}

std::optional<std::int64_t> CurveReader::NextValley(std::int64_t line, Search search,
                                                    double prominence) {
    return ToLine(Find(line, search, [&](std::span<const double> values, std::size_t from) {
        return ToPlace(measure::NextValley(values, from, search, prominence));
    }));
}

std::optional<std::int64_t> CurveReader::NextZeroCrossing(std::int64_t line, Search search) {
    // Behind it, so that the search goes on from there.
    return ToLine(Find(line, search, [&](std::span<const double> values, std::size_t from) {
        const auto place = measure::NextZeroCrossing(values, static_cast<double>(from), search);
        return place ? std::optional(search == Search::kForward ? std::ceil(*place)
                                                                : std::floor(*place))
                     : std::nullopt;
    }));
}

int CurveReader::Decimals() {
    const LineRange lines = Lines();
    const std::int64_t from = std::max(lines.end - kLinesForDecimals,
                                       m_any_seen ? std::max(m_seen, lines.begin) : lines.begin);
    if (from >= lines.end || m_decimals == kMostDecimals) {
        return m_decimals;
    }
    std::vector<double> values(static_cast<std::size_t>(lines.end - from));
    m_values->Read(from, values);
    m_decimals = std::max(m_decimals, DecimalsOfValues(values));
    m_seen = lines.end;
    m_any_seen = true;
    return m_decimals;
}

int CurveReader::DecimalsOfValues(std::span<double> values) const {
    if (m_derivation < 1) {
        return measure::DecimalsOf(values, kMostDecimals);
    }
    // Differences of positions have lost last digits of these; what is left of a decimal beyond the
    // ninth is such a loss.
    constexpr double kFinest = 1e9;
    const double step = std::pow(m_cycle_time, m_derivation);
    for (double& value : values) {
        value = std::round(value * step * kFinest) / kFinest;
    }
    const double decimals =
        measure::DecimalsOf(values, kMostDecimals) + std::log10(m_cycle_time) * m_derivation;
    return std::max(0, static_cast<int>(std::ceil(decimals - 1e-9)));
}

}  // namespace wavo
