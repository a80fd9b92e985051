#include "computed/computed_history.h"

#include <algorithm>
#include <cmath>

#include "graph/values/missing_value.h"
#include "source/derivation.h"

namespace wavo::computed {

namespace {

constexpr std::int64_t kBlockLines = ComputedStreams::kBlockLines;

/// The number of the block that a line lies in.
std::int64_t BlockOf(std::int64_t line) {
    return line >= 0 ? line / kBlockLines : -((-line + kBlockLines - 1) / kBlockLines);
}

LineRange LinesOf(std::int64_t block) {
    return {block * kBlockLines, (block + 1) * kBlockLines};
}

}  // namespace

void ComputedHistory::Extent::Take(std::span<const double> values) {
    for (const double value : values) {
        if (std::isnan(value)) {
            missing = true;
            continue;
        }
        first = std::isnan(first) ? value : first;
        last = value;
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
    }
}

void ComputedHistory::Extent::Take(const Extent& next) {
    missing |= next.missing;
    first = std::isnan(first) ? next.first : first;
    last = std::isnan(next.last) ? last : next.last;
    minimum = std::min(minimum, next.minimum);
    maximum = std::max(maximum, next.maximum);
}

ComputedHistory::ComputedHistory(ComputedStreams& streams, std::size_t axis, std::int32_t order)
    : m_streams(streams),
      m_axis(axis),
      m_order(order),
      m_needs(streams.m_program.NeedsOf(axis)),
      m_source(std::max<std::size_t>(m_needs.source.size(), 1)),
      m_computed(m_needs.order.size()) {}

LineRange ComputedHistory::Lines() const {
    return m_streams.m_origin.axis(0)->Lines();
}

std::uint64_t ComputedHistory::Version() const {
    return m_streams.m_origin.axis(0)->Version();
}

std::uint64_t ComputedHistory::Losses() const {
    return m_streams.m_origin.losses();
}

// Lines that have come change the last block alone.
void ComputedHistory::Check() {
    const std::uint64_t version = Version();
    const std::uint64_t losses = m_streams.m_origin.losses();
    const LineRange lines = Lines();
    if (version == m_version && losses == m_losses && lines == m_lines) {
        return;
    }
    const bool has_only_grown =
        losses == m_losses && lines.begin == m_lines.begin && lines.end >= m_lines.end;
    m_first_block = BlockOf(lines.begin);
    const std::int64_t changed = has_only_grown ? BlockOf(m_lines.end) : m_first_block;
    m_extents.resize(static_cast<std::size_t>(changed - m_first_block));
    m_extents.resize(static_cast<std::size_t>(BlockOf(lines.end) + 1 - m_first_block));
    m_streams.Forget(*this, has_only_grown ? changed : std::numeric_limits<std::int64_t>::min());
    m_version = version;
    m_losses = losses;
    m_lines = lines;
}

const ComputedHistory::Extent* ComputedHistory::ExtentOf(std::int64_t block) const {
    const std::optional<Extent>& extent =
        m_extents[static_cast<std::size_t>(block - m_first_block)];
    return extent ? &*extent : nullptr;
}

// ---- computing ----

void ComputedHistory::ComputeAxis(std::int64_t first, std::size_t count,
                                  std::vector<std::uint8_t>& present) {
    const ComputedStreams::Origin& origin = m_streams.m_origin;
    std::vector<Column> source;
    std::vector<Column> computed(m_streams.m_program.Names().size());
    for (std::size_t i = 0; i < m_source.size(); ++i) {
        // One that needs no axis is there in the lines that are.
        const std::size_t axis = m_needs.source.empty() ? 0 : m_needs.source[i];
        m_source[i].resize(count);
        origin.axis(axis)->Values(first, m_source[i]);
        source.resize(std::max(source.size(), axis + 1));
        source[axis] = {m_source[i].data(), 1, kNoValue};
    }
    present.resize(count);
    std::ranges::transform(m_source[0], present.begin(),
                           [](double value) { return IsNoSample(value) ? 0 : 1; });
    for (std::size_t i = 0; i < m_needs.order.size(); ++i) {
        m_computed[i].resize(count);
        const std::size_t axis = m_needs.order[i];
        m_streams.m_program.Compute(axis, source, computed, origin.cycle_time, count,
                                    m_computed[i].data(), 1);
        computed[axis] = {m_computed[i].data(), 1, kNoValue};
    }
}

void ComputedHistory::ComputeLines(const LineRange& lines, std::span<double> out) {
    const auto history = static_cast<std::size_t>(m_order);
    const std::size_t before = m_needs.lines_before + history;
    const std::size_t count = before + out.size();
    std::vector<std::uint8_t> present;
    ComputeAxis(lines.begin - static_cast<std::int64_t>(before), count, present);
    const std::span<const double> values = m_computed.back();
    const double divisor = DerivationDivisor(m_streams.m_origin.cycle_time, m_order);
    std::size_t successive = 0;  // lines that are there, up to the present one
    for (std::size_t i = m_needs.lines_before; i < count; ++i) {
        successive = present[i] != 0 ? successive + 1 : 0;
        if (i < before) {
            continue;
        }
        double& value = out[i - before];
        if (successive <= history) {
            value = NoSample();
            continue;
        }
        value = Derive(values.subspan(i - history, history + 1), divisor);
        value = std::isnan(value) ? kNoValue : value;
    }
}

const std::vector<double>* ComputedHistory::ValuesOf(std::int64_t block, Effort effort) {
    if (const std::vector<double>* const kept = m_streams.Find({this, block})) {
        return kept;
    }
    const LineRange lines = LinesOf(block);
    if (lines.begin >= 0 && !m_streams.m_origin.has_lines(lines)) {
        static const std::vector<double> none(static_cast<std::size_t>(kBlockLines), NoSample());
        m_extents[static_cast<std::size_t>(block - m_first_block)].emplace().missing = true;
        return &none;
    }
    if (effort == Effort::kAsFarAsAllowed && !m_streams.m_origin.may_compute()) {
        return nullptr;
    }
    std::vector<double> values(static_cast<std::size_t>(kBlockLines));
    ComputeLines(lines, values);
    Extent extent;
    extent.Take(values);
    m_extents[static_cast<std::size_t>(block - m_first_block)] = extent;
    return &m_streams.Keep({this, block}, std::move(values));
}

bool ComputedHistory::TakeLines(const LineRange& lines, Effort effort, Extent& extent) {
    const LineRange held = Lines();
    const LineRange inside{std::max(lines.begin, held.begin), std::min(lines.end, held.end)};
    extent.missing |= inside.Count() < lines.Count();
    for (std::int64_t line = inside.begin; line < inside.end;) {
        const std::int64_t block = BlockOf(line);
        const LineRange all = LinesOf(block);
        const std::int64_t end = std::min(all.end, inside.end);
        const Extent* const known = ExtentOf(block);
        if (line == all.begin && end == all.end && known != nullptr) {
            extent.Take(*known);
        } else if (const std::vector<double>* const values = ValuesOf(block, effort)) {
            extent.Take(std::span(*values).subspan(static_cast<std::size_t>(line - all.begin),
                                                   static_cast<std::size_t>(end - line)));
        } else {
            return false;
        }
        line = end;
    }
    return true;
}

// ---- answers ----

HistoryAnswer ComputedHistory::Columns(std::span<const std::int64_t> bounds, ColumnRow& row) {
    Check();
    row.Reset(bounds.empty() ? 0 : bounds.size() - 1);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        Extent extent;
        TakeLines({bounds[i], bounds[i + 1]}, Effort::kAll, extent);
        row.first[i] = extent.first;
        row.last[i] = extent.last;
        row.minimum[i] = extent.minimum;
        row.maximum[i] = extent.maximum;
        row.missing[i] = extent.missing ? 1 : 0;
    }
    return HistoryAnswer::kAll;
}

