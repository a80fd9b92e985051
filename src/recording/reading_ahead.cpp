#include "recording/reading_ahead.h"

#include <algorithm>

#include "recording/layout.h"
#include "recording/mcap.h"

namespace wavo::recording {

void ReadingAhead::Announce(std::size_t axis, LineSpan lines, Detail detail) {
    const ChunkTable& table = m_reader.m_index.table;
    if (detail == Detail::kChunks || lines.first >= lines.end) {
        return;
    }
    for (const std::uint64_t line : {lines.first, lines.end - 1}) {
        const std::size_t index = table.Find(line);
        if (index == table.Entries().size() || table.Entries()[index].first_line > line) {
            continue;
        }
        const ChunkEntry& entry = table.Entries()[index];
        const bool lies_within = entry.first_line >= lines.first && entry.EndLine() <= lines.end;
        if (detail == Detail::kLines) {
            AnnounceBlock(entry, line);
        } else if (!lies_within) {
            AnnounceLevels(entry, axis);
        }
    }
}

void ReadingAhead::AnnounceLevels(const ChunkEntry& entry, std::size_t axis) {
    if (!entry.has_levels ||
        m_reader.m_levels.Find(entry.offset + entry.skipped, axis) != nullptr) {
        return;
    }
    const std::size_t blocks = BlocksOf(entry.lines);
    const std::size_t size = AxisLevelsSize(blocks);
    const std::size_t head = LevelsHeadSize(m_reader.Head().axis_names.size(), blocks);
    m_reader.m_file.WillRead(entry.levels_offset + head + axis * size, size);
}

void ReadingAhead::AnnounceBlock(const ChunkEntry& entry, std::uint64_t line) {
    const std::uint64_t block = (line - entry.first_line) / kLinesPerBlock;
    if (!entry.is_regular ||
        m_reader.m_blocks.Find(entry.offset + entry.skipped, block) != nullptr) {
        return;
    }
    const std::size_t line_size = mcap::LineSize(m_reader.Head().axis_names.size());
    const std::uint64_t begin = block * kLinesPerBlock;
    const std::uint64_t count = std::min<std::uint64_t>(kLinesPerBlock, entry.lines - begin);
    m_reader.m_file.WillRead(entry.offset + mcap::kFraming + mcap::kChunkHead + begin * line_size,
                             static_cast<std::size_t>(count) * line_size);
}

}  // namespace wavo::recording
