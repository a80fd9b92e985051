// What stretches of a stream hold: from levels as far as they go, from lines at the edges.
#include <algorithm>
#include <cmath>

#include "recording/mcap.h"
#include "recording/recording_reader.h"

namespace wavo::recording {

namespace {

/// Lines that are read at a time where there are no levels.
constexpr std::size_t kLinesPiece = 4096;

LineSpan Within(LineSpan lines, LineSpan limits) {
    return {std::max(lines.first, limits.first), std::min(lines.end, limits.end)};
}

void TakeBoth(ColumnExtent& extent, const Level& level) {
    extent.certain.Take(level);
    extent.possible.Take(level);
}

void TakeMissing(ColumnExtent& extent) {
    extent.certain.missing = true;
    extent.possible.missing = true;
}

/// Takes what lies in gaps off both ends.
void SkipGap(const ChunkTable& table, LineSpan& lines) {
    const auto& entries = table.Entries();
    const std::size_t first = table.Find(lines.first);
    if (first == entries.size()) {
        lines.first = lines.end;
        return;
    }
    lines.first = std::max(lines.first, entries[first].first_line);
    const std::size_t behind = table.Find(lines.end);
    if ((behind == entries.size() || entries[behind].first_line >= lines.end) && behind > 0) {
        lines.end = std::min(lines.end, entries[behind - 1].EndLine());
    }
}

}  // namespace

const AxisLevels* RecordingReader::LoadLevels(std::size_t index, std::size_t axis) {
    const ChunkEntry& entry = m_index.table.Entries()[index];
    const std::uint64_t key = entry.offset + entry.skipped;
    if (const AxisLevels* const found = m_levels.Find(key, axis)) {
        return found;
    }
    const std::size_t blocks = BlocksOf(entry.lines);
    if (entry.has_levels) {
        const std::size_t size = AxisLevelsSize(blocks);
        m_bytes.resize(size);
        m_bytes_read += size;
        AxisLevels levels;
        const std::size_t head = LevelsHeadSize(Head().axis_names.size(), blocks);
        if (m_file.ReadAt(entry.levels_offset + head + axis * size, m_bytes) &&
            ReadAxisLevels(m_bytes, blocks, levels)) {
            const std::size_t bytes = levels.size() * sizeof(Level) + sizeof(AxisLevels);
            return &m_levels.Put(key, axis, std::move(levels), bytes);
        }
        // Damaged levels are made anew from the lines, which have a CRC of their own.
        m_index.table.At(index).has_levels = false;
    }
    return MakeLevels(index, axis) ? m_levels.Find(key, axis) : nullptr;
}

bool RecordingReader::MakeLevels(std::size_t index, std::size_t wanted_axis) {
    const std::size_t axes = Head().axis_names.size();
    const ChunkEntry entry = m_index.table.Entries()[index];
    LevelBuilder builder(axes, Head().cycle_time);
    std::vector<AxisLevels> levels;
    std::vector<Level> whole;
    std::vector<double> line(axes);
    // Derivatives need the lines before, where there are some.
    std::uint64_t history = 0;
    while (history < kLevelOrders - 1 && history < entry.first_line &&
           m_index.table.CountLines(entry.first_line - history - 1, entry.first_line) ==
               history + 1) {
        ++history;
    }
    for (; history > 0; --history) {
        if (!ReadLine(entry.first_line - history, line)) {
            return false;  // a chunk was lost: the table has changed
        }
        builder.Take(reinterpret_cast<const std::byte*>(line.data()), 0, 1);
    }
    builder.EndChunk(levels, whole);
    for (std::size_t block = 0; block < BlocksOf(entry.lines); ++block) {
        const Block* const values = LoadBlock(index, block);
        if (values == nullptr) {
            return false;
        }
        const std::size_t lines =
            std::min<std::size_t>(kLinesPerBlock, entry.lines - block * kLinesPerBlock);
        builder.Take(reinterpret_cast<const std::byte*>(values->data()), axes * sizeof(double),
                     lines);
    }
    builder.EndChunk(levels, whole);
    // The axis that is asked for comes last, so that it stays whatever the cache's limit.
    for (std::size_t step = 1; step <= axes; ++step) {
        const std::size_t axis = (wanted_axis + step) % axes;
        const std::size_t bytes = levels[axis].size() * sizeof(Level) + sizeof(AxisLevels);
        m_levels.Put(entry.offset + entry.skipped, axis, std::move(levels[axis]), bytes);
    }
    if (m_index.table.Entries()[index].levels_are_due) {
        m_index.table.SetWhole(index, whole);
    }
    return true;
}

std::size_t RecordingReader::SettleLevels(std::size_t most) {
    const auto& entries = m_index.table.Entries();
    while (m_settled_version != m_index.table.Version()) {
        const auto due = std::ranges::find_if(entries, &ChunkEntry::levels_are_due);
        if (due == entries.end()) {
            m_settled_version = m_index.table.Version();
            break;
        }
        for (std::size_t i = static_cast<std::size_t>(due - entries.begin()); i < entries.size();
             ++i) {
            if (!entries[i].levels_are_due) {
                continue;
            }
            if (most == 0) {
                return static_cast<std::size_t>(
                    std::ranges::count_if(entries, &ChunkEntry::levels_are_due));
            }
            --most;
            if (!MakeLevels(i, 0)) {
                break;  // a chunk has left the table: this ends
            }
        }
    }
    return 0;
}

ColumnExtent RecordingReader::Extent(std::size_t axis, std::int32_t order, std::uint64_t from,
                                     std::uint64_t to, Detail detail) {
    const std::uint64_t bounds[] = {from, std::max(from, to)};
    ColumnExtent extent;
    Columns(axis, order, bounds, detail, {&extent, 1});
    return extent;
}

void RecordingReader::Columns(std::size_t axis, std::int32_t order,
                              std::span<const std::uint64_t> bounds, Detail detail,
                              std::span<ColumnExtent> out) {
    const bool has_levels = order < static_cast<std::int32_t>(kLevelOrders);
    for (std::size_t i = 0; i < out.size();) {
        if (has_levels) {
            SettleLevels();
        }
        const std::uint64_t version = m_index.table.Version();
        std::size_t entry = m_index.table.Find(bounds[i]);
        for (; i < out.size() && m_index.table.Version() == version; ++i) {
            if (!has_levels) {
                out[i] = ExtentFromLines(axis, order, {bounds[i], bounds[i + 1]});
                continue;
            }
            const std::size_t next = m_index.table.Find(bounds[i + 1], entry);
            out[i] = ExtentOnce({axis, static_cast<std::size_t>(order), detail},
                                {bounds[i], bounds[i + 1]}, entry, next);
            entry = next;
        }
        if (m_index.table.Version() != version) {
            i = 0;  // a chunk turned out to be damaged
        }
    }
}

ColumnExtent RecordingReader::ExtentOnce(const Wanted& wanted, LineSpan lines, std::size_t first,
                                         std::size_t end) {
    ColumnExtent extent;
    const ChunkTable& table = m_index.table;
    if (lines.first >= lines.end) {
        return extent;
    }
    if (table.CountBefore(lines.end, end) - table.CountBefore(lines.first, first) !=
        lines.end - lines.first) {
        TakeMissing(extent);
    }
    const auto lies_within = [&table, lines](std::size_t i) {
        return table.Entries()[i].first_line >= lines.first &&
               table.Entries()[i].EndLine() <= lines.end;
    };
    if (end < table.Entries().size() && table.Entries()[end].first_line < lines.end) {
        ++end;
    }
    const std::uint64_t version = table.Version();
    // Entries at the edges are taken in part.
    if (first < end && !lies_within(first)) {
        TakePart(first, wanted, lines, extent);
        ++first;
    }
    if (first < end && version == table.Version() && !lies_within(end - 1)) {
        TakePart(end - 1, wanted, lines, extent);
        --end;
    }
    if (version != table.Version()) {
        return extent;
    }
    if (first < end) {
        TakeBoth(extent, table.Stream(wanted.axis * kLevelOrders + wanted.order).Of(first, end));
    }
    // A stream without values is not looked through for one.
    if (wanted.detail == Detail::kLines && !extent.possible.extremes.IsEmpty()) {
        const auto order = static_cast<std::int32_t>(wanted.order);
        extent.first = EdgeValue(wanted.axis, order, lines, true);
        extent.last = EdgeValue(wanted.axis, order, lines, false);
    }
    return extent;
}

void RecordingReader::TakePart(std::size_t index, const Wanted& wanted, LineSpan lines,
                               ColumnExtent& extent) {
    if (wanted.detail == Detail::kChunks) {
        extent.possible.Take(
            m_index.table.Stream(wanted.axis * kLevelOrders + wanted.order).Of(index, index + 1));
        return;
    }
    const ChunkEntry entry = m_index.table.Entries()[index];
    lines = Within(lines, {entry.first_line, entry.EndLine()});
    const AxisLevels* const levels = LoadLevels(index, wanted.axis);
    if (levels == nullptr) {
        return;  // the entry is gone
    }
    const std::size_t blocks = BlocksOf(entry.lines);
    const std::uint64_t first_block = (lines.first - entry.first_line) / kLinesPerBlock;
    const std::uint64_t end_block = BlocksOf(lines.end - entry.first_line);
    LineSpan edges[2];
    std::size_t edge_count = 0;
    for (std::uint64_t block = first_block; block < end_block; ++block) {
        const Level& level = (*levels)[wanted.order * blocks + block];
        const std::uint64_t begin = entry.first_line + block * kLinesPerBlock;
        const LineSpan range{begin, std::min(begin + kLinesPerBlock, entry.EndLine())};
        if (range.first >= lines.first && range.end <= lines.end) {
            TakeBoth(extent, level);
        } else if (wanted.detail == Detail::kBlocks) {
            extent.possible.Take(level);
        } else {
            edges[edge_count++] = Within(range, lines);  // the first or the last block
        }
    }
    for (std::size_t i = 0; i < edge_count; ++i) {
        TakeLines(wanted.axis, static_cast<std::int32_t>(wanted.order), edges[i], extent);
    }
}

void RecordingReader::TakeLines(std::size_t axis, std::int32_t order, LineSpan lines,
                                ColumnExtent& extent) {
    std::vector<double> values(static_cast<std::size_t>(lines.end - lines.first));
    std::vector<std::uint8_t> are_there(values.size());
    ReadStream(axis, order, lines.first, values, are_there);
    for (std::size_t i = 0; i < values.size(); ++i) {
        Level level;
        level.missing = are_there[i] == 0 || std::isnan(values[i]);
        if (!level.missing) {
            level.extremes = {values[i], values[i]};
        }
        TakeBoth(extent, level);
    }
}

ColumnExtent RecordingReader::ExtentFromLines(std::size_t axis, std::int32_t order,
                                              LineSpan lines) {
    ColumnExtent extent;
    if (m_index.table.CountLines(lines.first, lines.end) < lines.end - lines.first) {
        TakeMissing(extent);
    }
    std::vector<double> values(kLinesPiece);
    std::vector<std::uint8_t> are_there(kLinesPiece);
    for (SkipGap(m_index.table, lines); lines.first < lines.end; SkipGap(m_index.table, lines)) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(kLinesPiece, lines.end - lines.first));
        ReadStream(axis, order, lines.first, std::span(values).first(count),
                   std::span(are_there).first(count));
        for (std::size_t i = 0; i < count; ++i) {
            if (are_there[i] == 0 || std::isnan(values[i])) {
                TakeMissing(extent);
                continue;
            }
            TakeBoth(extent, {{values[i], values[i]}, false});
            extent.first = std::isnan(extent.first) ? values[i] : extent.first;
            extent.last = values[i];
        }
        lines.first += count;
    }
    return extent;
}

