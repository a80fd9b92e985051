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

constexpr const char* kNotYet = "not complete yet";

constexpr int kMostDecimals = 9;
/// Lines that the decimals are found from, at most, when they are asked for.
constexpr std::int64_t kLinesForDecimals = 4096;
/// Lines that a search reads at a time, and that it asks for at once without reading.
constexpr std::int64_t kSearchedAtOnce = 4096;
constexpr std::int64_t kMostSkipped = kSearchedAtOnce << 20;
constexpr std::int64_t kSkippedParts = 16;

Figure DifferenceOf(const Figure& a, const Figure& b) {
    if (!a || !b) {
        return a ? b : a;
    }
    return *b - *a;
}

std::unique_ptr<measure::ValueSearch> SearchFor(Landmark landmark, double prominence) {
    if (landmark == Landmark::kZeroCrossing) {
        return std::make_unique<measure::CrossingSearch>();
    }
    return std::make_unique<measure::PeakSearch>(prominence,
                                                 landmark == Landmark::kPeak ? 1.0 : -1.0);
}

}  // namespace

CurveReader::CurveReader(std::unique_ptr<LineValues> values, double cycle_time,
                         std::int32_t derivation)
    : m_values(std::move(values)),
      m_cycle_time(cycle_time),
      m_derivation(derivation),
      m_losses(m_values->Losses()) {}

void CurveReader::ForgetLosses() {
    if (m_values->Losses() != m_losses) {
        m_losses = m_values->Losses();
        m_moments.Clear();
        m_extremes_of = {};
        m_extremes.reset();
        m_pending.reset();
    }
}

Figure CurveReader::ValueAt(std::optional<std::int64_t> line) {
    if (!line) {
        return Figure::Not(kNoCursor);
    }
    const LineRange lines = Lines();
    if (*line < lines.begin || *line >= lines.end) {
        return Figure::Not(kBeyond);
    }
    double value = 0.0;
    m_values->Read(*line, std::span(&value, 1));
    return std::isnan(value) ? Figure::Not(kMissing) : Figure(value);
}

measure::MomentBlocks::Part CurveReader::ReadPart(std::int64_t first, std::span<double> room,
                                                  Budget* budget) const {
    if (budget != nullptr && budget->IsSpent()) {
        return {{}, false};
    }
    const std::uint64_t read_before = m_values->BytesRead();
    const auto lying = m_values->InMemory(first, room.size());
    const bool is_whole = !lying.empty() || m_values->Read(first, room);
    if (budget != nullptr) {
        budget->Spend(m_values->BytesRead() - read_before);
    }
    return {lying.empty() ? room : lying, is_whole};
}

measure::Statistics CurveReader::NotWhole(const LineRange& lines) {
    if (m_extremes_of != lines) {
        m_extremes_of = lines;
        m_extremes = m_values->Extremes(lines);
    }
    measure::Statistics told;
    const Figure not_yet = Figure::Not(kNotYet);
    told.mean = told.rms = told.deviation = told.slope = not_yet;
    told.peak_to_peak = told.minimum = told.maximum = not_yet;
    // Of infinite values figures do not know.
    if (m_extremes && std::isfinite(m_extremes->minimum) && std::isfinite(m_extremes->maximum)) {
        told.minimum = m_extremes->minimum;
        told.maximum = m_extremes->maximum;
        told.peak_to_peak = m_extremes->maximum - m_extremes->minimum;
        told.minimum_cycle = m_extremes->minimum_line;
        told.maximum_cycle = m_extremes->maximum_line;
    }
    return told;
}

