#include "recording/recording_index.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "recording/checksum.h"
#include "recording/layout.h"
#include "recording/utc_text.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

/// Steps from record to record touch little of a file.
constexpr std::size_t kStepWindow = 4096;
/// Schemas, channels and metadata that are larger are none.
constexpr std::uint64_t kLargestSmallRecord = std::uint64_t{1} << 24U;
/// Notices that are kept; a file with more wounds is damaged enough.
constexpr std::size_t kMostNotices = 1000;
/// Attachments that are looked at.
constexpr std::size_t kMostAttachments = 100;

std::map<std::string, std::string> ReadMetadataEntries(ByteReader& reader) {
    std::map<std::string, std::string> entries;
    ByteReader map(reader.TakeBytes(reader.Take<std::uint32_t>()));
    while (!map.AtEnd() && !map.Failed()) {
        const std::string key(map.TakeText());
        entries[key] = map.TakeText();
    }
    return entries;
}

}  // namespace

void RecordingIndex::NoticeLines(std::uint64_t first, std::uint64_t end, const std::string& what) {
    if (notices.size() >= kMostNotices) {
        return;
    }
    const std::string time = UtcText(LineClock(head.cycle_time, head.start_time).TimeOf(first));
    notices.push_back("lines " + std::to_string(first) + " to " + std::to_string(end - 1) + " (" +
                      time + ") " + what);
}

Bytes FileWindow::At(std::uint64_t offset, std::size_t size) {
    size = static_cast<std::size_t>(
        std::min<std::uint64_t>(size, m_file_size - std::min(offset, m_file_size)));
    if (offset < m_offset || offset + size > m_offset + m_bytes.size()) {
        m_bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(
            std::max(size, m_window_size), m_file_size - std::min(offset, m_file_size))));
        m_offset = offset;
        std::size_t count = 0;
        if (!platform::DataFiles().ReadAt(m_file.handle(), offset, m_bytes.data(), m_bytes.size(),
                                          count)) {
            count = 0;
        }
        m_bytes.resize(count);
        size = std::min(size, count);
    }
    return Bytes(m_bytes).subspan(static_cast<std::size_t>(offset - m_offset), size);
}

bool ReadChunkRecords(const RecordingFile& file, std::uint64_t offset, std::uint64_t length,
                      std::vector<std::byte>& records, ChunkHead& head) {
    if (length < mcap::kFraming + mcap::kChunkHead || length > kLargestChunkRead) {
        return false;
    }
    records.resize(static_cast<std::size_t>(length));
    if (!file.ReadAt(offset, records)) {
        return false;
    }
    ByteReader reader(records);
    const mcap::Framing framing = mcap::TakeFraming(reader);
    const std::uint64_t content = length - mcap::kFraming;
    if (framing.opcode != Opcode::kChunk || !ReadChunkHead(reader.Left(), content, head) ||
        !head.compression.empty() || head.records + head.size != content) {
        return false;
    }
    records.erase(records.begin(),
                  records.begin() + static_cast<std::ptrdiff_t>(mcap::kFraming + head.size));
    return head.crc == 0 || Crc32(records) == head.crc;
}

IndexReader::IndexReader(const RecordingFile& file, std::uint64_t file_size, std::string path,
                         RecordingIndex& index)
    : m_file(file),
      m_size(file_size),
      m_path(std::move(path)),
      m_index(index),
      m_window(file, file_size, kStepWindow) {}

MaybeFault IndexReader::ReadAll() {
    if (MaybeFault fault = CheckMagic()) {
        return fault;
    }
    ReadFront();
    if (ReadSummary()) {
        return std::nullopt;
    }
    m_index.table = ChunkTable();
    m_index.rests.clear();
    m_index.events.clear();
    if (!DecideHead()) {
        return NoLines();
    }
    Scan(m_behind_front);
    if (m_index.is_complete) {
        m_index.notices.insert(m_index.notices.begin(),
                               "the index at the end of the recording is missing or damaged");
    }
    if (m_index.table.Entries().empty() && !m_compression.empty()) {
        return NoLines();
    }
    return std::nullopt;
}

MaybeFault IndexReader::CheckMagic() {
    const Bytes bytes = m_window.At(0, mcap::kMagic.size());
    const std::string name = "\"" + m_path + "\" ";
    if (m_size == 0) {
        return MakeFault(RecordingFault::kNotRecording, name + "is empty");
    }
    if (bytes.empty()) {
        return SystemFault(RecordingFault::kCannotRead, "cannot read", m_path);
    }
    auto magic = mcap::kMagic;
    if (bytes.size() < magic.size()) {
        return std::memcmp(bytes.data(), magic.data(), bytes.size()) == 0
                   ? MakeFault(RecordingFault::kDamaged,
                               name + "was cut off before it says what it holds")
                   : MakeFault(RecordingFault::kNotRecording, name + "is not a recording");
    }
    const char version = static_cast<char>(bytes[mcap::kVersionPlace]);
    magic[mcap::kVersionPlace] = static_cast<unsigned char>(version);
    if (std::memcmp(bytes.data(), magic.data(), magic.size()) != 0) {
        return MakeFault(RecordingFault::kNotRecording, name + "is not a recording");
    }
    if (static_cast<unsigned char>(version) != mcap::kMagic[mcap::kVersionPlace]) {
        return MakeFault(RecordingFault::kUnsupported,
                         name + "is of another version of the container format");
    }
    return std::nullopt;
}