bool ComputedHistory::CopyValues(std::int64_t first, Effort effort, std::span<double> values) {
    Check();
    std::ranges::fill(values, NoSample());
    const LineRange held = Lines();
    const std::int64_t end = std::min(first + static_cast<std::int64_t>(values.size()), held.end);
    for (std::int64_t line = std::max(first, held.begin); line < end;) {
        const std::int64_t block = BlockOf(line);
        const std::int64_t stop = std::min(end, LinesOf(block).end);
        const std::vector<double>* const computed = ValuesOf(block, effort);
        if (computed == nullptr) {
            return false;
        }
        std::copy(computed->begin() + (line - LinesOf(block).begin),
                  computed->begin() + (stop - LinesOf(block).begin),
                  values.begin() + (line - first));
        line = stop;
    }
    return true;
}

HistoryAnswer ComputedHistory::Values(std::int64_t first, std::span<double> values) {
    CopyValues(first, Effort::kAll, values);
    return HistoryAnswer::kAll;
}

HistoryAnswer ComputedHistory::ValuesToDraw(std::int64_t first, std::span<double> values) {
    return CopyValues(first, Effort::kAsFarAsAllowed, values) ? HistoryAnswer::kAll
                                                              : HistoryAnswer::kNotLoaded;
}

HistoryAnswer ComputedHistory::Sums(const LineRange& lines, HistorySums& sums) {
    Check();
    sums = {};
    const LineRange held = Lines();
    const std::int64_t end = std::min(lines.end, held.end);
    for (std::int64_t line = std::max(lines.begin, held.begin); line < end;) {
        const std::int64_t block = BlockOf(line);
        const std::int64_t stop = std::min(end, LinesOf(block).end);
        sums.Add(HistorySums::Of(std::span(*ValuesOf(block, Effort::kAll))
                                     .subspan(static_cast<std::size_t>(line - LinesOf(block).begin),
                                              static_cast<std::size_t>(stop - line))));
        line = stop;
    }
    return HistoryAnswer::kAll;
}

