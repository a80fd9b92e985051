// The end of a recording: the index of its chunks, with the extremes of each.
#include <algorithm>
#include <limits>

#include "recording/checksum.h"
#include "recording/layout.h"
#include "recording/mcap.h"
#include "recording/recording_writer.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;
using mcap::RecordScope;

/// The summary is written in pieces of this size.
constexpr std::size_t kSummaryPiece = std::size_t{1} << 20U;

/// Writes a summary piece by piece, and notes where its groups stand.
class SummaryWriter {
 public:
    SummaryWriter(RecordingFile& file, std::uint64_t start) : m_file(file), m_written(start) {}

    ByteWriter& out() { return m_out; }
    /// Offset in the file of what is put next.
    [[nodiscard]] std::uint64_t Offset() const { return m_written + m_out.size(); }
    [[nodiscard]] std::uint32_t Crc() const { return Crc32(m_out.View(), m_crc); }

    /// What was put since the last call is a group of records of this kind.
    void EndGroup(Opcode opcode) {
        if (Offset() > m_group_start) {
            const RecordScope offset(m_offsets, Opcode::kSummaryOffset);
            m_offsets.Put(static_cast<std::uint8_t>(opcode));
            m_offsets.Put(m_group_start);
            m_offsets.Put(Offset() - m_group_start);
        }
        m_group_start = Offset();
    }
    void PutOffsets() { m_out.PutBytes(m_offsets.View()); }

    bool FlushPiece() { return m_out.size() < kSummaryPiece || Flush(); }
    bool Flush() {
        m_crc = Crc();
        m_written += m_out.size();
        const bool is_written = m_file.Append(m_out.View());
        m_out.Clear();
        return is_written;
    }

 private:
    RecordingFile& m_file;
    ByteWriter m_out;
    ByteWriter m_offsets;
    std::uint64_t m_written;
    std::uint64_t m_group_start = m_written;
    std::uint32_t m_crc = 0;
};

}  // namespace

MaybeFault RecordingWriter::Finish() {
    if (MaybeFault fault = Keep()) {
        return fault;
    }
    if (!m_file.IsOpen()) {
        return std::nullopt;  // finished before
    }
    m_piece.Clear();
    {
        const RecordScope end(m_piece, Opcode::kDataEnd);
        m_piece.Put(m_file_crc);
    }
    if (!m_file.Append(m_piece.View())) {
        return Failed();
    }
    m_file_size += m_piece.size();
    return WriteSummary();
}

void RecordingWriter::PutStatistics(ByteWriter& out) const {
    std::uint64_t start = m_chunks.empty() ? 0 : std::numeric_limits<std::uint64_t>::max();
    std::uint64_t end = 0;
    for (const ChunkPlace& chunk : m_chunks) {
        start = std::min(start, chunk.start_time);
        end = std::max(end, chunk.end_time);
    }
    const RecordScope statistics(out, Opcode::kStatistics);
    out.Put(m_kept_lines + m_event_count);
    out.Put(std::uint16_t{2});  // schemas
    out.Put(std::uint32_t{2});  // channels
    out.Put(std::uint32_t{m_attachment_index.size() > 0 ? 1U : 0U});
    out.Put(std::uint32_t{1});  // metadata
    out.Put(static_cast<std::uint32_t>(m_chunks.size()));
    out.Put(start);
    out.Put(end);
    out.Put(static_cast<std::uint32_t>(2 * (sizeof(std::uint16_t) + sizeof(std::uint64_t))));
    out.Put(layout::kLinesChannel);
    out.Put(m_kept_lines);
    out.Put(layout::kEventsChannel);
    out.Put(m_event_count);
}

void RecordingWriter::PutChunkIndex(ByteWriter& out, const ChunkPlace& place) {
    const std::uint64_t records = place.length - mcap::kFraming - mcap::kChunkHead;
    const std::uint64_t indexes = place.offset + place.length;
    const RecordScope index(out, Opcode::kChunkIndex);
    out.Put(place.start_time);
    out.Put(place.end_time);
    out.Put(place.offset);
    out.Put(place.length);
    const std::size_t map = out.size();
    out.Put(std::uint32_t{0});
    if (place.lines > 0) {
        out.Put(layout::kLinesChannel);
        out.Put(indexes);
    }
    if (place.events > 0) {
        out.Put(layout::kEventsChannel);
        out.Put(indexes + layout::MessageIndexSize(place.lines));
    }
    out.PutAt(map, static_cast<std::uint32_t>(out.size() - map - sizeof(std::uint32_t)));
    out.Put(place.index_length);
    out.PutText("");
    out.Put(records);
    out.Put(records);
}

bool RecordingWriter::CopyLevelsHead(ByteWriter& out, const ChunkPlace& place) const {
    const RecordScope record(out, Opcode::kExtremes);
    const std::size_t size = LevelsHeadSize(m_axes, BlocksOf(place.lines));
    return m_file.ReadAt(place.offset + place.length + place.index_length + mcap::kFraming,
                         {out.Extend(size), size});
}

MaybeFault RecordingWriter::WriteSummary() {
    const std::uint64_t start = m_file_size;
    SummaryWriter summary(m_file, start);
    layout::PutSchemas(summary.out(), m_axis_names);
    summary.EndGroup(Opcode::kSchema);
    layout::PutChannels(summary.out());
    summary.EndGroup(Opcode::kChannel);
    PutStatistics(summary.out());
    summary.EndGroup(Opcode::kStatistics);
    for (const ChunkPlace& chunk : m_chunks) {
        PutChunkIndex(summary.out(), chunk);
        if (!summary.FlushPiece()) {
            return Failed();
        }
    }
    summary.EndGroup(Opcode::kChunkIndex);
    summary.out().PutBytes(m_attachment_index.View());
    summary.EndGroup(Opcode::kAttachmentIndex);
    {
        const RecordScope index(summary.out(), Opcode::kMetadataIndex);
        summary.out().Put(m_metadata_offset);
        summary.out().Put(m_metadata_length);
        summary.out().PutText(layout::kMetadataName);
    }
    summary.EndGroup(Opcode::kMetadataIndex);
    for (const ChunkPlace& chunk : m_chunks) {
        if (!CopyLevelsHead(summary.out(), chunk) || !summary.FlushPiece()) {
            return Failed();
        }
    }
    summary.EndGroup(Opcode::kExtremes);
    const std::uint64_t offsets = summary.Offset();
    summary.PutOffsets();
    ByteWriter& out = summary.out();
    out.Put(static_cast<std::uint8_t>(Opcode::kFooter));
    out.Put(static_cast<std::uint64_t>(mcap::kFooterContent));
    out.Put(start);
    out.Put(offsets);
    out.Put(summary.Crc());
    out.PutBytes(mcap::kMagic.data(), mcap::kMagic.size());
    m_file_size = summary.Offset();
    if (!summary.Flush() || !Sync() || !m_file.Close()) {
        return Failed();
    }
    return std::nullopt;
}

}  // namespace wavo::recording
