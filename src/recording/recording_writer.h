// Writes a recording: lines in chunks, each synced before its lines count as kept, with levels
// behind it and an index at the end.
//
// Invariants:
// 1. A file that is there is never replaced.
// 2. The lines of a chunk are successive. A chunk ends at 1 MiB, at one second, at a gap, and when
// it
//    is to be kept at once.
// 3. What KeptLines and KeptEnd tell is on the device: chunk, message indexes and levels. Only of
//    a temporary recording it may wait in the system's memory.
// 4. After a fault nothing more is written; what was kept can be read.
// 5. Memory does not grow with what a chunk holds, only by some 60 bytes per chunk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recording/bytes.h"
#include "recording/levels.h"
#include "recording/recording_event.h"
#include "recording/recording_fault.h"
#include "recording/recording_file.h"
#include "recording/recording_head.h"

namespace wavo::recording {

/// Most bytes of the lines of a chunk, unless a single line has more.
inline constexpr std::size_t kLargestChunk = std::size_t{1} << 20U;

/// Whether what is written has to outlast a power cut.
enum class Durability {
    kKept,       ///< each chunk is on the device before its lines count as kept
    kTemporary,  ///< nothing waits for the device
};

/// Where a chunk stands in the file, and what belongs to it.
struct ChunkPlace {
    std::uint64_t offset = 0;      ///< of the Chunk record
    std::uint64_t length = 0;      ///< of that record, with its framing
    std::uint64_t start_time = 0;  ///< smallest and largest time of its messages
    std::uint64_t end_time = 0;
    std::uint64_t index_length = 0;  ///< of the message indexes behind it
    std::uint32_t lines = 0;
    std::uint32_t events = 0;
};

class RecordingWriter {
 public:
    /// Makes the file `path`, which must not be there (kExists).
    static Expected<std::unique_ptr<RecordingWriter>> Create(
        const std::string& path, const RecordingHead& head,
        const std::optional<GraphFile>& graph_file, Durability durability = Durability::kKept);

    /// Closes the file. Without Finish it ends with what was kept, as if it had been cut off there.
    ~RecordingWriter() = default;
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Takes successive lines, a double per axis each, the first of them with the number
    /// `first_line`. Writes and syncs each chunk that becomes full. Returns why it could not.
    /// REQUIRES: `values` are whole lines; no line goes back behind NextLine().
    MaybeFault Append(std::uint64_t first_line, std::span<const double> values, std::size_t lines);

    /// Takes an event. It is written with the chunk that is being filled.
    void AddEvent(const Event& event);

    /// Writes and syncs what has been taken so far.
    MaybeFault Keep();

    /// Writes and syncs what is left, and the index, and closes the file.
    MaybeFault Finish();

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The number behind the last line that was taken; 0 before the first.
    [[nodiscard]] std::uint64_t NextLine() const { return m_next_line; }
    /// Lines that are on the device, and the number behind the last of them.
    [[nodiscard]] std::uint64_t KeptLines() const { return m_kept_lines; }
    [[nodiscard]] std::uint64_t KeptEnd() const { return m_kept_end; }
    /// Size of the file, bytes.
    [[nodiscard]] std::uint64_t FileSize() const { return m_file_size; }

 private:
    RecordingWriter(RecordingFile file, std::string path, const RecordingHead& head,
                    Durability durability);

    void PutHead(const RecordingHead& head, const std::optional<GraphFile>& graph_file);
    void PutLine(std::uint64_t line, const double* values);
    void BeginChunk();
    MaybeFault EndChunk();
    /// Takes levels and CRC of the lines of a block, while they are at hand.
    void EndBlock();
    void PutMessageIndexes();
    void PutLevels();
    MaybeFault Write(Bytes bytes, std::uint32_t crc);
    bool Sync() { return m_durability == Durability::kTemporary || m_file.Sync(); }
    Fault Failed();

    void PutStatistics(ByteWriter& out) const;
    static void PutChunkIndex(ByteWriter& out, const ChunkPlace& place);
    bool CopyLevelsHead(ByteWriter& out, const ChunkPlace& place) const;
    MaybeFault WriteSummary();

    // Constant after construction.
    const std::string m_path;
    const Durability m_durability;
    const std::size_t m_axes;
    const std::size_t m_line_size;
    const std::size_t m_lines_per_chunk;
    const LineClock m_clock;
    std::vector<std::string> m_axis_names;

    RecordingFile m_file;
    std::uint64_t m_file_size = 0;
    std::uint32_t m_file_crc = 0;
    MaybeFault m_fault;
    std::uint64_t m_next_line = 0;
    std::uint64_t m_kept_lines = 0;
    std::uint64_t m_kept_end = 0;
    std::uint64_t m_event_count = 0;
    std::vector<ChunkPlace> m_chunks;
    std::uint64_t m_metadata_offset = 0;
    std::uint64_t m_metadata_length = 0;
    ByteWriter m_attachment_index;

    // The chunk in the making: its record, with what stands behind it in the file.
    ByteWriter m_piece;
    std::uint64_t m_chunk_first = 0;
    std::size_t m_chunk_lines = 0;
    std::uint32_t m_records_crc = 0;  // of the blocks that are complete
    ByteWriter m_events;              // messages, to stand behind the lines
    struct IndexEntry {
        std::uint64_t time;
        std::uint64_t offset;
    };
    std::vector<IndexEntry> m_event_index;
    LevelBuilder m_levels;
    LevelsHead m_levels_head;
    std::vector<AxisLevels> m_axis_levels;
};

}  // namespace wavo::recording