bool ComputedHistory::Outline(std::span<const std::int64_t> bounds,
                              std::span<ColumnOutline> columns) {
    Check();
    const LineRange held = Lines();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const LineRange lines{bounds[i], bounds[i + 1]};
        const LineRange inside{std::max(lines.begin, held.begin), std::min(lines.end, held.end)};
        Extent certain;
        Extent possible;
        possible.missing = inside.Count() < lines.Count();
        bool is_known = true;
        const std::int64_t last = BlockOf(inside.end - 1);
        for (std::int64_t block = BlockOf(inside.begin); inside.Count() > 0 && block <= last;
             ++block) {
            const Extent* const known = ExtentOf(block);
            is_known = known != nullptr;
            if (!is_known) {
                break;
            }
            const LineRange all = LinesOf(block);
            possible.Take(*known);
            if (all.begin >= inside.begin && all.end <= inside.end) {
                certain.Take(*known);
            }
        }
        ColumnOutline& column = columns[i];
        column = {};
        column.missing = true;
        if (is_known) {
            column.certain_minimum = certain.minimum;
            column.certain_maximum = certain.maximum;
            column.possible_minimum = possible.minimum;
            column.possible_maximum = possible.maximum;
            column.missing = possible.missing;
            // Where nothing is possible there is nothing.
            column.closeness = column.HasExtremes() ? Closeness::kFar : Closeness::kExact;
        }
    }
    return true;
}

HistoryAnswer ComputedHistory::LookCloser(const LineRange& lines, ColumnOutline& column) {
    Check();
    Extent extent;
    if (!TakeLines(lines, Effort::kAsFarAsAllowed, extent)) {
        return HistoryAnswer::kNotLoaded;
    }
    column.certain_minimum = column.possible_minimum = extent.minimum;
    column.certain_maximum = column.possible_maximum = extent.maximum;
    column.first = extent.first;
    column.last = extent.last;
    column.missing = extent.missing;
    column.closeness = Closeness::kExact;
    return HistoryAnswer::kAll;
}

void ComputedHistory::Cut(const LineRange& lines, std::vector<std::int64_t>& bounds) const {
    constexpr std::int64_t kMostParts = 64;
    const std::int64_t first = BlockOf(lines.begin);
    const std::int64_t blocks = BlockOf(lines.end - 1) + 1 - first;
    const std::int64_t blocks_per_part = (blocks + kMostParts - 1) / kMostParts;
    bounds.assign(1, lines.begin);
    for (std::int64_t block = blocks_per_part; block < blocks; block += blocks_per_part) {
        bounds.push_back(LinesOf(first + block).begin);
    }
    bounds.push_back(lines.end);
}

}  // namespace wavo::computed