measure::CurveReading CurveReader::Between(std::optional<std::int64_t> a,
                                           std::optional<std::int64_t> b, Budget* budget) {
    ForgetLosses();
    measure::CurveReading reading;
    reading.a = ValueAt(a);
    reading.b = ValueAt(b);
    reading.difference = DifferenceOf(reading.a, reading.b);
    reading.per_second = reading.difference;
    if (!a || !b) {
        reading.between = measure::StatisticsOf({}, m_cycle_time);
        return reading;
    }
    if (reading.difference) {
        reading.per_second =
            *a != *b ? Figure(*reading.difference / (static_cast<double>(*b - *a) * m_cycle_time))
                     : Figure::Not("both cursors stand at one time");
    }
    const LineRange all = Lines();
    const LineRange lines{std::max(std::min(*a, *b), all.begin),
                          std::min(std::max(*a, *b) + 1, all.end)};
    m_moments.Forget(all.begin);
    const measure::MomentBlocks::Result result = m_moments.Of(
        lines.begin, lines.end, [this, budget](measure::Cycle first, std::span<double> room) {
            return ReadPart(first, room, budget);
        });
    // What was read first may have been lost behind it.
    reading.is_whole = result.is_whole && m_values->Losses() == m_losses;
    reading.between =
        reading.is_whole ? measure::StatisticsOf(result.moments, m_cycle_time) : NotWhole(lines);
    return reading;
}

LineRange CurveReader::Pending::Lines(std::int64_t count) const {
    return search == Search::kForward ? LineRange{line + taken, line + taken + count}
                                      : LineRange{line - taken - count + 1, line - taken + 1};
}

void CurveReader::Begin(Landmark landmark, std::int64_t line, Search search, double prominence) {
    const bool goes_on = m_pending && m_pending->landmark == landmark && m_pending->line == line &&
                         m_pending->search == search && m_pending->prominence == prominence;
    if (!goes_on) {
        m_pending = Pending{landmark, line, search, prominence, SearchFor(landmark, prominence)};
        m_pending->size = kSearchedAtOnce;
    }
}

bool CurveReader::TakeStretch(Pending& pending, std::int64_t left) {
    const bool forward = pending.search == Search::kForward;
    const std::int64_t size = std::min(pending.size, left);
    // What is searched is near mostly: the first lines are read.
    const auto bounds =
        pending.taken > 0 ? m_values->Bounds(pending.Lines(size)) : std::optional<LineBounds>();
    if (bounds) {
        const measure::ValueSearch::Summary summary{bounds->minimum, bounds->maximum,
                                                    forward ? bounds->last : bounds->first};
        if (pending.values->CanSkip(summary)) {
            pending.values->Skip(size, summary);
            pending.taken += size;
            pending.size = std::min(size * kSkippedParts, kMostSkipped);
            return false;
        }
    }
    if (bounds && size > kSearchedAtOnce) {
        pending.size = std::max(size / kSkippedParts, kSearchedAtOnce);
        return false;
    }
    const std::int64_t count = std::min(size, kSearchedAtOnce);
    m_room.resize(static_cast<std::size_t>(count));
    m_values->Read(pending.Lines(count).begin, m_room);
    if (!forward) {
        std::ranges::reverse(m_room);
    }
    pending.size = kSearchedAtOnce;
    pending.taken += count;
    return std::ranges::any_of(m_room, [&](double value) { return pending.values->Take(value); });
}

// Looks at ever longer stretches without reading them where it can: what is searched may be far.
LineFound CurveReader::Next(Landmark landmark, std::int64_t line, Search search, double prominence,
                            Budget* budget) {
    const LineRange lines = Lines();
    if (line < lines.begin || line >= lines.end) {
        return {};
    }
    ForgetLosses();
    Begin(landmark, line, search, prominence);
    const std::int64_t all = search == Search::kForward ? lines.end - line : line - lines.begin + 1;
    bool is_found = false;
    while (!is_found && m_pending->taken < all) {
        if (budget != nullptr && budget->IsSpent()) {
            return {std::nullopt, false};
        }
        const std::uint64_t read_before = m_values->BytesRead();
        is_found = TakeStretch(*m_pending, all - m_pending->taken);
        if (budget != nullptr) {
            budget->Spend(m_values->BytesRead() - read_before);
        }
    }
    const std::int64_t step = m_pending->values->FoundStep();
    m_pending.reset();
    if (!is_found) {
        return {};
    }
    return {search == Search::kForward ? line + step : line - step};
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
