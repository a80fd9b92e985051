// Levels: minima and maxima of stretches of lines, so that a picture of many lines reads few bytes.
//
// They belong to a chunk, whose lines are successive. Each axis has them for the value itself and
// its first two derivatives, for the whole chunk and for blocks of 64 lines. A derivative has no
// value where there are no lines before it: at the begin of a recording and behind a gap.
//
// The record of levels (opcode 80, behind the message indexes of its chunk):
//
//   head:  chunk_start_offset u64, channel_id u16, axes u16, orders u16 (3), lines per block u16
//   (64),
//          blocks u32, lines u32, first line u64,
//          per block: CRC u32 of its messages as they stand in the chunk,
//          CRC u32 of what stands behind the lines in the chunk,
//          per axis, per order: minimum f64, maximum f64 of the chunk,
//          a bit per axis and order, in this order: whether a line has no value there,
//          CRC u32 of the head up to here
//   then, per axis: per order: per block: minimum f64, maximum f64;
//          per order: a bit per block, in whole bytes: whether a line has no value there;
//          CRC u32 of these
//
// The summary repeats the heads alone. minimum > maximum: there is no value at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "recording/bytes.h"

namespace wavo::recording {

inline constexpr std::size_t kLinesPerBlock = 64;
/// Value, first and second derivative.
inline constexpr std::size_t kLevelOrders = 3;

/// Minimum and maximum; maximum < minimum when there is none.
struct Extremes {
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool IsEmpty() const { return maximum < minimum; }
    void Take(const Extremes& other) {
        minimum = other.minimum < minimum ? other.minimum : minimum;
        maximum = other.maximum > maximum ? other.maximum : maximum;
    }
    void Take(double value) {
        minimum = value < minimum ? value : minimum;
        maximum = value > maximum ? value : maximum;
    }

    friend bool operator==(const Extremes&, const Extremes&) = default;
};
static_assert(sizeof(Extremes) == 16);

/// What is known of a stretch of a stream. NaN takes no part in the extremes.
struct Level {
    Extremes extremes;
    bool missing = false;  ///< a line has no value, or NaN

    void Take(const Level& other) {
        extremes.Take(other.extremes);
        missing = missing || other.missing;
    }

    friend bool operator==(const Level&, const Level&) = default;
};

constexpr std::size_t BlocksOf(std::uint64_t lines) {
    return static_cast<std::size_t>((lines + kLinesPerBlock - 1) / kLinesPerBlock);
}

/// The head of a record of levels.
struct LevelsHead {
    std::uint64_t chunk_offset = 0;
    std::uint64_t first_line = 0;
    std::uint32_t lines = 0;
    std::uint16_t axes = 0;
    std::vector<std::uint32_t> block_crcs;
    std::uint32_t rest_crc = 0;
    std::vector<Level> whole;  ///< [axis][order], of the chunk

    friend bool operator==(const LevelsHead&, const LevelsHead&) = default;
};

/// The levels of one axis: [order][block].
using AxisLevels = std::vector<Level>;

/// Bytes of the head with its CRC, and of an axis behind it.
std::size_t LevelsHeadSize(std::size_t axes, std::size_t blocks);
std::size_t AxisLevelsSize(std::size_t blocks);

void PutLevelsHead(ByteWriter& out, const LevelsHead& head);
void PutAxisLevels(ByteWriter& out, const AxisLevels& levels);

/// How much of a record has to be there to know LevelsHeadSize: its fixed part.
inline constexpr std::size_t kLevelsHeadStart = 32;
/// The size of the head that begins with these bytes; 0 when they cannot begin one.
std::size_t LevelsHeadSizeOf(Bytes start);

/// Reads a head. False when its CRC is wrong or it makes no sense.
bool ReadLevelsHead(Bytes bytes, LevelsHead& head);
/// Reads the levels of an axis. False when the CRC is wrong.
bool ReadAxisLevels(Bytes bytes, std::size_t blocks, AxisLevels& levels);

/// Makes the levels of lines as they come.
class LevelBuilder {
 public:
    /// `cycle_time` in seconds.
    LevelBuilder(std::size_t axes, double cycle_time);

    /// The next line has none before it.
    void ForgetHistory() { m_history = 0; }

    /// Takes the next lines of the chunk: a value per axis each, in no alignment, `stride` bytes
    /// from one line to the next.
    void Take(const std::byte* values, std::size_t stride, std::size_t lines);

    [[nodiscard]] std::size_t Lines() const { return m_lines; }

    /// Ends the chunk: gives the levels of its blocks, [axis][order][block], and those of all of
    /// it, [axis][order], and begins the next one.
    void EndChunk(std::vector<AxisLevels>& axes, std::vector<Level>& whole);

 private:
    /// Two numbers that are handled at once.
    using Pair = double __attribute__((vector_size(16)));
    using PairMask = std::int64_t __attribute__((vector_size(16)));

    /// Two axes: their last line, and the block in the making. Derivatives are differences, not yet
    /// divided: dividing keeps their order.
    struct Lane {
        Pair last;
        Pair last_difference;
        Pair least[kLevelOrders];
        Pair largest[kLevelOrders];
        PairMask missing[kLevelOrders];
    };

    void BeginBlock();
    void EndBlock();
    /// Takes lines that have fewer than two before them.
    void TakeFirstLine(const std::byte* values);
    /// Takes lines of one block into a lane. Of the last one of an odd number of axes there is only
    /// one value.
    template <std::size_t Values>
    static void TakeLane(Lane& lane, const std::byte* values, std::size_t stride,
                         std::size_t lines);

    const std::size_t m_axes;
    const double m_divisors[kLevelOrders];
    std::vector<Lane> m_lanes;
    std::size_t m_history = 0;         // lines before the next one, at most 2
    std::size_t m_lines = 0;           // of the chunk
    std::vector<AxisLevels> m_blocks;  // [axis][block][order]
};

}  // namespace wavo::recording
