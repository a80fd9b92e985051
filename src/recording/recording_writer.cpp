#include "recording/recording_writer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "recording/checksum.h"
#include "recording/layout.h"
#include "recording/mcap.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;
using mcap::RecordScope;

std::size_t LinesPerChunk(std::size_t line_size, double cycle_time) {
    const double in_a_second = std::floor(1.0 / cycle_time * (1.0 + 1e-12));
    const auto fitting = static_cast<double>(kLargestChunk / line_size);
    return static_cast<std::size_t>(std::max(1.0, std::min(in_a_second, fitting)));
}

}  // namespace

RecordingWriter::RecordingWriter(RecordingFile file, std::string path, const RecordingHead& head,
                                 Durability durability)
    : m_path(std::move(path)),
      m_durability(durability),
      m_axes(head.axis_names.size()),
      m_line_size(mcap::LineSize(m_axes)),
      m_lines_per_chunk(LinesPerChunk(m_line_size, head.cycle_time)),
      m_clock(head.cycle_time, head.start_time),
      m_axis_names(head.axis_names),
      m_file(std::move(file)),
      m_levels(m_axes, head.cycle_time) {}

Expected<std::unique_ptr<RecordingWriter>> RecordingWriter::Create(
    const std::string& path, const RecordingHead& head, const std::optional<GraphFile>& graph_file,
    Durability durability) {
    if (!LineClock::CanRecord(head.cycle_time)) {
        return MakeFault(RecordingFault::kUnusable,
                         "cannot record lines with a cycle time below 1 ns or above 1e6 s");
    }
    if (head.axis_names.size() > std::numeric_limits<std::uint16_t>::max()) {
        return MakeFault(RecordingFault::kUnusable, "cannot record more than 65535 axes");
    }
    bool exists = false;
    RecordingFile file(platform::DataFiles().CreateNew(path, exists));
    if (!file.IsOpen()) {
        return SystemFault(exists ? RecordingFault::kExists : RecordingFault::kCannotWrite,
                           "cannot make", path);
    }
    std::unique_ptr<RecordingWriter> writer(
        new RecordingWriter(std::move(file), path, head, durability));
    writer->PutHead(head, graph_file);
    if (MaybeFault fault = writer->Write(writer->m_piece.View(), Crc32(writer->m_piece.View()))) {
        return *fault;
    }
    writer->BeginChunk();
    return writer;
}

void RecordingWriter::PutHead(const RecordingHead& head,
                              const std::optional<GraphFile>& graph_file) {
    m_piece.PutBytes(mcap::kMagic.data(), mcap::kMagic.size());
    {
        const RecordScope header(m_piece, Opcode::kHeader);
        m_piece.PutText("");
        m_piece.PutText(head.program);
    }
    layout::PutSchemas(m_piece, m_axis_names);
    layout::PutChannels(m_piece);
    m_metadata_offset = m_piece.size();
    layout::PutMetadata(m_piece, layout::kMetadataName, ToMetadata(head));
    m_metadata_length = m_piece.size() - m_metadata_offset;
    if (graph_file) {
        const std::size_t begin = m_piece.size();
        layout::PutAttachment(m_piece, head.start_time, *graph_file);
        layout::PutAttachmentIndex(m_attachment_index, begin, m_piece.size() - begin,
                                   head.start_time, *graph_file);
    }
}

void RecordingWriter::BeginChunk() {
    m_piece.Clear();
    m_piece.Extend(mcap::kFraming + mcap::kChunkHead);  // written when the chunk ends
    m_chunk_lines = 0;
    m_records_crc = 0;
    m_levels_head.block_crcs.clear();
    m_events.Clear();
    m_event_index.clear();
}

MaybeFault RecordingWriter::Append(std::uint64_t first_line, std::span<const double> values,
                                   std::size_t lines) {
    for (std::size_t i = 0; i < lines; ++i) {
        const std::uint64_t line = first_line + i;
        const bool is_gap = line != m_next_line;
        if (m_chunk_lines > 0 && (is_gap || m_chunk_lines == m_lines_per_chunk)) {
            if (MaybeFault fault = EndChunk()) {
                return fault;
            }
        }
        if (is_gap) {
            m_levels.ForgetHistory();
        }
        PutLine(line, values.data() + i * m_axes);
    }
    // What is full does not wait for the next line.
    return m_chunk_lines == m_lines_per_chunk ? EndChunk() : m_fault;
}

void RecordingWriter::PutLine(std::uint64_t line, const double* values) {
    if (m_chunk_lines++ == 0) {
        m_chunk_first = line;
    }
    std::byte* to = m_piece.Extend(m_line_size);
    const auto put = [&to](const auto& from) {
        std::memcpy(to, &from, sizeof from);
        to += sizeof from;
    };
    const std::uint64_t time = m_clock.TimeOf(line);
    put(Opcode::kMessage);
    put(static_cast<std::uint64_t>(m_line_size - mcap::kFraming));
    put(layout::kLinesChannel);
    put(static_cast<std::uint32_t>(line));
    put(time);
    put(time);
    put(mcap::kCdrHead);
    if (m_axes > 0) {
        std::memcpy(to, values, m_axes * sizeof(double));
    }
    m_next_line = line + 1;
    if (m_chunk_lines % kLinesPerBlock == 0) {
        EndBlock();
    }
}

