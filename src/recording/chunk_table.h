// Where the lines of a recording stand, in the order of their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "recording/levels.h"

namespace wavo::recording {

/// Successive lines of a chunk: all of it in what this program writes.
struct ChunkEntry {
    std::uint64_t offset = 0;         ///< of the Chunk record
    std::uint64_t length = 0;         ///< of that record, with its framing
    std::uint64_t levels_offset = 0;  ///< of the content of its levels; 0: it has none
    std::uint64_t first_line = 0;
    std::uint32_t lines = 0;
    std::uint32_t skipped = 0;  ///< lines of the chunk before these
    std::uint32_t rest_crc = 0;
    std::uint32_t row = 0;        ///< of ChunkTable's levels
    std::uint64_t crcs = 0;       ///< place of its blocks' CRCs in ChunkTable
    bool is_regular = false;      ///< its lines stand at its begin, one behind the other
    bool has_levels = false;      ///< of its blocks, in the file, and they hold
    bool is_checked = false;      ///< its framing was looked at and is right
    bool levels_are_due = false;  ///< those of the whole entry are to be made anew

    [[nodiscard]] std::uint64_t EndLine() const { return first_line + lines; }
};

/// Levels of one stream over the entries of a table, and over 16, 256... of them.
class StreamLevels {
 public:
    StreamLevels(std::vector<Level> entries, std::uint64_t version);

    /// Of the entries from `begin` to before `end`. The lines between them are left out of account.
    [[nodiscard]] Level Of(std::size_t begin, std::size_t end) const;
    /// The table's version that they belong to.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

 private:
    static constexpr std::size_t kFanOut = 16;

    std::vector<std::vector<Level>> m_levels;
    std::uint64_t m_version;
};

class ChunkTable {
 public:
    explicit ChunkTable(std::size_t axes = 0) : m_streams(axes * kLevelOrders) {}

    [[nodiscard]] const std::vector<ChunkEntry>& Entries() const { return m_entries; }
    [[nodiscard]] ChunkEntry& At(std::size_t index) { return m_entries[index]; }
    /// Another one whenever an entry came, went or got other levels.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

    /// Whether lines with these numbers follow those that are there.
    [[nodiscard]] bool Follows(std::uint64_t first_line, std::uint64_t lines) const;

    /// Adds an entry behind the others. `whole` has its levels per axis and order; `crcs` are those
    /// of its blocks. REQUIRES: Follows.
    void Add(ChunkEntry entry, const std::vector<Level>& whole,
             const std::vector<std::uint32_t>& crcs);

    /// Takes an entry out: its lines are gone. The derivatives of the next one begin anew.
    void Remove(std::size_t index);

    /// The first entry with lines at or behind `line`; Entries().size() when there is none. Looks
    /// from entry `from` on, near it first. REQUIRES: no entry before `from` is the one.
    [[nodiscard]] std::size_t Find(std::uint64_t line, std::size_t from = 0) const;
    /// The entry that begins at this place of the file; nothing when there is none.
    [[nodiscard]] std::optional<std::size_t> FindOffset(std::uint64_t offset) const;

    /// Lines that are there before `line`, which stands in or before entry `index` = Find(line).
    [[nodiscard]] std::uint64_t CountBefore(std::uint64_t line, std::size_t index) const;
    /// Lines that are there from `from` to before `to`.
    [[nodiscard]] std::uint64_t CountLines(std::uint64_t from, std::uint64_t to) const;

    /// Cuts the lines from `from` to before `to` into some hundred parts at most, where levels
    /// begin and end; `bounds` gets theirs. One part: they lie within one block, or none is there.
    void Cut(std::uint64_t from, std::uint64_t to, std::vector<std::uint64_t>& bounds) const;

    [[nodiscard]] std::uint32_t BlockCrc(const ChunkEntry& entry, std::size_t block) const {
        return m_crcs[entry.crcs + block];
    }
    [[nodiscard]] Level Whole(const ChunkEntry& entry, std::size_t stream) const;
    void SetWhole(std::size_t index, const std::vector<Level>& whole);

    /// Levels of a stream (axis x kLevelOrders + order); valid until the next call that changes the
    /// table.
    [[nodiscard]] const StreamLevels& Stream(std::size_t stream) const;

    [[nodiscard]] std::size_t Streams() const { return m_streams; }

 private:
    std::size_t m_streams;
    std::vector<ChunkEntry> m_entries;
    std::vector<std::uint64_t> m_ends;          // per entry, its EndLine()
    std::vector<std::uint64_t> m_lines_before;  // per entry, lines of those in front of it
    std::vector<Extremes> m_whole;              // [row][stream]
    std::vector<std::uint8_t> m_missing;        // the same
    std::vector<std::uint32_t> m_crcs;
    std::uint64_t m_version = 1;
    mutable std::vector<std::optional<StreamLevels>> m_stream_levels;
};

}  // namespace wavo::recording
