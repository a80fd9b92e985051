#include "recording/recording_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "recording/checksum.h"
#include "recording/layout.h"
#include "recording/mcap.h"
#include "recording/utc_text.h"
#include "source/derivation.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

constexpr char kDamagedLines[] = "are damaged and left out";
constexpr std::uint64_t kLargestAttachment = std::uint64_t{1} << 26U;

}  // namespace

RecordingReader::RecordingReader(RecordingFile file, std::string path)
    : m_file(std::move(file)), m_path(std::move(path)) {}

Expected<std::unique_ptr<RecordingReader>> RecordingReader::Open(const std::string& path) {
    RecordingFile file(platform::DataFiles().OpenForReading(path));
    if (!file.IsOpen()) {
        return SystemFault(RecordingFault::kCannotOpen, "cannot open", path);
    }
    std::uint64_t size = 0;
    if (!platform::DataFiles().Size(file.handle(), size)) {
        return SystemFault(RecordingFault::kCannotRead, "cannot read", path);
    }
    std::unique_ptr<RecordingReader> reader(new RecordingReader(std::move(file), path));
    if (MaybeFault fault = IndexReader(reader->m_file, size, path, reader->m_index).ReadAll()) {
        return *fault;
    }
    reader->m_clock = LineClock(reader->Head().cycle_time, reader->Head().start_time);
    return reader;
}

std::uint64_t RecordingReader::FirstLine() const {
    const auto& entries = m_index.table.Entries();
    return entries.empty() ? 0 : entries.front().first_line;
}

std::uint64_t RecordingReader::EndLine() const {
    const auto& entries = m_index.table.Entries();
    return entries.empty() ? 0 : entries.back().EndLine();
}

std::uint64_t RecordingReader::LineCount() const {
    return m_index.table.CountLines(FirstLine(), EndLine());
}

std::vector<LineSpan> RecordingReader::Gaps() const {
    std::vector<LineSpan> gaps;
    const ChunkEntry* before = nullptr;
    for (const ChunkEntry& entry : m_index.table.Entries()) {
        if (before != nullptr && before->EndLine() < entry.first_line) {
            gaps.push_back({before->EndLine(), entry.first_line});
        }
        before = &entry;
    }
    return gaps;
}

std::string RecordingReader::CutOffText() const {
    if (m_index.is_complete) {
        return {};
    }
    if (m_index.table.Entries().empty()) {
        return "recording was cut off before its first line";
    }
    return "recording was cut off at " + UtcText(m_clock.TimeOf(EndLine())) + ", behind line " +
           std::to_string(EndLine() - 1);
}

bool RecordingReader::Refresh() {
    std::uint64_t size = 0;
    if (m_index.is_complete || !platform::DataFiles().Size(m_file.handle(), size)) {
        return false;
    }
    const std::uint64_t version = m_index.table.Version();
    const std::size_t rests = m_index.rests.size();
    IndexReader(m_file, size, m_path, m_index).GoOn();
    m_settled_version = 0;
    return m_index.is_complete || m_index.table.Version() != version ||
           m_index.rests.size() != rests;
}

bool RecordingReader::IsFile(const std::string& path) const {
    return platform::DataFiles().IsNamed(m_file.handle(), path);
}

void RecordingReader::LoseChunk(std::size_t index) {
    const ChunkEntry& entry = m_index.table.Entries()[index];
    m_index.NoticeLines(entry.first_line, entry.EndLine(), kDamagedLines);
    m_index.table.Remove(index);
    ++m_losses;
    m_levels.Clear();  // those of the next entry begin anew
    if (m_lost) {
        m_lost();
    }
}

const RecordingReader::Block* RecordingReader::LoadBlock(std::size_t index, std::size_t block) {
    ChunkEntry& entry = m_index.table.At(index);
    // What is damaged leaves the table, so a key stands for what it stood for.
    if (const Block* const found = m_blocks.Find(entry.offset + entry.skipped, block)) {
        return found;
    }
    const Block* loaded = nullptr;
    if (entry.is_checked || CheckChunk(entry)) {
        entry.is_checked = true;
        loaded = entry.is_regular ? LoadRegularBlock(entry, block) : LoadPlainBlock(entry, block);
    }
    if (loaded == nullptr) {
        LoseChunk(index);
    }
    return loaded;
}

bool RecordingReader::CheckChunk(ChunkEntry& entry) {
    m_bytes.resize(mcap::kFraming + mcap::kChunkHead);
    if (!m_file.ReadAt(entry.offset, m_bytes)) {
        return false;
    }
    ByteReader reader(m_bytes);
    const mcap::Framing framing = mcap::TakeFraming(reader);
    ChunkHead head;
    return framing.opcode == Opcode::kChunk &&
           ReadChunkHead(reader.Left(), entry.length - mcap::kFraming, head) &&
           head.compression.empty() && head.records + head.size + mcap::kFraming == entry.length;
}

