// What stands in a chunk that is read whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "recording/bytes.h"
#include "recording/recording_event.h"

namespace wavo::recording {

/// The channels of a file, as far as they matter here.
class Channels {
 public:
    /// Take in the content of a Schema or Channel record; those that make no sense are left out.
    void TakeSchema(Bytes content);
    void TakeChannel(Bytes content);

    /// The fields of the lines; null when no channel has lines.
    [[nodiscard]] const std::vector<std::string>* LineFields() const;
    [[nodiscard]] bool IsLines(std::uint16_t channel) const;
    [[nodiscard]] bool IsEvents(std::uint16_t channel) const;
    [[nodiscard]] bool Knows(std::uint16_t channel) const { return m_channels.contains(channel); }

 private:
    struct Channel {
        std::uint16_t schema = 0;
        std::string topic;
        std::string encoding;
    };
    [[nodiscard]] const std::vector<std::string>* FieldsOf(const Channel& channel) const;

    std::map<std::uint16_t, std::vector<std::string>> m_line_schemas;  // those of doubles alone
    std::map<std::uint16_t, Channel> m_channels;
};

/// Head of a Chunk record.
struct ChunkHead {
    std::uint64_t records = 0;  ///< bytes
    std::uint32_t crc = 0;      ///< 0: none
    std::string compression;
    std::size_t size = 0;  ///< of this head
    /// What the framing and both sizes in the head say of its length agrees.
    bool agrees = true;
};

/// Reads the head from the begin of a Chunk's content, of which `length` bytes are said to be. One
/// length of three that disagrees with the other two is overruled. False when it makes no sense.
bool ReadChunkHead(Bytes content, std::uint64_t length, ChunkHead& head);
/// The bytes that are needed for that.
inline constexpr std::size_t kMostChunkHead = 64;

/// Lines and events of a chunk.
struct ChunkContent {
    struct Line {
        std::uint32_t sequence = 0;
        std::uint64_t time = 0;
        std::size_t place = 0;  ///< of its values in the records
    };
    std::vector<Line> lines;
    std::vector<Event> events;
};

/// Walks through the records of a chunk; schemas and channels in it are taken into `channels`.
/// `axes` is the number of values of a line. False when something in it cannot be.
bool ReadChunkContent(Bytes records, std::size_t axes, Channels& channels, ChunkContent& content);

/// The same without the lines, for finding the channels.
void TakeChannelsOf(Bytes records, Channels& channels);

/// Reads the message at the begin of `reader` as an event.
bool ReadEventMessage(Bytes message, Event& event);

}  // namespace wavo::recording
