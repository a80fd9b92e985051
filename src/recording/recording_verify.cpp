#include "recording/recording_verify.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "recording/checksum.h"
#include "recording/chunk_content.h"
#include "recording/layout.h"
#include "recording/levels.h"
#include "recording/mcap.h"
#include "recording/recording_file.h"
#include "recording/recording_reader.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

constexpr std::size_t kMostFindings = 100;
constexpr std::size_t kVerifyPiece = std::size_t{1} << 20U;

/// Goes through a file once, record by record.
class Verifier {
 public:
    Verifier(RecordingFile file, std::uint64_t size, RecordingReader& reader,
             const VerifyProgress& progress, VerifyReport& report)
        : m_file(std::move(file)),
          m_size(size),
          m_axes(reader.Head().axis_names.size()),
          m_reader(reader),
          m_progress(progress),
          m_report(report),
          m_levels(m_axes, reader.Head().cycle_time) {}

    void Run() {
        std::uint64_t offset = mcap::kMagic.size();
        TakeCrc(0, offset);
        while (offset < m_size && (!m_progress || m_progress(offset, m_size))) {
            const std::optional<std::uint64_t> next = Record(offset);
            if (!next) {
                break;
            }
            offset = *next;
        }
        EndChunk();
    }

 private:
    void Find(std::uint64_t offset, const std::string& what) {
        if (m_report.findings.size() < kMostFindings) {
            m_report.findings.push_back("byte " + std::to_string(offset) + ": " + what);
        }
    }

    /// Adds a stretch of the file to the CRC of the data section.
    void TakeCrc(std::uint64_t from, std::uint64_t to) {
        std::vector<std::byte> piece;
        while (from < to) {
            piece.resize(
                static_cast<std::size_t>(std::min<std::uint64_t>(kVerifyPiece, to - from)));
            if (!m_file.ReadAt(from, piece)) {
                Find(from, "cannot be read");
                return;
            }
            m_crc = Crc32(piece, m_crc);
            from += piece.size();
        }
    }

    /// The place of the next record; nothing at the end of the data section, or of what is whole.
    std::optional<std::uint64_t> Record(std::uint64_t offset) {
        std::vector<std::byte> bytes(mcap::kFraming);
        if (!m_file.ReadAt(offset, bytes)) {
            return std::nullopt;
        }
        ByteReader reader(bytes);
        const mcap::Framing framing = mcap::TakeFraming(reader);
        const std::uint64_t content = offset + mcap::kFraming;
        if (framing.opcode == Opcode{} || framing.length > m_size - content) {
            if (m_reader.IsComplete()) {
                Find(offset, "no record begins here");
            }
            return std::nullopt;
        }
        const std::uint64_t next = content + framing.length;
        if (framing.opcode == Opcode::kDataEnd) {
            DataEnd(content);
            return std::nullopt;
        }
        TakeCrc(offset, next);
        if (framing.length <= kLargestChunkRead) {
            bytes.resize(static_cast<std::size_t>(framing.length));
            if (m_file.ReadAt(content, bytes)) {
                Content(framing.opcode, offset, bytes);
            }
        }
        return next;
    }

    void Content(Opcode opcode, std::uint64_t offset, Bytes bytes) {
        switch (opcode) {
            case Opcode::kSchema:
                m_channels.TakeSchema(bytes);
                break;
            case Opcode::kChannel:
                m_channels.TakeChannel(bytes);
                break;
            case Opcode::kChunk:
                EndChunk();
                Chunk(offset, bytes);
                break;
            case Opcode::kMessageIndex:
                MessageIndex(offset, bytes);
                break;
            case Opcode::kExtremes:
                Levels(offset, bytes);
                break;
            case Opcode::kAttachment:
                Attachment(offset, bytes);
                break;
            default:
                break;
        }
    }