void RecordingWriter::EndBlock() {
    constexpr std::size_t kRecords = mcap::kFraming + mcap::kChunkHead;
    constexpr std::size_t kValues = mcap::kFraming + mcap::kMessageHead + mcap::kCdrHead.size();
    const std::size_t begin = (m_chunk_lines - 1) / kLinesPerBlock * kLinesPerBlock;
    const Bytes block = m_piece.View(kRecords + begin * m_line_size);
    m_levels.Take(block.data() + kValues, m_line_size, m_chunk_lines - begin);
    m_levels_head.block_crcs.push_back(Crc32(block));
    m_records_crc = CombineCrc32(m_records_crc, m_levels_head.block_crcs.back(), block.size());
}

void RecordingWriter::AddEvent(const Event& event) {
    const std::uint64_t time = m_clock.TimeOf(event.line);
    m_event_index.push_back({time, m_events.size()});
    const RecordScope message(m_events, Opcode::kMessage);
    m_events.Put(layout::kEventsChannel);
    m_events.Put(static_cast<std::uint32_t>(m_event_count++));
    m_events.Put(time);
    m_events.Put(time);
    m_events.PutBytes(BytesOf(ToJson(event)));
}

MaybeFault RecordingWriter::Keep() {
    return m_chunk_lines > 0 || !m_event_index.empty() ? EndChunk() : m_fault;
}

MaybeFault RecordingWriter::EndChunk() {
    if (m_fault) {
        return m_fault;
    }
    ChunkPlace place;
    place.offset = m_file_size;
    place.lines = static_cast<std::uint32_t>(m_chunk_lines);
    place.events = static_cast<std::uint32_t>(m_event_index.size());
    place.start_time = m_chunk_lines > 0 ? m_clock.TimeOf(m_chunk_first) : m_event_index[0].time;
    place.end_time =
        m_chunk_lines > 0 ? m_clock.TimeOf(m_chunk_first + m_chunk_lines - 1) : place.start_time;
    const std::size_t lines_size = m_chunk_lines * m_line_size;
    for (IndexEntry& entry : m_event_index) {
        place.start_time = std::min(place.start_time, entry.time);
        place.end_time = std::max(place.end_time, entry.time);
        entry.offset += lines_size;
    }
    if (m_chunk_lines % kLinesPerBlock != 0) {
        EndBlock();
    }
    m_piece.PutBytes(m_events.View());
    place.length = m_piece.size();
    m_levels_head.rest_crc = Crc32(m_events.View());
    const std::uint32_t records_crc =
        CombineCrc32(m_records_crc, m_levels_head.rest_crc, m_events.size());
    layout::PutChunkHead(m_piece, place, records_crc);
    constexpr std::size_t kHead = mcap::kFraming + mcap::kChunkHead;
    const std::uint32_t chunk_crc =
        CombineCrc32(Crc32(m_piece.View().first(kHead)), records_crc, place.length - kHead);
    PutMessageIndexes();
    place.index_length = m_piece.size() - place.length;
    PutLevels();
    if (MaybeFault fault = Write(m_piece.View(), Crc32(m_piece.View(place.length), chunk_crc))) {
        return fault;
    }
    m_chunks.push_back(place);
    m_kept_lines += m_chunk_lines;
    m_kept_end = m_next_line;
    BeginChunk();
    return std::nullopt;
}

void RecordingWriter::PutMessageIndexes() {
    if (m_chunk_lines > 0) {
        const RecordScope index(m_piece, Opcode::kMessageIndex);
        m_piece.Put(layout::kLinesChannel);
        m_piece.Put(static_cast<std::uint32_t>(m_chunk_lines * mcap::kIndexEntry));
        for (std::size_t i = 0; i < m_chunk_lines; ++i) {
            m_piece.Put(m_clock.TimeOf(m_chunk_first + i));
            m_piece.Put(static_cast<std::uint64_t>(i * m_line_size));
        }
    }
    if (!m_event_index.empty()) {
        const RecordScope index(m_piece, Opcode::kMessageIndex);
        m_piece.Put(layout::kEventsChannel);
        m_piece.Put(static_cast<std::uint32_t>(m_event_index.size() * mcap::kIndexEntry));
        for (const IndexEntry& entry : m_event_index) {
            m_piece.Put(entry.time);
            m_piece.Put(entry.offset);
        }
    }
}

void RecordingWriter::PutLevels() {
    m_levels.EndChunk(m_axis_levels, m_levels_head.whole);
    m_levels_head.chunk_offset = m_file_size;
    m_levels_head.first_line = m_chunk_first;
    m_levels_head.lines = static_cast<std::uint32_t>(m_chunk_lines);
    m_levels_head.axes = static_cast<std::uint16_t>(m_axes);
    const RecordScope levels(m_piece, Opcode::kExtremes);
    PutLevelsHead(m_piece, m_levels_head);
    for (const AxisLevels& axis : m_axis_levels) {
        PutAxisLevels(m_piece, axis);
    }
}

MaybeFault RecordingWriter::Write(Bytes bytes, std::uint32_t crc) {
    if (m_fault) {
        return m_fault;
    }
    if (!m_file.Append(bytes) || !Sync()) {
        return Failed();
    }
    m_file_crc = CombineCrc32(m_file_crc, crc, bytes.size());
    m_file_size += bytes.size();
    return std::nullopt;
}

Fault RecordingWriter::Failed() {
    m_fault = SystemFault(RecordingFault::kCannotWrite, "cannot write", m_path);
    m_file.Close();
    return *m_fault;
}

}  // namespace wavo::recording
