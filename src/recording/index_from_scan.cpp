// The index of a recording without a summary, from record to record; and how chunks come into the
// table.
#include <algorithm>

#include "recording/layout.h"
#include "recording/recording_index.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

}  // namespace

void IndexReader::Scan(std::uint64_t offset) {
    std::optional<ChunkInFile> pending;
    m_index.next_record = offset;
    while (offset != 0 && !m_index.is_complete) {
        m_index.next_record = offset;
        offset = ScanRecord(offset, pending);
    }
    if (pending) {
        AddPlain(*pending);
    }
}

std::uint64_t IndexReader::ScanRecord(std::uint64_t offset, std::optional<ChunkInFile>& pending) {
    ByteReader reader(m_window.At(offset, mcap::kFraming));
    mcap::Framing framing = mcap::TakeFraming(reader);
    const std::uint64_t content = offset + mcap::kFraming;
    if (reader.Failed() || framing.opcode == Opcode{}) {
        return 0;
    }
    if (framing.opcode == Opcode::kChunk) {
        if (pending) {
            AddPlain(*pending);
            pending.reset();
        }
        ChunkInFile chunk;
        if (!ReadChunkHead(m_window.At(content, kMostChunkHead), framing.length, chunk.head)) {
            return 0;
        }
        framing.length = chunk.head.size + chunk.head.records;
        if (framing.length > m_size - content || chunk.head.records > m_size) {
            return 0;
        }
        chunk.offset = offset;
        chunk.length = framing.length + mcap::kFraming;
        pending = chunk;
        return content + framing.length;
    }
    if (framing.length > m_size - content) {
        return 0;
    }
    switch (framing.opcode) {
        case Opcode::kExtremes:
            ScanLevels(content, framing.length, pending);
            break;
        case Opcode::kDataEnd:
            m_index.is_complete = true;
            break;
        case Opcode::kSchema:
        case Opcode::kChannel:
        case Opcode::kAttachment:
            TakeFrontRecord(framing, content);
            break;
        default:
            break;
    }
    return content + framing.length;
}

void IndexReader::ScanLevels(std::uint64_t content, std::uint64_t length,
                             std::optional<ChunkInFile>& pending) {
    LevelsHead head;
    if (!ReadLevelsHeadAt(content, length, head)) {
        return;
    }
    if (pending && pending->offset == head.chunk_offset) {
        AddRegular(*pending, head, content);
        pending.reset();
    } else if (head.lines > 0 && !m_index.table.FindOffset(head.chunk_offset)) {
        m_index.NoticeLines(head.first_line, head.first_line + head.lines,
                            "are damaged and left out");
    }
}

bool IndexReader::ReadLevelsHeadAt(std::uint64_t content, std::uint64_t length, LevelsHead& head) {
    const std::size_t size = LevelsHeadSizeOf(m_window.At(content, kLevelsHeadStart));
    return size != 0 && size <= length && ReadLevelsHead(m_window.At(content, size), head);
}

void IndexReader::AddRegular(const ChunkInFile& chunk, const LevelsHead& head,
                             std::uint64_t levels_offset) {
    const std::size_t axes = m_index.head.axis_names.size();
    const std::uint64_t lines_size = std::uint64_t{head.lines} * mcap::LineSize(axes);
    const std::uint64_t records = chunk.length - mcap::kFraming - mcap::kChunkHead;
    if (head.axes != axes || !chunk.head.compression.empty() || lines_size > records) {
        AddPlain(chunk);
        return;
    }
    if (records > lines_size) {
        m_index.rests.push_back({chunk.offset + chunk.length - (records - lines_size),
                                 records - lines_size, head.rest_crc});
    }
    if (head.lines == 0) {
        return;
    }
    if (!m_index.table.Follows(head.first_line, head.lines)) {
        m_index.NoticeLines(head.first_line, head.first_line + head.lines,
                            "go back in time and are left out");
        return;
    }
    ChunkEntry entry;
    entry.offset = chunk.offset;
    entry.length = chunk.length;
    entry.levels_offset = levels_offset;
    entry.first_line = head.first_line;
    entry.lines = head.lines;
    entry.rest_crc = head.rest_crc;
    entry.is_regular = true;
    // Its derivatives belong to the cycle time that it was recorded with.
    entry.has_levels = m_index.head_is_own;
    entry.levels_are_due = !m_index.head_is_own;
    m_index.table.Add(entry, head.whole, head.block_crcs);
}

void IndexReader::AddPlain(const ChunkInFile& chunk) {
    std::vector<std::byte> records;
    ChunkHead head;
    ChunkContent content;
    if (!chunk.head.compression.empty()) {
        m_compression = chunk.head.compression;
        return;
    }
    if (!ReadChunkRecords(m_file, chunk.offset, chunk.length, records, head) ||
        !ReadChunkContent(records, m_index.head.axis_names.size(), m_index.channels, content)) {
        m_index.notices.push_back("the chunk at byte " + std::to_string(chunk.offset) +
                                  " is damaged and left out");
        return;
    }
    AddRuns(chunk, content);
    m_index.events.insert(m_index.events.end(), content.events.begin(), content.events.end());
}

std::uint64_t IndexReader::NumberOf(const ChunkContent::Line& line, bool are_numbered,
                                    std::uint64_t next) const {
    if (m_index.head_is_own) {
        const LineClock clock(m_index.head.cycle_time, m_index.head.start_time);
        return are_numbered ? clock.LineOf(line.sequence, line.time) : clock.LineNear(line.time);
    }
    // Without a clock lines go on where those before end.
    return are_numbered ? next + (line.sequence - static_cast<std::uint32_t>(next)) : next;
}

void IndexReader::AddRuns(const ChunkInFile& chunk, const ChunkContent& content) {
    const bool are_numbered = std::any_of(content.lines.begin(), content.lines.end(),
                                          [](const auto& line) { return line.sequence != 0; });
    const auto& entries = m_index.table.Entries();
    std::uint64_t next = entries.empty() ? 0 : entries.back().EndLine();
    std::size_t begin = 0;
    while (begin < content.lines.size()) {
        const std::uint64_t first = NumberOf(content.lines[begin], are_numbered, next);
        std::size_t end = begin + 1;
        while (end < content.lines.size() &&
               NumberOf(content.lines[end], are_numbered, first + (end - begin)) ==
                   first + (end - begin)) {
            ++end;
        }
        ChunkEntry entry;
        entry.offset = chunk.offset;
        entry.length = chunk.length;
        entry.first_line = first;
        entry.lines = static_cast<std::uint32_t>(end - begin);
        entry.skipped = static_cast<std::uint32_t>(begin);
        entry.levels_are_due = true;
        if (m_index.table.Follows(first, entry.lines)) {
            m_index.table.Add(entry, std::vector<Level>(m_index.table.Streams()), {});
            next = entry.EndLine();
        } else {
            m_index.NoticeLines(first, first + entry.lines, "go back in time and are left out");
        }
        begin = end;
    }
}

}  // namespace wavo::recording
