// Reads a recording: its lines by their numbers, and what stretches of them hold without reading
// each.
//
// Lines have absolute numbers; where some are missing, because they were lost or because their
// bytes are damaged, there is a gap in the numbers. A stream is an axis with an order of
// derivation. It has no value in a gap, nor, for order k, in the first k lines of the recording and
// behind a gap.
//
// Invariants:
// 1. A value that is given is the one that was written: its block's CRC was right when it was read.
//    A chunk that is found damaged is a gap from then on, and Notices tells it.
// 2. Reading fails in no other way: what cannot be read is a gap.
// 3. Memory: 16 bytes per chunk, axis and order, and kCacheSize.
// 4. Orders up to 2 have levels in the file. Those above are computed from the lines, which takes
// as
//    long as reading them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "recording/block_cache.h"
#include "recording/levels.h"
#include "recording/recording_event.h"
#include "recording/recording_file.h"
#include "recording/recording_head.h"
#include "recording/recording_index.h"
#include "support/fault.h"

namespace wavo::recording {

/// How closely the edges of a column are looked at.
enum class Detail {
    kChunks,  ///< reads nothing: the levels of chunks are in memory
    kBlocks,  ///< reads levels of the chunks at the edges, some 1.5 kB each and axis
    kLines,   ///< exact: reads the blocks of 64 lines at the edges too, 64 x 547 bytes for 64 axes
};

/// What a stream does from one line to another.
struct ColumnExtent {
    Level certain;   ///< of stretches that lie within
    Level possible;  ///< of those, and of stretches at the edges that reach beyond
    /// The first and the last value there is. With kLines only; else, and where there is none, NaN.
    double first = std::numeric_limits<double>::quiet_NaN();
    double last = std::numeric_limits<double>::quiet_NaN();

    /// Nothing closer can be said: looking more closely gives the same extremes.
    [[nodiscard]] bool IsExact() const { return certain == possible; }
};

/// Successive lines.
struct LineSpan {
    std::uint64_t first = 0;
    std::uint64_t end = 0;  ///< behind the last

    friend bool operator==(const LineSpan&, const LineSpan&) = default;
};

/// Numbers that change with what there is to read.
struct LineVersions {
    std::uint64_t lines = 0;   ///< lines came or were lost
    std::uint64_t losses = 0;  ///< lines were lost
};

class RecordingReader {
 public:
    /// Memory for what was read last, bytes.
    static constexpr std::size_t kCacheSize = std::size_t{128} << 20U;

    static Expected<std::unique_ptr<RecordingReader>> Open(const std::string& path);

    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;
    ~RecordingReader() = default;

    [[nodiscard]] const RecordingHead& Head() const { return m_index.head; }
    [[nodiscard]] const LineClock& Clock() const { return m_clock; }

    /// The number of the first line, and the one behind the last; equal when there are none.
    [[nodiscard]] std::uint64_t FirstLine() const;
    [[nodiscard]] std::uint64_t EndLine() const;
    /// Lines that are there.
    [[nodiscard]] std::uint64_t LineCount() const;
    /// Stretches without lines between FirstLine and EndLine.
    [[nodiscard]] std::vector<LineSpan> Gaps() const;

    /// Whether the recording was ended in order; else it was cut off, or is still being written.
    [[nodiscard]] bool IsComplete() const { return m_index.is_complete; }
    /// "recording was cut off at ..."; empty when it is complete.
    [[nodiscard]] std::string CutOffText() const;

    /// What is wrong with the recording, as far as it was looked at; grows.
    [[nodiscard]] const std::vector<std::string>& Notices() const { return m_index.notices; }

    /// Takes in what was written since. True when there is more than before, or it has come to its
    /// end.
    bool Refresh();
    /// Whether a path leads to this file, by whatever name.
    [[nodiscard]] bool IsFile(const std::string& path) const;

    /// The values of a stream from line `first` on, one per element of `out`: `absent` where there
    /// is none. REQUIRES: axis < Head().axis_names.size(); order >= 0.
    void ReadValues(std::size_t axis, std::int32_t order, std::uint64_t first, double absent,
                    std::span<double> out);

    /// Copies line `line`, a value per axis; false when it is not there.
    bool ReadLine(std::uint64_t line, std::span<double> out);

    /// What a stream does from line `from` to before `to`. Lines that are not there count as
    /// missing. REQUIRES: as ReadValues.
    ColumnExtent Extent(std::size_t axis, std::int32_t order, std::uint64_t from, std::uint64_t to,
                        Detail detail);

