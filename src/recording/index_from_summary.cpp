// The index of a recording from the summary at its end.
#include <algorithm>
#include <cstring>

#include "recording/checksum.h"
#include "recording/recording_index.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

/// A summary is read in pieces of this size.
constexpr std::size_t kSummaryWindow = std::size_t{1} << 20U;
/// Larger records do not belong into a summary.
constexpr std::uint64_t kLargestSummaryRecord = std::uint64_t{1} << 26U;
/// Footer's content in front of its CRC.
constexpr std::size_t kFooterChecked = 16;

/// Calls `take(framing, content)` for each record from `start` to `end`. False when one does not
/// fit, or `take` says so.
template <typename Take>
bool ForEachRecord(const RecordingFile& file, std::uint64_t start, std::uint64_t end, Take take) {
    FileWindow window(file, end, kSummaryWindow);
    while (start < end) {
        ByteReader reader(window.At(start, mcap::kFraming));
        const mcap::Framing framing = mcap::TakeFraming(reader);
        start += mcap::kFraming;
        if (reader.Failed() || framing.length > end - start ||
            framing.length > kLargestSummaryRecord) {
            return false;
        }
        const Bytes content = window.At(start, static_cast<std::size_t>(framing.length));
        if (content.size() != framing.length || !take(framing, content)) {
            return false;
        }
        start += framing.length;
    }
    return true;
}

}  // namespace

bool IndexReader::FindSummary(std::uint64_t& start, std::uint64_t& end) {
    constexpr std::size_t kDataEnd = mcap::kFraming + sizeof(std::uint32_t);
    if (m_size < mcap::kMagic.size() + kDataEnd + mcap::kTail) {
        return false;
    }
    end = m_size - mcap::kTail;
    const Bytes tail = m_window.At(end, mcap::kTail);
    ByteReader reader(tail);
    const mcap::Framing framing = mcap::TakeFraming(reader);
    start = reader.Take<std::uint64_t>();
    const auto offsets = reader.Take<std::uint64_t>();
    const auto crc = reader.Take<std::uint32_t>();
    if (reader.Failed() || framing.opcode != Opcode::kFooter ||
        framing.length != mcap::kFooterContent || start < mcap::kMagic.size() + kDataEnd ||
        start > end || (offsets != 0 && (offsets < start || offsets > end)) ||
        std::memcmp(reader.Left().data(), mcap::kMagic.data(), mcap::kMagic.size()) != 0) {
        return false;
    }
    ByteReader data_end(m_window.At(start - kDataEnd, mcap::kFraming));
    const mcap::Framing before = mcap::TakeFraming(data_end);
    if (before.opcode != Opcode::kDataEnd || before.length != sizeof(std::uint32_t)) {
        return false;
    }
    const std::uint64_t summary_end = offsets != 0 ? offsets : end;
    if (!SummaryCrcIsRight(start, crc)) {
        return false;
    }
    end = summary_end;
    return true;
}

bool IndexReader::SummaryCrcIsRight(std::uint64_t start, std::uint32_t crc) {
    if (crc == 0) {
        return true;  // none was computed
    }
    const std::uint64_t end = m_size - mcap::kTail + mcap::kFraming + kFooterChecked;
    std::uint32_t found = 0;
    FileWindow window(m_file, end, kSummaryWindow);
    while (start < end) {
        const Bytes piece = window.At(start, kSummaryWindow);
        if (piece.empty()) {
            return false;
        }
        found = Crc32(piece, found);
        start += piece.size();
    }
    return found == crc;
}

bool IndexReader::ReadSummary() {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    if (!FindSummary(start, end) || !CollectSummary(start, end) || !DecideHead()) {
        return false;
    }
    m_index.is_complete = true;
    m_index.next_record = m_size;
    AddChunks(start, end);
    return m_index.table.Entries().size() > 0 || m_compression.empty();
}

