#include "recording/chunk_table.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace wavo::recording {

namespace {

/// So many chunks are cut where their blocks begin, more where chunks do.
constexpr std::size_t kFewChunks = 4;
/// Of each chunk, or of all.
constexpr std::size_t kMostParts = 64;

}  // namespace

StreamLevels::StreamLevels(std::vector<Level> entries, std::uint64_t version) : m_version(version) {
    m_levels.push_back(std::move(entries));
    while (m_levels.back().size() > kFanOut) {
        const std::vector<Level>& below = m_levels.back();
        std::vector<Level> level((below.size() + kFanOut - 1) / kFanOut);
        for (std::size_t i = 0; i < below.size(); ++i) {
            level[i / kFanOut].Take(below[i]);
        }
        m_levels.push_back(std::move(level));
    }
}

Level StreamLevels::Of(std::size_t begin, std::size_t end) const {
    Level result;
    // Upwards, what does not fill a block of the next level is taken at both ends.
    for (const std::vector<Level>& level : m_levels) {
        const bool is_top = &level == &m_levels.back();
        while (begin < end && (is_top || begin % kFanOut != 0)) {
            result.Take(level[begin++]);
        }
        while (begin < end && end % kFanOut != 0) {
            result.Take(level[--end]);
        }
        if (begin >= end) {
            break;
        }
        begin /= kFanOut;
        end /= kFanOut;
    }
    return result;
}

bool ChunkTable::Follows(std::uint64_t first_line, std::uint64_t lines) const {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 2;
    return first_line < kMost && lines < kMost &&
           (m_entries.empty() || m_entries.back().EndLine() <= first_line);
}

void ChunkTable::Add(ChunkEntry entry, const std::vector<Level>& whole,
                     const std::vector<std::uint32_t>& crcs) {
    entry.row = static_cast<std::uint32_t>(m_streams > 0 ? m_whole.size() / m_streams : 0);
    entry.crcs = m_crcs.size();
    m_whole.resize(m_whole.size() + whole.size());
    m_missing.resize(m_missing.size() + whole.size());
    Extremes* extremes = m_whole.data() + m_whole.size() - whole.size();
    std::uint8_t* missing = m_missing.data() + m_missing.size() - whole.size();
    for (const Level& level : whole) {
        *extremes++ = level.extremes;
        *missing++ = level.missing ? 1 : 0;
    }
    m_crcs.insert(m_crcs.end(), crcs.begin(), crcs.end());
    m_lines_before.push_back(m_entries.empty() ? 0
                                               : m_lines_before.back() + m_entries.back().lines);
    m_ends.push_back(entry.EndLine());
    m_entries.push_back(entry);
    ++m_version;
}

void ChunkTable::Remove(std::size_t index) {
    const std::uint64_t end = m_entries[index].EndLine();
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(index));
    m_ends.erase(m_ends.begin() + static_cast<std::ptrdiff_t>(index));
    if (index < m_entries.size() && m_entries[index].first_line == end) {
        m_entries[index].has_levels = false;
        m_entries[index].levels_are_due = true;
    }
    m_lines_before.resize(m_entries.size());
    for (std::size_t i = index; i < m_entries.size(); ++i) {
        m_lines_before[i] = i == 0 ? 0 : m_lines_before[i - 1] + m_entries[i - 1].lines;
    }
    ++m_version;
}

std::size_t ChunkTable::Find(std::uint64_t line, std::size_t from) const {
    // Steps that double find an end for the search near where it begins.
    std::size_t end = from;
    for (std::size_t step = 1; end < m_ends.size() && m_ends[end] <= line; step *= 2) {
        from = end + 1;
        end += step;
    }
    const auto begin = m_ends.begin() + static_cast<std::ptrdiff_t>(from);
    const auto last = m_ends.begin() + static_cast<std::ptrdiff_t>(std::min(end, m_ends.size()));
    return static_cast<std::size_t>(std::upper_bound(begin, last, line) - m_ends.begin());
}

std::optional<std::size_t> ChunkTable::FindOffset(std::uint64_t offset) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [offset](const ChunkEntry& entry) { return entry.offset == offset; });
    return found == m_entries.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(found - m_entries.begin()));
}

std::uint64_t ChunkTable::CountBefore(std::uint64_t line, std::size_t index) const {
    if (index == m_entries.size()) {
        return m_entries.empty() ? 0 : m_lines_before.back() + m_entries.back().lines;
    }
    const std::uint64_t first = m_entries[index].first_line;
    return m_lines_before[index] + (line > first ? line - first : 0);
}

std::uint64_t ChunkTable::CountLines(std::uint64_t from, std::uint64_t to) const {
    return from < to ? CountBefore(to, Find(to)) - CountBefore(from, Find(from)) : 0;
}

void ChunkTable::Cut(std::uint64_t from, std::uint64_t to,
                     std::vector<std::uint64_t>& bounds) const {
    const std::size_t first = Find(from);
    std::size_t end = Find(to, first);
    end += end < m_entries.size() && m_entries[end].first_line < to ? 1 : 0;
    bounds.assign(1, from);
    const auto cut_at = [&](std::uint64_t line) {
        if (line > bounds.back() && line < to) {
            bounds.push_back(line);
        }
    };
    const std::size_t chunks_per_part = (end - first + kMostParts - 1) / kMostParts;
    for (std::size_t i = first; i < end; ++i) {
        const ChunkEntry& entry = m_entries[i];
        if (end - first <= kFewChunks) {
            cut_at(entry.first_line);
            const std::uint64_t inside = std::max(from, entry.first_line) - entry.first_line;
            const std::uint64_t begin = inside / kLinesPerBlock;
            const std::uint64_t blocks =
                BlocksOf(std::min(to, entry.EndLine()) - entry.first_line) - begin;
            const std::uint64_t blocks_per_part = (blocks + kMostParts - 1) / kMostParts;
            for (std::uint64_t block = blocks_per_part; block < blocks; block += blocks_per_part) {
                cut_at(entry.first_line + (begin + block) * kLinesPerBlock);
            }
            cut_at(entry.EndLine());
        } else if ((i - first) % chunks_per_part == 0) {
            cut_at(i > first ? m_entries[i - 1].EndLine() : entry.first_line);
            cut_at(entry.first_line);
        }
    }
    if (end > first) {
        cut_at(m_entries[end - 1].EndLine());
    }
    bounds.push_back(to);
}

Level ChunkTable::Whole(const ChunkEntry& entry, std::size_t stream) const {
    const std::size_t place = entry.row * m_streams + stream;
    return {m_whole[place], m_missing[place] != 0};
}

void ChunkTable::SetWhole(std::size_t index, const std::vector<Level>& whole) {
    const std::size_t begin = m_entries[index].row * m_streams;
    for (std::size_t stream = 0; stream < m_streams; ++stream) {
        m_whole[begin + stream] = whole[stream].extremes;
        m_missing[begin + stream] = whole[stream].missing ? 1 : 0;
    }
    m_entries[index].levels_are_due = false;
    ++m_version;
}

const StreamLevels& ChunkTable::Stream(std::size_t stream) const {
    m_stream_levels.resize(m_streams);
    std::optional<StreamLevels>& levels = m_stream_levels[stream];
    if (!levels || levels->Version() != m_version) {
        std::vector<Level> entries;
        entries.reserve(m_entries.size());
        for (const ChunkEntry& entry : m_entries) {
            entries.push_back(Whole(entry, stream));
        }
        levels.emplace(std::move(entries), m_version);
    }
    return *levels;
}

}  // namespace wavo::recording