bool RecordingReader::LineIsRight(const std::byte* message, std::uint64_t line) const {
    const std::size_t size = mcap::LineSize(Head().axis_names.size());
    ByteReader reader(Bytes(message, size));
    const mcap::Framing framing = mcap::TakeFraming(reader);
    const auto channel = reader.Take<std::uint16_t>();
    const auto sequence = reader.Take<std::uint32_t>();
    const auto time = reader.Take<std::uint64_t>();
    return framing.opcode == Opcode::kMessage && framing.length == size - mcap::kFraming &&
           channel == layout::kLinesChannel && sequence == static_cast<std::uint32_t>(line) &&
           (!m_index.head_is_own || time == m_clock.TimeOf(line));
}

const RecordingReader::Block* RecordingReader::LoadRegularBlock(const ChunkEntry& entry,
                                                                std::size_t block) {
    const std::size_t axes = Head().axis_names.size();
    const std::size_t line_size = mcap::LineSize(axes);
    const std::size_t begin = block * kLinesPerBlock;
    const std::size_t lines = std::min<std::size_t>(kLinesPerBlock, entry.lines - begin);
    m_bytes.resize(lines * line_size);
    m_bytes_read += m_bytes.size();
    if (!m_file.ReadAt(entry.offset + mcap::kFraming + mcap::kChunkHead + begin * line_size,
                       m_bytes) ||
        Crc32(m_bytes) != m_index.table.BlockCrc(entry, block)) {
        return nullptr;
    }
    Block values(lines * axes);
    for (std::size_t i = 0; i < lines; ++i) {
        const std::byte* const message = m_bytes.data() + i * line_size;
        if (!LineIsRight(message, entry.first_line + begin + i)) {
            return nullptr;
        }
        if (axes > 0) {
            std::memcpy(&values[i * axes], message + line_size - axes * sizeof(double),
                        axes * sizeof(double));
        }
    }
    const std::size_t bytes = values.size() * sizeof(double) + sizeof(Block);
    return &m_blocks.Put(entry.offset, block, std::move(values), bytes);
}

const RecordingReader::Block* RecordingReader::LoadPlainBlock(const ChunkEntry& entry,
                                                              std::size_t block) {
    const std::size_t axes = Head().axis_names.size();
    ChunkHead head;
    ChunkContent content;
    m_bytes_read += entry.length;
    if (!ReadChunkRecords(m_file, entry.offset, entry.length, m_bytes, head) ||
        !ReadChunkContent(m_bytes, axes, m_index.channels, content) ||
        content.lines.size() < std::size_t{entry.skipped} + entry.lines) {
        return nullptr;
    }
    const Block* wanted = nullptr;
    // The one that is asked for comes last, so that it stays whatever the cache's limit.
    const std::size_t blocks = BlocksOf(entry.lines);
    for (std::size_t step = 1; step <= blocks; ++step) {
        const std::size_t at = (block + step) % blocks;
        const std::size_t begin = at * kLinesPerBlock;
        const std::size_t lines = std::min<std::size_t>(kLinesPerBlock, entry.lines - begin);
        Block values(lines * axes);
        for (std::size_t i = 0; i < lines && axes > 0; ++i) {
            std::memcpy(&values[i * axes],
                        m_bytes.data() + content.lines[entry.skipped + begin + i].place,
                        axes * sizeof(double));
        }
        const std::size_t bytes = values.size() * sizeof(double) + sizeof(Block);
        wanted = &m_blocks.Put(entry.offset + entry.skipped, at, std::move(values), bytes);
    }
    return wanted;
}

void RecordingReader::ReadRaw(std::size_t axis, std::uint64_t first, std::span<double> values,
                              std::span<std::uint8_t> are_there) {
    const std::size_t axes = Head().axis_names.size();
    std::fill(are_there.begin(), are_there.end(), std::uint8_t{0});
    const std::uint64_t end = first + values.size();
    std::uint64_t line = first;
    while (line < end) {
        const std::size_t index = m_index.table.Find(line);
        if (index == m_index.table.Entries().size()) {
            return;
        }
        const ChunkEntry& entry = m_index.table.Entries()[index];
        line = std::max(line, entry.first_line);
        if (line >= end) {
            return;
        }
        const auto in_entry = static_cast<std::size_t>(line - entry.first_line);
        const Block* const block = LoadBlock(index, in_entry / kLinesPerBlock);
        if (block == nullptr) {
            continue;  // the entry is gone
        }
        const std::size_t in_block = in_entry % kLinesPerBlock;
        const std::size_t count = static_cast<std::size_t>(
            std::min<std::uint64_t>(block->size() / axes - in_block, end - line));
        for (std::size_t i = 0; i < count; ++i) {
            values[line - first + i] = (*block)[(in_block + i) * axes + axis];
            are_there[line - first + i] = 1;
        }
        line += count;
    }
}

