// The layouts in shared memory that viewer and master agree on. Little-endian, read by copy.
//
// Nothing here is trusted: every field is checked against the size of the mapping before it is
// used (line_fifo.h, master_info.h, capabilities.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace wavo {

/// Head of a line FIFO segment; the slots follow at offset 64.
struct LineFifoHeader {
    std::uint64_t master_word;  ///< the master's own; the reader does not look at it
    std::uint64_t write_index;  ///< master: slot of the next line to be written
    std::uint64_t reader_mark;  ///< reader: 0 = free, else a reader holds the FIFO
    std::uint64_t read_index;   ///< reader: slot of the next line to be read
    std::uint64_t line_size;    ///< master: bytes from one slot to the next
    std::uint64_t line_count;   ///< master: slots in the ring; at most line_count - 1 lines wait
    std::uint64_t master_words[2];
};
static_assert(std::is_trivially_copyable_v<LineFifoHeader>);
static_assert(sizeof(LineFifoHeader) == 64);
static_assert(offsetof(LineFifoHeader, write_index) == 8);
static_assert(offsetof(LineFifoHeader, reader_mark) == 16);
static_assert(offsetof(LineFifoHeader, read_index) == 24);
static_assert(offsetof(LineFifoHeader, line_size) == 32);
static_assert(offsetof(LineFifoHeader, line_count) == 40);
static_assert(offsetof(LineFifoHeader, master_words) == 48);

/// The master's info block, segment kInfoSegmentName.
struct MasterInfoBlock {
    std::uint64_t master_window;  ///< handle that every message to the master goes to
    double cycle_time;            ///< seconds per line
    std::uint64_t master_word;    ///< not used by the viewer
    std::uint64_t axis_count;
    std::uint64_t fifo_lines;  ///< slots of each value FIFO
    char axis_names[2000];     ///< axis_count NUL-terminated names, one after another
};
static_assert(std::is_trivially_copyable_v<MasterInfoBlock>);
static_assert(sizeof(MasterInfoBlock) == 2040);
static_assert(offsetof(MasterInfoBlock, cycle_time) == 8);
static_assert(offsetof(MasterInfoBlock, axis_count) == 24);
static_assert(offsetof(MasterInfoBlock, fifo_lines) == 32);
static_assert(offsetof(MasterInfoBlock, axis_names) == 40);

/// One record of a capability module. The records stand packed from offset 4 of the segment, so
/// they are not aligned: copy, never point.
struct CapabilityRecord {
    char axis_name[256];        ///< NUL-terminated
    double upper_limit;         ///< position units
    double lower_limit;         ///< position units
    double velocity_limit;      ///< position units per second
    double acceleration_limit;  ///< position units per second squared
    double resolution;
};
static_assert(std::is_trivially_copyable_v<CapabilityRecord>);
static_assert(sizeof(CapabilityRecord) == 296);
static_assert(offsetof(CapabilityRecord, upper_limit) == 256);
static_assert(offsetof(CapabilityRecord, lower_limit) == 264);
static_assert(offsetof(CapabilityRecord, velocity_limit) == 272);
static_assert(offsetof(CapabilityRecord, acceleration_limit) == 280);
static_assert(offsetof(CapabilityRecord, resolution) == 288);

/// Offset of record k in a capability module: a 32-bit signed count stands before the records.
constexpr std::size_t CapabilityRecordOffset(std::size_t k) {
    return sizeof(std::int32_t) + k * sizeof(CapabilityRecord);
}

inline constexpr char kInfoSegmentName[] = "MachineTools_InfoData";
/// Followed by the viewer's window handle in decimal.
inline constexpr char kValueSegmentPrefix[] = "MValues_";
/// Followed by the viewer's window handle in decimal.
inline constexpr char kCapabilitySegmentPrefix[] = "DataModCap";

}  // namespace wavo
