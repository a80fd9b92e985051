// The container that recordings are: MCAP version 0. docs/recording-format.md tells what is in it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "recording/bytes.h"

namespace wavo::recording::mcap {

/// The first and the last bytes of a file.
inline constexpr std::array<unsigned char, 8> kMagic{0x89, 'M', 'C', 'A', 'P', '0', '\r', '\n'};
/// Where the digit of the version stands in them.
inline constexpr std::size_t kVersionPlace = 5;

enum class Opcode : std::uint8_t {
    kHeader = 0x01,
    kFooter = 0x02,
    kSchema = 0x03,
    kChannel = 0x04,
    kMessage = 0x05,
    kChunk = 0x06,
    kMessageIndex = 0x07,
    kChunkIndex = 0x08,
    kAttachment = 0x09,
    kAttachmentIndex = 0x0A,
    kStatistics = 0x0B,
    kMetadata = 0x0C,
    kMetadataIndex = 0x0D,
    kSummaryOffset = 0x0E,
    kDataEnd = 0x0F,
    kExtremes = 0x80,  ///< ours: minima and maxima of a chunk, see levels.h
};

/// Opcode and length in front of every record.
inline constexpr std::size_t kFraming = 9;
/// Content of a footer, and what a file ends with: footer and magic.
inline constexpr std::size_t kFooterContent = 20;
inline constexpr std::size_t kTail = kFraming + kFooterContent + kMagic.size();
/// Content of a Chunk in front of its records, when they are not compressed.
inline constexpr std::size_t kChunkHead = 8 + 8 + 8 + 4 + 4 + 8;
/// Content of a Message in front of its data: channel, sequence, two times.
inline constexpr std::size_t kMessageHead = 2 + 4 + 8 + 8;
/// What CDR data begins with: little-endian, no options.
inline constexpr std::array<unsigned char, 4> kCdrHead{0, 1, 0, 0};
/// A time and a place in a Message Index, and what stands in front of them: channel and length.
inline constexpr std::size_t kIndexEntry = 16;
inline constexpr std::size_t kIndexHead = 2 + 4;

/// Bytes of a line of `axes` values as a Message, with framing.
constexpr std::size_t LineSize(std::size_t axes) {
    return kFraming + kMessageHead + kCdrHead.size() + 8 * axes;
}

/// Opcode and length; `length` bytes of content follow.
struct Framing {
    Opcode opcode{};
    std::uint64_t length = 0;
};

inline Framing TakeFraming(ByteReader& reader) {
    Framing framing;
    framing.opcode = static_cast<Opcode>(reader.Take<std::uint8_t>());
    framing.length = reader.Take<std::uint64_t>();
    return framing;
}

/// Writes a record's framing, and its length when the record is complete.
class RecordScope {
 public:
    RecordScope(ByteWriter& out, Opcode opcode) : m_out(out), m_begin(out.size()) {
        out.Put(static_cast<std::uint8_t>(opcode));
        out.Put(std::uint64_t{0});
    }
    ~RecordScope() {
        m_out.PutAt(m_begin + 1, static_cast<std::uint64_t>(m_out.size() - m_begin - kFraming));
    }
    RecordScope(const RecordScope&) = delete;
    RecordScope& operator=(const RecordScope&) = delete;

 private:
    ByteWriter& m_out;
    const std::size_t m_begin;
};

}  // namespace wavo::recording::mcap