    /// The same for a row of columns: column i reaches from bounds[i] to before bounds[i + 1].
    /// REQUIRES: `bounds` ascend; out.size() + 1 == bounds.size().
    void Columns(std::size_t axis, std::int32_t order, std::span<const std::uint64_t> bounds,
                 Detail detail, std::span<ColumnExtent> out);

    /// Finds the extremes of chunks that another program has written without any, of at most so
    /// many; that takes as long as reading their lines. Returns of how many they are still due. The
    /// first look at an extent finds all of them.
    std::size_t SettleLevels(std::size_t most = std::numeric_limits<std::size_t>::max());

    /// All events, in the order of their lines. Reads them all.
    const std::vector<Event>& Events();

    /// The graph file that came with the recording.
    std::optional<GraphFile> ReadGraphFile();

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Which lines stand where.
    [[nodiscard]] const ChunkTable& Table() const { return m_index.table; }

    /// Who is told when lines turn out to be damaged, from now on; may be told while it reads.
    void SetLost(std::function<void()> lost) { m_lost = std::move(lost); }
    [[nodiscard]] LineVersions Versions() const { return {m_index.table.Version(), m_losses}; }
    /// Bytes of lines and levels that were read so far.
    [[nodiscard]] std::uint64_t BytesRead() const { return m_bytes_read; }

 private:
    friend class ReadingAhead;

    /// The values of a block, line by line.
    using Block = std::vector<double>;

    RecordingReader(RecordingFile file, std::string path);

    /// The values of a block of an entry, [line][axis]; null when the chunk is damaged, and is then
    /// taken out of the table. Valid until the next call.
    const Block* LoadBlock(std::size_t index, std::size_t block);
    const Block* LoadRegularBlock(const ChunkEntry& entry, std::size_t block);
    /// Reads all blocks of a chunk that has to be read whole.
    const Block* LoadPlainBlock(const ChunkEntry& entry, std::size_t block);
    bool CheckChunk(ChunkEntry& entry);
    bool LineIsRight(const std::byte* message, std::uint64_t line) const;
    /// The levels of the blocks of an axis; null as LoadBlock.
    const AxisLevels* LoadLevels(std::size_t index, std::size_t axis);
    /// Makes levels that are not in the file from the lines; those of `wanted_axis` are kept.
    bool MakeLevels(std::size_t index, std::size_t wanted_axis);
    void LoseChunk(std::size_t index);

    /// Raw values of an axis: as ReadValues with order 0, and whether each is there.
    void ReadRaw(std::size_t axis, std::uint64_t first, std::span<double> values,
                 std::span<std::uint8_t> are_there);
    void ReadStream(std::size_t axis, std::int32_t order, std::uint64_t first,
                    std::span<double> values, std::span<std::uint8_t> are_there);

    /// A stream, and how closely it is looked at. REQUIRES: it has levels.
    struct Wanted {
        std::size_t axis = 0;
        std::size_t order = 0;
        Detail detail{};
    };
    /// `first` and `end` are what the table finds for the bounds of `lines`.
    ColumnExtent ExtentOnce(const Wanted& wanted, LineSpan lines, std::size_t first,
                            std::size_t end);
    void TakePart(std::size_t index, const Wanted& wanted, LineSpan lines, ColumnExtent& extent);
    void TakeLines(std::size_t axis, std::int32_t order, LineSpan lines, ColumnExtent& extent);
    ColumnExtent ExtentFromLines(std::size_t axis, std::int32_t order, LineSpan lines);
    double EdgeValue(std::size_t axis, std::int32_t order, LineSpan lines, bool is_first);

    RecordingFile m_file;
    const std::string m_path;
    RecordingIndex m_index;
    LineClock m_clock{1.0, 0};
    BlockCache<Block> m_blocks{kCacheSize / 2};
    BlockCache<AxisLevels> m_levels{kCacheSize / 2};
    std::vector<std::byte> m_bytes;  // of what is being read
    std::uint64_t m_bytes_read = 0;
    std::uint64_t m_losses = 0;
    std::function<void()> m_lost;
    std::uint64_t m_settled_version = 0;  // of the table, when no levels were due
    std::size_t m_events_read = 0;        // of the index' rests
    std::vector<Event> m_events;
    bool m_events_sorted = false;
};

}  // namespace wavo::recording