    void Chunk(std::uint64_t offset, Bytes content) {
        ChunkHead head;
        m_chunk_offset = offset;
        m_is_whole = false;
        m_content = {};
        if (!ReadChunkHead(content, content.size(), head) || !head.agrees) {
            Find(offset, "the lengths of the chunk do not agree");
            return;
        }
        if (!head.compression.empty()) {
            Find(offset, "the chunk is compressed, which cannot be read");
            return;
        }
        const Bytes records = content.subspan(head.size);
        if (head.crc != 0 && Crc32(records) != head.crc) {
            Find(offset, "the chunk is damaged: its CRC is wrong");
            return;
        }
        if (!ReadChunkContent(records, m_axes, m_channels, m_content)) {
            Find(offset, "the chunk holds what cannot be");
            return;
        }
        m_records.assign(records.begin(), records.end());
        m_is_whole = true;
        ++m_report.chunks;
        m_report.lines += m_content.lines.size();
        Times(offset, content);
    }

    /// The times of the chunk, and the numbers and times of its lines.
    void Times(std::uint64_t offset, Bytes content) {
        ByteReader reader(content);
        const auto start = reader.Take<std::uint64_t>();
        const auto end = reader.Take<std::uint64_t>();
        for (const ChunkContent::Line& line : m_content.lines) {
            if (line.time < start || line.time > end) {
                Find(offset, "a line stands outside of the times of its chunk");
                return;
            }
        }
    }

    void MessageIndex(std::uint64_t offset, Bytes content) {
        ByteReader reader(content);
        const auto channel = reader.Take<std::uint16_t>();
        ByteReader entries(reader.TakeBytes(reader.Take<std::uint32_t>()));
        if (!m_is_whole) {
            return;
        }
        while (!entries.AtEnd() && !reader.Failed()) {
            const auto time = entries.Take<std::uint64_t>();
            const auto place = entries.Take<std::uint64_t>();
            ByteReader message(Bytes(m_records).subspan(
                static_cast<std::size_t>(std::min<std::uint64_t>(place, m_records.size()))));
            const mcap::Framing framing = mcap::TakeFraming(message);
            const auto its_channel = message.Take<std::uint16_t>();
            message.Take<std::uint32_t>();
            if (entries.Failed() || framing.opcode != Opcode::kMessage || its_channel != channel ||
                message.Take<std::uint64_t>() != time || message.Failed()) {
                Find(offset, "the message index does not fit its chunk");
                return;
            }
        }
    }

    void Levels(std::uint64_t offset, Bytes content) {
        LevelsHead head;
        const std::size_t size = LevelsHeadSizeOf(content);
        if (!ReadLevelsHead(content, head)) {
            Find(offset, "the levels are damaged: the CRC of their head is wrong");
            return;
        }
        const std::size_t blocks = BlocksOf(head.lines);
        if (head.chunk_offset != m_chunk_offset || head.axes != m_axes ||
            content.size() < size + m_axes * AxisLevelsSize(blocks)) {
            Find(offset, "the levels do not belong to the chunk before them");
            return;
        }
        std::vector<AxisLevels> axes(m_axes);
        for (std::size_t axis = 0; axis < m_axes; ++axis) {
            if (!ReadAxisLevels(
                    content.subspan(size + axis * AxisLevelsSize(blocks), AxisLevelsSize(blocks)),
                    blocks, axes[axis])) {
                Find(offset, "the levels are damaged: a CRC is wrong");
                return;
            }
        }
        if (m_is_whole) {
            CompareLevels(offset, head, axes);
        }
    }