bool IndexReader::CollectSummary(std::uint64_t start, std::uint64_t end) {
    m_chunks.clear();
    const bool is_whole =
        ForEachRecord(m_file, start, end, [this](const mcap::Framing& framing, Bytes content) {
            switch (framing.opcode) {
                case Opcode::kSchema:
                    m_index.channels.TakeSchema(content);
                    return true;
                case Opcode::kChannel:
                    m_index.channels.TakeChannel(content);
                    return true;
                case Opcode::kChunkIndex:
                    return TakeChunkIndex(content);
                case Opcode::kMetadataIndex: {
                    // Metadata need not stand in front of the first chunk.
                    ByteReader reader(content);
                    const auto offset = reader.Take<std::uint64_t>();
                    ByteReader place(m_window.At(offset, mcap::kFraming));
                    const mcap::Framing metadata = mcap::TakeFraming(place);
                    if (!m_told_head && !place.Failed() && metadata.opcode == Opcode::kMetadata &&
                        metadata.length <= m_size - offset - mcap::kFraming) {
                        TakeFrontRecord(metadata, offset + mcap::kFraming);
                    }
                    return true;
                }
                case Opcode::kAttachmentIndex: {
                    ByteReader reader(content);
                    TakeAttachment({reader.Take<std::uint64_t>(), reader.Take<std::uint64_t>()});
                    return true;
                }
                case Opcode::kStatistics:
                    return true;
                default:
                    return framing.opcode >= Opcode::kExtremes;
            }
        });
    std::sort(m_chunks.begin(), m_chunks.end(),
              [](const ChunkInFile& a, const ChunkInFile& b) { return a.offset < b.offset; });
    // A file with chunks that the summary does not tell of is searched through.
    const bool tells_all = !m_first_chunk || !m_chunks.empty();
    return is_whole && tells_all &&
           std::adjacent_find(m_chunks.begin(), m_chunks.end(),
                              [](const ChunkInFile& a, const ChunkInFile& b) {
                                  return a.offset + a.length > b.offset;
                              }) == m_chunks.end();
}

bool IndexReader::TakeChunkIndex(Bytes content) {
    ByteReader reader(content);
    ChunkInFile chunk;
    reader.Take<std::uint64_t>();  // times, which the lines have too
    reader.Take<std::uint64_t>();
    chunk.offset = reader.Take<std::uint64_t>();
    chunk.length = reader.Take<std::uint64_t>();
    reader.TakeText();  // the places of the message indexes; like a text it has its length in front
    chunk.index_length = reader.Take<std::uint64_t>();
    chunk.head.compression = reader.TakeText();
    reader.Take<std::uint64_t>();
    chunk.head.records = reader.Take<std::uint64_t>();
    chunk.head.size = mcap::kChunkHead + chunk.head.compression.size();
    const bool is_sound = !reader.Failed() && chunk.offset >= mcap::kMagic.size() &&
                          chunk.offset < m_size && chunk.length <= m_size - chunk.offset &&
                          chunk.length >= mcap::kFraming + chunk.head.size &&
                          chunk.index_length <= m_size - chunk.offset - chunk.length;
    if (is_sound) {
        m_chunks.push_back(std::move(chunk));
    }
    return is_sound;
}

void IndexReader::AddChunks(std::uint64_t start, std::uint64_t end) {
    std::size_t next = 0;
    LevelsHead head;
    ForEachRecord(m_file, start, end, [&](const mcap::Framing& framing, Bytes content) {
        if (framing.opcode != Opcode::kExtremes || !ReadLevelsHead(content, head)) {
            return true;
        }
        while (next < m_chunks.size() && m_chunks[next].offset < head.chunk_offset) {
            AddChunkFromFile(m_chunks[next++]);
        }
        if (next < m_chunks.size() && m_chunks[next].offset == head.chunk_offset) {
            const ChunkInFile& chunk = m_chunks[next++];
            AddRegular(chunk, head,
                       chunk.offset + chunk.length + chunk.index_length + mcap::kFraming);
        }
        return true;
    });
    while (next < m_chunks.size()) {
        AddChunkFromFile(m_chunks[next++]);
    }
}

void IndexReader::AddChunkFromFile(const ChunkInFile& chunk) {
    const std::uint64_t behind = chunk.offset + chunk.length + chunk.index_length;
    ByteReader reader(m_window.At(behind, mcap::kFraming));
    const mcap::Framing framing = mcap::TakeFraming(reader);
    LevelsHead head;
    if (!reader.Failed() && framing.opcode == Opcode::kExtremes &&
        ReadLevelsHeadAt(behind + mcap::kFraming, framing.length, head) &&
        head.chunk_offset == chunk.offset) {
        AddRegular(chunk, head, behind + mcap::kFraming);
    } else {
        AddPlain(chunk);
    }
}

}  // namespace wavo::recording
