// Finds out what a recording holds and where: from the index at its end, or, where that is missing
// or damaged, by going from record to record.
//
// Nothing in a file is believed: every length is held against the end of what it lies in before it
// is used, and no memory is asked for by an unchecked one. What has a CRC counts only with the
// right one; what has none is only used to find what has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recording/chunk_content.h"
#include "recording/chunk_table.h"
#include "recording/mcap.h"
#include "recording/recording_fault.h"
#include "recording/recording_file.h"
#include "recording/recording_head.h"

namespace wavo::recording {

/// Most bytes of a chunk that is read whole.
inline constexpr std::uint64_t kLargestChunkRead = std::uint64_t{1} << 28U;

struct RecordingIndex {
    /// Bytes behind the lines of a regular chunk: its events.
    struct Rest {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;
        std::uint32_t crc = 0;
    };
    struct Place {
        std::uint64_t offset = 0;
        std::uint64_t length = 0;
    };

    RecordingHead head;
    bool head_is_own = false;  ///< it stood in the file; else it was made up from the lines
    Channels channels;
    ChunkTable table;
    std::vector<Rest> rests;
    std::vector<Event> events;       ///< of chunks that were read whole
    std::vector<Place> attachments;  ///< records
    bool is_complete = false;        ///< the data section has its end
    std::uint64_t next_record = 0;   ///< where a file that has no end may go on
    std::vector<std::string> notices;

    /// Adds "lines a to b (time) <what>".
    void NoticeLines(std::uint64_t first, std::uint64_t end, const std::string& what);
};

/// A part of a file in memory, for reading small pieces one behind the other.
class FileWindow {
 public:
    FileWindow(const RecordingFile& file, std::uint64_t file_size, std::size_t window_size)
        : m_file(file), m_file_size(file_size), m_window_size(window_size) {}

    /// Up to `size` bytes from `offset` on: fewer at the end of the file, or when reading fails.
    /// Valid until the next call.
    Bytes At(std::uint64_t offset, std::size_t size);
    [[nodiscard]] std::uint64_t FileSize() const { return m_file_size; }

 private:
    const RecordingFile& m_file;
    const std::uint64_t m_file_size;
    const std::size_t m_window_size;
    std::uint64_t m_offset = 0;
    std::vector<std::byte> m_bytes;
};

class IndexReader {
 public:
    /// The references are not owned and outlive this object. `path` stands in faults.
    IndexReader(const RecordingFile& file, std::uint64_t file_size, std::string path,
                RecordingIndex& index);

    /// Reads the index of a file that was just opened.
    MaybeFault ReadAll();

    /// Takes in what was written behind index.next_record since.
    void GoOn();

 private:
    struct ChunkInFile {
        std::uint64_t offset = 0;
        std::uint64_t length = 0;        // with framing
        std::uint64_t index_length = 0;  // of the message indexes behind it
        ChunkHead head;
    };

    MaybeFault CheckMagic();
    /// Reads the records in front of the first chunk.
    void ReadFront();
    void TakeAttachment(const RecordingIndex::Place& place);
    void TakeFrontRecord(const mcap::Framing& framing, std::uint64_t content);
    /// Makes the head out of what was found. False when there are no lines in this file.
    bool DecideHead();
    /// Names and cycle time from schema and lines, where the recording does not tell them.
    bool MakeUpHead();

    /// False when there is no summary that holds.
    bool ReadSummary();
    bool FindSummary(std::uint64_t& start, std::uint64_t& end);
    bool SummaryCrcIsRight(std::uint64_t start, std::uint32_t crc);
    bool CollectSummary(std::uint64_t start, std::uint64_t end);
    bool TakeChunkIndex(Bytes content);
    void AddChunks(std::uint64_t start, std::uint64_t end);
    void AddChunkFromFile(const ChunkInFile& chunk);

    void Scan(std::uint64_t offset);
    /// Handles the record at `offset`; returns where the next one stands, 0 when there is none.
    std::uint64_t ScanRecord(std::uint64_t offset, std::optional<ChunkInFile>& pending);
    void ScanLevels(std::uint64_t content, std::uint64_t length,
                    std::optional<ChunkInFile>& pending);

    bool ReadLevelsHeadAt(std::uint64_t content, std::uint64_t length, LevelsHead& head);
    void AddRegular(const ChunkInFile& chunk, const LevelsHead& head, std::uint64_t levels_offset);
    void AddPlain(const ChunkInFile& chunk);
    void AddRuns(const ChunkInFile& chunk, const ChunkContent& content);
    [[nodiscard]] std::uint64_t NumberOf(const ChunkContent::Line& line, bool are_numbered,
                                         std::uint64_t next) const;
    [[nodiscard]] Fault NoLines() const;

    const RecordingFile& m_file;
    const std::uint64_t m_size;
    const std::string m_path;
    RecordingIndex& m_index;
    FileWindow m_window;
    std::optional<RecordingHead> m_told_head;
    std::optional<std::uint64_t> m_first_chunk;  // offset
    std::uint64_t m_behind_front = 0;            // where the records of the front end
    std::vector<ChunkInFile> m_chunks;           // of the summary
    std::string m_compression;                   // of a chunk that cannot be read
};

/// Reads a whole chunk, with its framing, into `records`. False when it is too large, is cut, is
/// compressed, or its CRC is wrong.
bool ReadChunkRecords(const RecordingFile& file, std::uint64_t offset, std::uint64_t length,
                      std::vector<std::byte>& records, ChunkHead& head);

}  // namespace wavo::recording