void RecordingReader::ReadStream(std::size_t axis, std::int32_t order, std::uint64_t first,
                                 std::span<double> values, std::span<std::uint8_t> are_there) {
    if (order == 0) {
        ReadRaw(axis, first, values, are_there);
        return;
    }
    const auto history = static_cast<std::size_t>(order);
    // Before line 0 there is nothing.
    const auto before = static_cast<std::size_t>(std::min<std::uint64_t>(history, first));
    std::vector<double> raw(before + values.size());
    std::vector<std::uint8_t> raw_there(raw.size());
    ReadRaw(axis, first - before, raw, raw_there);
    const double divisor = DerivationDivisor(Head().cycle_time, order);
    std::size_t successive = 0;  // lines that are there, up to the present one
    for (std::size_t i = 0; i < raw.size(); ++i) {
        successive = raw_there[i] != 0 ? successive + 1 : 0;
        if (i < before) {
            continue;
        }
        const bool is_there = successive > history;
        are_there[i - before] = is_there ? 1 : 0;
        if (is_there) {
            values[i - before] = Derive(std::span(raw).subspan(i - history, history + 1), divisor);
        }
    }
}

void RecordingReader::ReadValues(std::size_t axis, std::int32_t order, std::uint64_t first,
                                 double absent, std::span<double> out) {
    std::vector<std::uint8_t> are_there(out.size());
    ReadStream(axis, order, first, out, are_there);
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (are_there[i] == 0) {
            out[i] = absent;
        }
    }
}

bool RecordingReader::ReadLine(std::uint64_t line, std::span<double> out) {
    const std::size_t index = m_index.table.Find(line);
    if (index == m_index.table.Entries().size() ||
        m_index.table.Entries()[index].first_line > line) {
        return false;
    }
    const auto in_entry =
        static_cast<std::size_t>(line - m_index.table.Entries()[index].first_line);
    const Block* const block = LoadBlock(index, in_entry / kLinesPerBlock);
    if (block == nullptr) {
        return false;
    }
    const std::size_t axes = Head().axis_names.size();
    std::copy_n(block->begin() + static_cast<std::ptrdiff_t>(in_entry % kLinesPerBlock * axes),
                axes, out.begin());
    return true;
}

const std::vector<Event>& RecordingReader::Events() {
    for (; m_events_read < m_index.rests.size(); ++m_events_read) {
        const RecordingIndex::Rest& rest = m_index.rests[m_events_read];
        m_events_sorted = false;
        if (rest.size > kLargestChunkRead) {
            continue;
        }
        m_bytes.resize(static_cast<std::size_t>(rest.size));
        if (!m_file.ReadAt(rest.offset, m_bytes) || Crc32(m_bytes) != rest.crc) {
            m_index.notices.push_back("events at byte " + std::to_string(rest.offset) +
                                      " are damaged and left out");
            continue;
        }
        ByteReader reader(m_bytes);
        while (!reader.AtEnd()) {
            const mcap::Framing framing = mcap::TakeFraming(reader);
            const Bytes message = reader.TakeBytes(framing.length);
            if (Event event;
                framing.opcode == Opcode::kMessage && ReadEventMessage(message, event)) {
                m_events.push_back(std::move(event));
            }
        }
    }
    if (!m_index.events.empty()) {
        m_events.insert(m_events.end(), m_index.events.begin(), m_index.events.end());
        m_index.events.clear();
        m_events_sorted = false;
    }
    if (!m_events_sorted) {
        std::stable_sort(m_events.begin(), m_events.end(),
                         [](const Event& a, const Event& b) { return a.line < b.line; });
        m_events_sorted = true;
    }
    return m_events;
}

std::optional<GraphFile> RecordingReader::ReadGraphFile() {
    for (const RecordingIndex::Place& place : m_index.attachments) {
        if (place.length < mcap::kFraming || place.length > kLargestAttachment) {
            continue;
        }
        m_bytes.resize(static_cast<std::size_t>(place.length));
        if (!m_file.ReadAt(place.offset, m_bytes) ||
            static_cast<Opcode>(m_bytes[0]) != Opcode::kAttachment) {
            continue;
        }
        const Bytes content = Bytes(m_bytes).subspan(mcap::kFraming);
        ByteReader reader(content);
        reader.Take<std::uint64_t>();
        reader.Take<std::uint64_t>();
        GraphFile file;
        file.name = reader.TakeText();
        const bool is_graph = reader.TakeText() == layout::kGraphMediaType;
        const Bytes text = reader.TakeBytes(reader.Take<std::uint64_t>());
        const Bytes checked = content.first(content.size() - reader.Left().size());
        const auto crc = reader.Take<std::uint32_t>();
        if (!is_graph || reader.Failed()) {
            continue;
        }
        if (crc != 0 && crc != Crc32(checked)) {
            m_index.notices.emplace_back("the graph file in the recording is damaged");
            continue;
        }
        file.text.assign(reinterpret_cast<const char*>(text.data()), text.size());
        return file;
    }
    return std::nullopt;
}

}  // namespace wavo::recording