    void CompareLevels(std::uint64_t offset, const LevelsHead& head,
                       const std::vector<AxisLevels>& axes) {
        const LineClock& clock = m_reader.Clock();
        if (head.lines != m_content.lines.size() ||
            m_records.size() < head.lines * mcap::LineSize(m_axes)) {
            Find(offset, "the levels tell of other lines than the chunk has");
            return;
        }
        if (head.lines > 0 && m_next_line > head.first_line) {
            Find(m_chunk_offset, "the lines go back in time");
        }
        for (std::size_t i = 0; i < m_content.lines.size(); ++i) {
            const ChunkContent::Line& line = m_content.lines[i];
            if (line.sequence != static_cast<std::uint32_t>(head.first_line + i) ||
                line.time != clock.TimeOf(head.first_line + i)) {
                Find(m_chunk_offset, "the lines are not one per cycle");
                return;
            }
        }
        const std::size_t block_size = kLinesPerBlock * mcap::LineSize(m_axes);
        const Bytes lines = Bytes(m_records).first(head.lines * mcap::LineSize(m_axes));
        for (std::size_t block = 0; block < head.block_crcs.size(); ++block) {
            if (Crc32(lines.subspan(block * block_size,
                                    std::min(block_size, lines.size() - block * block_size))) !=
                head.block_crcs[block]) {
                Find(offset, "the CRC of a block of lines does not fit");
                return;
            }
        }
        if (Crc32(Bytes(m_records).subspan(lines.size())) != head.rest_crc) {
            Find(offset, "the CRC of the events does not fit");
        }
        MakeLevels(head);
        std::vector<AxisLevels> made;
        std::vector<Level> whole;
        m_levels.EndChunk(made, whole);
        m_levels_made = true;
        // Behind a chunk that is damaged derivatives cannot be compared.
        if (m_history_is_known && (made != axes || whole != head.whole)) {
            Find(offset, "the levels are not those of the lines");
        }
    }

    void MakeLevels(const LevelsHead& head) {
        m_history_is_known = !m_is_behind_damage || head.first_line != m_next_line;
        if (head.first_line != m_next_line || m_is_behind_damage) {
            m_levels.ForgetHistory();
        }
        for (const ChunkContent::Line& line : m_content.lines) {
            m_levels.Take(m_records.data() + line.place, 0, 1);
        }
        m_next_line = head.lines > 0 ? head.first_line + head.lines : m_next_line;
        m_is_behind_damage = false;
    }

    /// What follows belongs to another chunk.
    void EndChunk() {
        if (m_chunk_offset != 0 && !m_levels_made) {
            m_is_behind_damage = true;
        }
        m_levels_made = false;
        m_is_whole = false;
    }

    void Attachment(std::uint64_t offset, Bytes content) {
        constexpr std::size_t kCrc = sizeof(std::uint32_t);
        if (content.size() < kCrc) {
            return;
        }
        ByteReader crc(content.last(kCrc));
        const auto told = crc.Take<std::uint32_t>();
        if (told != 0 && told != Crc32(content.first(content.size() - kCrc))) {
            Find(offset, "the attachment is damaged: its CRC is wrong");
        }
    }

    void DataEnd(std::uint64_t content) {
        std::vector<std::byte> bytes(sizeof(std::uint32_t));
        if (!m_file.ReadAt(content, bytes)) {
            return;
        }
        ByteReader reader(bytes);
        const auto told = reader.Take<std::uint32_t>();
        if (told != 0 && told != m_crc) {
            Find(content, "the file is damaged: the CRC of its data is wrong");
        }
    }

    const RecordingFile m_file;
    const std::uint64_t m_size;
    const std::size_t m_axes;
    RecordingReader& m_reader;
    const VerifyProgress& m_progress;
    VerifyReport& m_report;

    std::uint32_t m_crc = 0;
    Channels m_channels;
    std::uint64_t m_chunk_offset = 0;  // of the last chunk; 0: there was none
    bool m_is_whole = false;           // that chunk
    ChunkContent m_content;
    std::vector<std::byte> m_records;
    LevelBuilder m_levels;
    std::uint64_t m_next_line = 0;
    bool m_is_behind_damage = false;
    bool m_history_is_known = true;
    bool m_levels_made = false;
};

}  // namespace

Expected<VerifyReport> VerifyRecording(const std::string& path, const VerifyProgress& progress) {
    Expected<std::unique_ptr<RecordingReader>> reader = RecordingReader::Open(path);
    if (!reader) {
        return reader.Why();
    }
    RecordingFile file(platform::DataFiles().OpenForReading(path));
    VerifyReport report;
    if (!file.IsOpen() || !platform::DataFiles().Size(file.handle(), report.bytes)) {
        return SystemFault(RecordingFault::kCannotOpen, "cannot open", path);
    }
    report.findings = (*reader)->Notices();
    report.is_complete = (*reader)->IsComplete();
    report.cut_off = (*reader)->CutOffText();
    Verifier(std::move(file), report.bytes, **reader, progress, report).Run();
    return report;
}

}  // namespace wavo::recording
