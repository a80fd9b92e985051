#include "graph/values/ring_history.h"

#include <algorithm>
#include <cmath>

#include "graph/values/missing_value.h"

namespace wavo {

namespace {

/// The samples of a run that came with lines of a range.
struct RunPart {
    std::uint64_t sequence = 0;
    std::int64_t line = 0;
    std::uint64_t count = 0;
};

RunPart PartOf(const LineLog::Run& run, const LineRange& lines) {
    const std::int64_t begin = std::max(run.line, lines.begin);
    const std::int64_t end = std::min(run.line + static_cast<std::int64_t>(run.count), lines.end);
    if (begin >= end) {
        return {};
    }
    return {run.sequence + static_cast<std::uint64_t>(begin - run.line), begin,
            static_cast<std::uint64_t>(end - begin)};
}

}  // namespace

std::vector<LineLog::Run> RingHistory::Runs() const {
    const SampleRing& ring = m_value.Values();
    return m_value.Lines().Runs(ring.FirstSequence(), ring.Appended());
}

LineRange RingHistory::Lines() const {
    const std::vector<LineLog::Run> runs = Runs();
    if (runs.empty()) {
        return {};
    }
    return {runs.front().line, runs.back().line + static_cast<std::int64_t>(runs.back().count)};
}

HistoryAnswer RingHistory::Columns(std::span<const std::int64_t> bounds, ColumnRow& row) {
    row.Reset(bounds.empty() ? 0 : bounds.size() - 1);
    const std::vector<LineLog::Run> runs = Runs();
    auto run = runs.begin();  // the first one that reaches into the column
    for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
        const LineRange lines{bounds[column], bounds[column + 1]};
        while (run != runs.end() &&
               run->line + static_cast<std::int64_t>(run->count) <= lines.begin) {
            ++run;
        }
        std::uint64_t taken = 0;
        for (auto part_of = run; part_of != runs.end() && part_of->line < lines.end; ++part_of) {
            const RunPart part = PartOf(*part_of, lines);
            Take(part.sequence, part.count, row, column);
            taken += part.count;
        }
        if (taken == static_cast<std::uint64_t>(lines.Count())) {
            const SampleBuffer& buffer = m_value.Values();
            const bool has_nan =
                taken > 0 && buffer.Pyramid().HasNaN(buffer, PartOf(*run, lines).sequence, taken);
            row.missing[column] = has_nan ? 1 : 0;
        }
    }
    return HistoryAnswer::kAll;
}

void RingHistory::Take(std::uint64_t sequence, std::uint64_t count, ColumnRow& row,
                       std::size_t column) const {
    if (count == 0) {
        return;
    }
    const SampleBuffer& buffer = m_value.Values();
    const MinMax extremes = buffer.Pyramid().Of(buffer, sequence, count);
    if (extremes.IsEmpty()) {  // nothing but NaN
        return;
    }
    row.minimum[column] = std::min(row.minimum[column], extremes.minimum);
    row.maximum[column] = std::max(row.maximum[column], extremes.maximum);
    if (std::isnan(row.first[column])) {
        std::uint64_t first = sequence;
        while (std::isnan(buffer.Sample(first))) {
            ++first;
        }
        row.first[column] = buffer.Sample(first);
    }
    std::uint64_t last = sequence + count - 1;
    while (std::isnan(buffer.Sample(last))) {
        --last;
    }
    row.last[column] = buffer.Sample(last);
}

HistoryAnswer RingHistory::Values(std::int64_t first, std::span<double> values) {
    std::fill(values.begin(), values.end(), NoSample());
    const LineRange lines{first, first + static_cast<std::int64_t>(values.size())};
    for (const LineLog::Run& run : Runs()) {
        const RunPart part = PartOf(run, lines);
        if (part.count > 0) {
            const SampleRing::Parts held = m_value.Values().RangeOf(part.sequence, part.count);
            auto to = values.begin() + (part.line - first);
            to = std::copy(held.first.begin(), held.first.end(), to);
            std::copy(held.second.begin(), held.second.end(), to);
        }
    }
    return HistoryAnswer::kAll;
}

HistoryAnswer RingHistory::Sums(const LineRange& lines, HistorySums& sums) {
    sums = {};
    const std::vector<LineLog::Run> runs = Runs();
    const auto for_each = [&](const auto& take) {
        for (const LineLog::Run& run : runs) {
            const RunPart part = PartOf(run, lines);
            for (std::uint64_t i = 0; i < part.count; ++i) {
                if (const double sample = m_value.Values().Sample(part.sequence + i);
                    std::isfinite(sample)) {
                    take(sample);
                }
            }
        }
    };
    // In two passes: far from zero the squares of the values would lose the differences.
    for_each([&](double sample) {
        ++sums.count;
        sums.sum += sample;
    });
    const double mean = sums.Mean();
    for_each([&](double sample) { sums.sum_of_squares += (sample - mean) * (sample - mean); });
    return HistoryAnswer::kAll;
}

}  // namespace wavo
