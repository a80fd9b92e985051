#include "recording/layout.h"

#include "recording/checksum.h"
#include "recording/recording_event.h"
#include "recording/recording_writer.h"

namespace wavo::recording::layout {

namespace {

using mcap::Opcode;
using mcap::RecordScope;

constexpr std::uint16_t kLineSchema = 1;
constexpr std::uint16_t kEventSchema = 2;

void PutSchema(ByteWriter& out, std::uint16_t id, std::string_view name, std::string_view encoding,
               std::string_view definition) {
    const RecordScope schema(out, Opcode::kSchema);
    out.Put(id);
    out.PutText(name);
    out.PutText(encoding);
    out.PutText(definition);
}

void PutChannel(ByteWriter& out, std::uint16_t id, std::uint16_t schema, std::string_view topic,
                std::string_view encoding) {
    const RecordScope channel(out, Opcode::kChannel);
    out.Put(id);
    out.Put(schema);
    out.PutText(topic);
    out.PutText(encoding);
    out.Put(std::uint32_t{0});  // no metadata
}

}  // namespace

void PutSchemas(ByteWriter& out, const std::vector<std::string>& axis_names) {
    PutSchema(out, kLineSchema, "wavo/msg/Line", kLineSchemaEncoding, LineSchema(axis_names));
    PutSchema(out, kEventSchema, "wavo.Event", "jsonschema", EventSchema());
}

void PutChannels(ByteWriter& out) {
    PutChannel(out, kLinesChannel, kLineSchema, kLinesTopic, kLineEncoding);
    PutChannel(out, kEventsChannel, kEventSchema, kEventsTopic, "json");
}

void PutMetadata(ByteWriter& out, std::string_view name,
                 const std::map<std::string, std::string>& entries) {
    const RecordScope metadata(out, Opcode::kMetadata);
    out.PutText(name);
    const std::size_t length = out.size();
    out.Put(std::uint32_t{0});
    for (const auto& [key, value] : entries) {
        out.PutText(key);
        out.PutText(value);
    }
    out.PutAt(length, static_cast<std::uint32_t>(out.size() - length - sizeof(std::uint32_t)));
}

void PutAttachment(ByteWriter& out, std::uint64_t time, const GraphFile& file) {
    const RecordScope attachment(out, Opcode::kAttachment);
    const std::size_t begin = out.size();
    out.Put(time);
    out.Put(std::uint64_t{0});
    out.PutText(file.name);
    out.PutText(kGraphMediaType);
    out.Put(static_cast<std::uint64_t>(file.text.size()));
    out.PutBytes(BytesOf(file.text));
    out.Put(Crc32(out.View(begin)));
}

void PutAttachmentIndex(ByteWriter& out, std::uint64_t offset, std::uint64_t length,
                        std::uint64_t time, const GraphFile& file) {
    const RecordScope index(out, Opcode::kAttachmentIndex);
    out.Put(offset);
    out.Put(length);
    out.Put(time);
    out.Put(std::uint64_t{0});
    out.Put(static_cast<std::uint64_t>(file.text.size()));
    out.PutText(file.name);
    out.PutText(kGraphMediaType);
}

void PutChunkHead(ByteWriter& chunk, const ChunkPlace& place, std::uint32_t records_crc) {
    const std::uint64_t records = place.length - mcap::kFraming - mcap::kChunkHead;
    ByteWriter head;
    head.Put(static_cast<std::uint8_t>(Opcode::kChunk));
    head.Put(place.length - mcap::kFraming);
    head.Put(place.start_time);
    head.Put(place.end_time);
    head.Put(records);
    head.Put(records_crc);
    head.PutText("");  // not compressed
    head.Put(records);
    chunk.PutBytesAt(0, head.View());
}

std::uint64_t MessageIndexSize(std::uint64_t messages) {
    return messages == 0 ? 0 : mcap::kFraming + mcap::kIndexHead + messages * mcap::kIndexEntry;
}

}  // namespace wavo::recording::layout
