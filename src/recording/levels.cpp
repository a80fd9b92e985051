#include "recording/levels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "recording/checksum.h"
#include "recording/mcap.h"
#include "source/derivation.h"

#if defined(__FAST_MATH__)
#error "levels need exact IEEE arithmetic: build without -ffast-math"
#endif

namespace wavo::recording {

namespace {

constexpr std::size_t kCrc = 4;
constexpr std::size_t kBitsPerByte = 8;
constexpr std::uint16_t kLinesChannel = 1;

constexpr std::size_t BitBytes(std::size_t bits) {
    return (bits + kBitsPerByte - 1) / kBitsPerByte;
}

void PutExtremes(ByteWriter& out, const Level* levels, std::size_t count) {
    std::byte* to = out.Extend(count * sizeof(Extremes));
    for (std::size_t i = 0; i < count; ++i, to += sizeof(Extremes)) {
        std::memcpy(to, &levels[i].extremes, sizeof(Extremes));
    }
}

void PutMissing(ByteWriter& out, const Level* levels, std::size_t count) {
    for (std::size_t begin = 0; begin < count; begin += kBitsPerByte) {
        unsigned bits = 0;
        for (std::size_t i = begin; i < std::min(begin + kBitsPerByte, count); ++i) {
            bits |= levels[i].missing ? 1U << (i - begin) : 0U;
        }
        out.Put(static_cast<std::uint8_t>(bits));
    }
}

void TakeExtremes(ByteReader& reader, Level* levels, std::size_t count) {
    const Bytes bytes = reader.TakeBytes(count * sizeof(Extremes));
    for (std::size_t i = 0; i < count && !bytes.empty(); ++i) {
        std::memcpy(&levels[i].extremes, bytes.data() + i * sizeof(Extremes), sizeof(Extremes));
    }
}

void TakeMissing(ByteReader& reader, Level* levels, std::size_t count) {
    const Bytes bytes = reader.TakeBytes(BitBytes(count));
    for (std::size_t i = 0; i < count && !bytes.empty(); ++i) {
        levels[i].missing =
            (std::to_integer<unsigned>(bytes[i / kBitsPerByte]) >> (i % kBitsPerByte) & 1U) != 0;
    }
}

bool CrcIsRight(Bytes bytes) {
    ByteReader crc(bytes.last(kCrc));
    return Crc32(bytes.first(bytes.size() - kCrc)) == crc.Take<std::uint32_t>();
}

}  // namespace

std::size_t LevelsHeadSize(std::size_t axes, std::size_t blocks) {
    const std::size_t streams = axes * kLevelOrders;
    return kLevelsHeadStart + (blocks + 1) * kCrc + streams * sizeof(Extremes) + BitBytes(streams) +
           kCrc;
}

std::size_t AxisLevelsSize(std::size_t blocks) {
    return kLevelOrders * (blocks * sizeof(Extremes) + BitBytes(blocks)) + kCrc;
}

void PutLevelsHead(ByteWriter& out, const LevelsHead& head) {
    const std::size_t begin = out.size();
    out.Put(head.chunk_offset);
    out.Put(kLinesChannel);
    out.Put(head.axes);
    out.Put(static_cast<std::uint16_t>(kLevelOrders));
    out.Put(static_cast<std::uint16_t>(kLinesPerBlock));
    out.Put(static_cast<std::uint32_t>(head.block_crcs.size()));
    out.Put(head.lines);
    out.Put(head.first_line);
    for (const std::uint32_t crc : head.block_crcs) {
        out.Put(crc);
    }
    out.Put(head.rest_crc);
    PutExtremes(out, head.whole.data(), head.whole.size());
    PutMissing(out, head.whole.data(), head.whole.size());
    out.Put(Crc32(out.View(begin)));
}

void PutAxisLevels(ByteWriter& out, const AxisLevels& levels) {
    const std::size_t begin = out.size();
    const std::size_t blocks = levels.size() / kLevelOrders;
    PutExtremes(out, levels.data(), levels.size());
    for (std::size_t order = 0; order < kLevelOrders; ++order) {
        PutMissing(out, levels.data() + order * blocks, blocks);
    }
    out.Put(Crc32(out.View(begin)));
}

std::size_t LevelsHeadSizeOf(Bytes start) {
    if (start.size() < kLevelsHeadStart) {
        return 0;
    }
    ByteReader reader(start);
    reader.Take<std::uint64_t>();
    const auto channel = reader.Take<std::uint16_t>();
    const auto axes = reader.Take<std::uint16_t>();
    const auto orders = reader.Take<std::uint16_t>();
    const auto lines_per_block = reader.Take<std::uint16_t>();
    const auto blocks = reader.Take<std::uint32_t>();
    const auto lines = reader.Take<std::uint32_t>();
    const bool is_sound = channel == kLinesChannel && orders == kLevelOrders &&
                          lines_per_block == kLinesPerBlock && blocks == BlocksOf(lines);
    return is_sound ? LevelsHeadSize(axes, blocks) : 0;
}

bool ReadLevelsHead(Bytes bytes, LevelsHead& head) {
    const std::size_t size = LevelsHeadSizeOf(bytes);
    if (size == 0 || bytes.size() < size || !CrcIsRight(bytes.first(size))) {
        return false;
    }
    ByteReader reader(bytes);
    head.chunk_offset = reader.Take<std::uint64_t>();
    reader.Take<std::uint16_t>();
    head.axes = reader.Take<std::uint16_t>();
    reader.Take<std::uint32_t>();
    head.block_crcs.resize(reader.Take<std::uint32_t>());
    head.lines = reader.Take<std::uint32_t>();
    head.first_line = reader.Take<std::uint64_t>();
    for (std::uint32_t& crc : head.block_crcs) {
        crc = reader.Take<std::uint32_t>();
    }
    head.rest_crc = reader.Take<std::uint32_t>();
    head.whole.resize(head.axes * kLevelOrders);
    TakeExtremes(reader, head.whole.data(), head.whole.size());
    TakeMissing(reader, head.whole.data(), head.whole.size());
    return !reader.Failed();
}

bool ReadAxisLevels(Bytes bytes, std::size_t blocks, AxisLevels& levels) {
    if (bytes.size() != AxisLevelsSize(blocks) || !CrcIsRight(bytes)) {
        return false;
    }
    ByteReader reader(bytes);
    levels.resize(kLevelOrders * blocks);
    TakeExtremes(reader, levels.data(), levels.size());
    for (std::size_t order = 0; order < kLevelOrders; ++order) {
        TakeMissing(reader, levels.data() + order * blocks, blocks);
    }
    return !reader.Failed();
}

LevelBuilder::LevelBuilder(std::size_t axes, double cycle_time)
    : m_axes(axes),
      m_divisors{1.0, DerivationDivisor(cycle_time, 1), DerivationDivisor(cycle_time, 2)},
      m_lanes((axes + 1) / 2),
      m_blocks(axes) {
    BeginBlock();
}

void LevelBuilder::BeginBlock() {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (Lane& lane : m_lanes) {
        for (std::size_t order = 0; order < kLevelOrders; ++order) {
            lane.least[order] = Pair{kInfinity, kInfinity};
            lane.largest[order] = Pair{-kInfinity, -kInfinity};
            lane.missing[order] = PairMask{0, 0};
        }
    }
}

void LevelBuilder::Take(const std::byte* values, std::size_t stride, std::size_t lines) {
    while (lines > 0) {
        std::size_t count = 1;
        if (m_history < kLevelOrders - 1) {
            TakeFirstLine(values);
        } else {
            count = std::min(lines, kLinesPerBlock - m_lines % kLinesPerBlock);
            const std::size_t pairs = m_axes / 2;
            for (std::size_t i = 0; i < pairs; ++i) {
                TakeLane<2>(m_lanes[i], values + i * sizeof(Pair), stride, count);
            }
            if (m_axes % 2 != 0) {
                TakeLane<1>(m_lanes[pairs], values + pairs * sizeof(Pair), stride, count);
            }
        }
        m_lines += count;
        if (m_lines % kLinesPerBlock == 0) {
            EndBlock();
        }
        values += count * stride;
        lines -= count;
    }
}

template <std::size_t Values>
void LevelBuilder::TakeLane(Lane& lane, const std::byte* values, std::size_t stride,
                            std::size_t lines) {
    Lane now = lane;
    for (std::size_t i = 0; i < lines; ++i, values += stride) {
        Pair value{};
        std::memcpy(&value, values, Values * sizeof(double));
        const Pair difference = value - now.last;
        const Pair second = difference - now.last_difference;
        now.last = value;
        now.last_difference = difference;
        // Only NaN differs from itself.
        // NOLINTBEGIN(misc-redundant-expression)
        now.least[0] = value < now.least[0] ? value : now.least[0];
        now.largest[0] = value > now.largest[0] ? value : now.largest[0];
        now.missing[0] |= value != value;
        now.least[1] = difference < now.least[1] ? difference : now.least[1];
        now.largest[1] = difference > now.largest[1] ? difference : now.largest[1];
        now.missing[1] |= difference != difference;
        now.least[2] = second < now.least[2] ? second : now.least[2];
        now.largest[2] = second > now.largest[2] ? second : now.largest[2];
        now.missing[2] |= second != second;
        // NOLINTEND(misc-redundant-expression)
    }
    lane = now;
}

void LevelBuilder::TakeFirstLine(const std::byte* values) {
    for (std::size_t axis = 0; axis < m_axes; ++axis) {
        Lane& lane = m_lanes[axis / 2];
        const std::size_t side = axis % 2;
        double value = 0.0;
        std::memcpy(&value, values + axis * sizeof value, sizeof value);
        const double difference = value - lane.last[side];  // means nothing in the first line
        lane.last[side] = value;
        lane.last_difference[side] = difference;
        const auto take = [&lane, side](std::size_t order, double sample) {
            lane.least[order][side] = std::min(lane.least[order][side], sample);
            lane.largest[order][side] = std::max(lane.largest[order][side], sample);
            lane.missing[order][side] |= std::isnan(sample) ? -1 : 0;
        };
        take(0, value);
        if (m_history == 1) {
            take(1, difference);
        } else {
            lane.missing[1][side] = -1;
        }
        lane.missing[2][side] = -1;
    }
    ++m_history;
}

void LevelBuilder::EndBlock() {
    for (std::size_t axis = 0; axis < m_axes; ++axis) {
        const Lane& lane = m_lanes[axis / 2];
        for (std::size_t order = 0; order < kLevelOrders; ++order) {
            Level level;
            level.missing = lane.missing[order][axis % 2] != 0;
            const double least = lane.least[order][axis % 2];
            const double largest = lane.largest[order][axis % 2];
            if (least <= largest) {
                level.extremes = {least / m_divisors[order], largest / m_divisors[order]};
            }
            m_blocks[axis].push_back(level);
        }
    }
    BeginBlock();
}

void LevelBuilder::EndChunk(std::vector<AxisLevels>& axes, std::vector<Level>& whole) {
    if (m_lines % kLinesPerBlock != 0) {
        EndBlock();
    }
    const std::size_t blocks = BlocksOf(m_lines);
    axes.resize(m_axes);
    whole.assign(m_axes * kLevelOrders, Level());
    for (std::size_t axis = 0; axis < m_axes; ++axis) {
        axes[axis].resize(blocks * kLevelOrders);
        for (std::size_t block = 0; block < blocks; ++block) {
            for (std::size_t order = 0; order < kLevelOrders; ++order) {
                const Level& level = m_blocks[axis][block * kLevelOrders + order];
                axes[axis][order * blocks + block] = level;
                whole[axis * kLevelOrders + order].Take(level);
            }
        }
        m_blocks[axis].clear();
    }
    m_lines = 0;
}

}  // namespace wavo::recording