void IndexReader::ReadFront() {
    std::uint64_t offset = mcap::kMagic.size();
    for (;;) {
        m_behind_front = offset;
        ByteReader reader(m_window.At(offset, mcap::kFraming));
        const mcap::Framing framing = mcap::TakeFraming(reader);
        const std::uint64_t content = offset + mcap::kFraming;
        if (reader.Failed() || framing.length > m_size - content) {
            return;
        }
        switch (framing.opcode) {
            case Opcode::kChunk:
                m_first_chunk = offset;
                return;
            case Opcode::kHeader:
            case Opcode::kSchema:
            case Opcode::kChannel:
            case Opcode::kMetadata:
            case Opcode::kAttachment:
                TakeFrontRecord(framing, content);
                break;
            default:
                return;
        }
        offset = content + framing.length;
    }
}

void IndexReader::TakeFrontRecord(const mcap::Framing& framing, std::uint64_t content) {
    if (framing.opcode == Opcode::kAttachment) {
        TakeAttachment({content - mcap::kFraming, framing.length + mcap::kFraming});
        return;
    }
    if (framing.length > kLargestSmallRecord) {
        return;
    }
    const Bytes bytes = m_window.At(content, static_cast<std::size_t>(framing.length));
    if (framing.opcode == Opcode::kSchema) {
        m_index.channels.TakeSchema(bytes);
    } else if (framing.opcode == Opcode::kChannel) {
        m_index.channels.TakeChannel(bytes);
    } else if (framing.opcode == Opcode::kMetadata) {
        ByteReader reader(bytes);
        if (reader.TakeText() == layout::kMetadataName) {
            m_told_head = FromMetadata(ReadMetadataEntries(reader));
        }
    }
}

void IndexReader::TakeAttachment(const RecordingIndex::Place& place) {
    const bool is_known = std::any_of(
        m_index.attachments.begin(), m_index.attachments.end(),
        [&place](const RecordingIndex::Place& other) { return other.offset == place.offset; });
    if (!is_known && m_index.attachments.size() < kMostAttachments) {
        m_index.attachments.push_back(place);
    }
}

bool IndexReader::DecideHead() {
    if (m_told_head) {
        m_index.head = *m_told_head;
        m_index.head_is_own = true;
    } else if (!MakeUpHead()) {
        return false;
    }
    m_index.table = ChunkTable(m_index.head.axis_names.size());
    return true;
}

bool IndexReader::MakeUpHead() {
    std::vector<std::byte> records;
    ChunkContent content;
    if (m_first_chunk) {
        ByteReader reader(m_window.At(*m_first_chunk, mcap::kFraming));
        const mcap::Framing framing = mcap::TakeFraming(reader);
        ChunkHead head;
        if (ReadChunkRecords(m_file, *m_first_chunk, framing.length + mcap::kFraming, records,
                             head)) {
            TakeChannelsOf(records, m_index.channels);
        }
        m_compression = head.compression;
    }
    const std::vector<std::string>* const fields = m_index.channels.LineFields();
    if (fields == nullptr) {
        return false;
    }
    m_index.head = RecordingHead();
    m_index.head.axis_names = *fields;
    ReadChunkContent(records, fields->size(), m_index.channels, content);
    if (content.lines.size() > 1 && content.lines[0].time < content.lines[1].time) {
        const std::uint64_t cycle = content.lines[1].time - content.lines[0].time;
        const double seconds = static_cast<double>(cycle) * 1e-9;
        if (LineClock::CanRecord(seconds)) {
            m_index.head.cycle_time = seconds;
        }
    }
    if (!content.lines.empty()) {
        const std::uint64_t before =
            LineClock(m_index.head.cycle_time, 0).TimeOf(content.lines[0].sequence);
        m_index.head.start_time = content.lines[0].time - std::min(before, content.lines[0].time);
    }
    m_index.notices.emplace_back(
        "what the recording says of itself is missing or damaged: names and cycle time are taken "
        "from its lines");
    return true;
}

Fault IndexReader::NoLines() const {
    const std::string name = "\"" + m_path + "\" ";
    if (!m_compression.empty()) {
        return MakeFault(
            RecordingFault::kUnsupported,
            name + "is compressed (" + m_compression.substr(0, 20) + "), which cannot be read");
    }
    if (!m_first_chunk) {
        return MakeFault(RecordingFault::kDamaged,
                         name + "was cut off before it says what it holds");
    }
    return MakeFault(RecordingFault::kNotRecording,
                     name + "holds no lines: it has no channel \"lines\" of doubles");
}

void IndexReader::GoOn() {
    Scan(m_index.next_record);
}

}  // namespace wavo::recording
