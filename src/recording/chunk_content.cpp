#include "recording/chunk_content.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "recording/layout.h"
#include "recording/mcap.h"

namespace wavo::recording {

namespace {

using mcap::Opcode;

/// Takes one record from the front; false at the end or when it is cut.
bool TakeRecord(ByteReader& reader, mcap::Framing& framing, Bytes& content) {
    if (reader.AtEnd()) {
        return false;
    }
    framing = mcap::TakeFraming(reader);
    content = reader.TakeBytes(framing.length);
    return !reader.Failed();
}

}  // namespace

void Channels::TakeSchema(Bytes content) {
    ByteReader reader(content);
    const auto id = reader.Take<std::uint16_t>();
    reader.TakeText();
    const std::string_view encoding = reader.TakeText();
    const std::string_view definition = reader.TakeText();
    std::optional<std::vector<std::string>> fields = FieldsOfSchema(definition);
    if (!reader.Failed() && encoding == layout::kLineSchemaEncoding && fields) {
        m_line_schemas[id] = std::move(*fields);
    }
}

void Channels::TakeChannel(Bytes content) {
    ByteReader reader(content);
    const auto id = reader.Take<std::uint16_t>();
    Channel channel;
    channel.schema = reader.Take<std::uint16_t>();
    channel.topic = reader.TakeText();
    channel.encoding = reader.TakeText();
    if (!reader.Failed()) {
        m_channels[id] = std::move(channel);
    }
}

const std::vector<std::string>* Channels::FieldsOf(const Channel& channel) const {
    const auto schema = m_line_schemas.find(channel.schema);
    const bool has_lines = channel.topic == layout::kLinesTopic &&
                           channel.encoding == layout::kLineEncoding &&
                           schema != m_line_schemas.end();
    return has_lines ? &schema->second : nullptr;
}

const std::vector<std::string>* Channels::LineFields() const {
    for (const auto& [id, channel] : m_channels) {
        if (const std::vector<std::string>* const fields = FieldsOf(channel)) {
            return fields;
        }
    }
    return nullptr;
}

bool Channels::IsLines(std::uint16_t channel) const {
    const auto found = m_channels.find(channel);
    return found != m_channels.end() && found->second.topic == layout::kLinesTopic;
}

bool Channels::IsEvents(std::uint16_t channel) const {
    const auto found = m_channels.find(channel);
    return found != m_channels.end() && found->second.topic == layout::kEventsTopic;
}

bool ReadChunkHead(Bytes content, std::uint64_t length, ChunkHead& head) {
    ByteReader reader(content.first(std::min(content.size(), kMostChunkHead)));
    reader.Take<std::uint64_t>();  // times, which the lines have too
    reader.Take<std::uint64_t>();
    const auto uncompressed = reader.Take<std::uint64_t>();
    head.crc = reader.Take<std::uint32_t>();
    head.compression = reader.TakeText();
    head.records = reader.Take<std::uint64_t>();
    head.size = mcap::kChunkHead + head.compression.size();
    if (reader.Failed()) {
        return false;
    }
    if (!head.compression.empty()) {
        head.agrees = head.records + head.size == length;
        return head.agrees;
    }
    const std::uint64_t framed = length - head.size;
    head.agrees = framed == uncompressed && framed == head.records;
    if (framed == uncompressed) {
        head.records = framed;
    } else if (framed != head.records && uncompressed != head.records) {
        return false;
    }
    return true;
}

bool ReadEventMessage(Bytes message, Event& event) {
    if (message.size() < mcap::kMessageHead) {
        return false;
    }
    const Bytes text = message.subspan(mcap::kMessageHead);
    std::optional<Event> read =
        EventFromJson({reinterpret_cast<const char*>(text.data()), text.size()});
    if (read) {
        event = std::move(*read);
    }
    return read.has_value();
}

bool ReadChunkContent(Bytes records, std::size_t axes, Channels& channels, ChunkContent& content) {
    ByteReader reader(records);
    mcap::Framing framing;
    Bytes record;
    while (TakeRecord(reader, framing, record)) {
        if (framing.opcode == Opcode::kSchema) {
            channels.TakeSchema(record);
        } else if (framing.opcode == Opcode::kChannel) {
            channels.TakeChannel(record);
        }
        if (framing.opcode != Opcode::kMessage) {
            continue;
        }
        ByteReader message(record);
        const auto channel = message.Take<std::uint16_t>();
        ChunkContent::Line line;
        line.sequence = message.Take<std::uint32_t>();
        line.time = message.Take<std::uint64_t>();
        message.Take<std::uint64_t>();
        if (message.Failed() || !channels.Knows(channel)) {
            return false;
        }
        if (channels.IsLines(channel)) {
            const Bytes head = message.TakeBytes(mcap::kCdrHead.size());
            const bool is_cdr =
                !head.empty() && std::memcmp(head.data(), mcap::kCdrHead.data(), head.size()) == 0;
            if (!is_cdr || message.Left().size() != axes * sizeof(double)) {
                return false;
            }
            line.place = static_cast<std::size_t>(message.Left().data() - records.data());
            content.lines.push_back(line);
        } else if (Event event; channels.IsEvents(channel) && ReadEventMessage(record, event)) {
            content.events.push_back(std::move(event));
        }
    }
    return !reader.Failed();
}

void TakeChannelsOf(Bytes records, Channels& channels) {
    ByteReader reader(records);
    mcap::Framing framing;
    Bytes record;
    while (TakeRecord(reader, framing, record)) {
        if (framing.opcode == Opcode::kSchema) {
            channels.TakeSchema(record);
        } else if (framing.opcode == Opcode::kChannel) {
            channels.TakeChannel(record);
        }
    }
}

}  // namespace wavo::recording
