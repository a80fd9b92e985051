// How recordings use the container: the channels, and the records that do not depend on the lines.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "recording/bytes.h"
#include "recording/mcap.h"
#include "recording/recording_head.h"

namespace wavo::recording {

struct ChunkPlace;

namespace layout {

inline constexpr std::uint16_t kLinesChannel = 1;
inline constexpr std::uint16_t kEventsChannel = 2;
inline constexpr std::string_view kLinesTopic = "lines";
inline constexpr std::string_view kEventsTopic = "events";
inline constexpr std::string_view kLineEncoding = "cdr";
inline constexpr std::string_view kLineSchemaEncoding = "ros2msg";
inline constexpr std::string_view kMetadataName = "wavo";
/// Media type of a graph file.
inline constexpr std::string_view kGraphMediaType = "text/plain";

void PutSchemas(ByteWriter& out, const std::vector<std::string>& axis_names);
void PutChannels(ByteWriter& out);
void PutMetadata(ByteWriter& out, std::string_view name,
                 const std::map<std::string, std::string>& entries);
void PutAttachment(ByteWriter& out, std::uint64_t time, const GraphFile& file);
void PutAttachmentIndex(ByteWriter& out, std::uint64_t offset, std::uint64_t length,
                        std::uint64_t time, const GraphFile& file);

/// Writes framing and head over the first bytes of `chunk`, which is all of the Chunk record.
void PutChunkHead(ByteWriter& chunk, const ChunkPlace& place, std::uint32_t records_crc);

/// Bytes of the Message Index of so many messages, with framing; 0 for none.
std::uint64_t MessageIndexSize(std::uint64_t messages);

}  // namespace layout

}  // namespace wavo::recording