double RecordingReader::EdgeValue(std::size_t axis, std::int32_t order, LineSpan lines,
                                  bool is_first) {
    // Mostly the very first line has it; behind a gap or NaN it is looked for.
    const ChunkTable& table = m_index.table;
    const std::size_t stream = axis * kLevelOrders + static_cast<std::size_t>(order);
    std::size_t most = 1;
    for (SkipGap(table, lines); lines.first < lines.end; SkipGap(table, lines)) {
        const ChunkEntry& entry =
            table.Entries()[table.Find(is_first ? lines.first : lines.end - 1)];
        if (table.Whole(entry, stream).extremes.IsEmpty()) {  // none of its values is a number
            (is_first ? lines.first : lines.end) = is_first ? entry.EndLine() : entry.first_line;
            continue;
        }
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(most, lines.end - lines.first));
        std::vector<double> values(count);
        std::vector<std::uint8_t> are_there(count);
        const std::uint64_t begin = is_first ? lines.first : lines.end - count;
        ReadStream(axis, order, begin, values, are_there);
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t at = is_first ? i : count - 1 - i;
            if (are_there[at] != 0 && !std::isnan(values[at])) {
                return values[at];
            }
        }
        (is_first ? lines.first : lines.end) = is_first ? begin + count : begin;
        most = std::min(2 * most, kLinesPiece);
    }
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace wavo::recording
