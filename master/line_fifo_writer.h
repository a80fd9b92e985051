// The writing end of a value FIFO: a ring of lines in a shared segment that one viewer reads.
//
// Invariants:
// 1. Never blocks and never overwrites a line that waits: a full ring refuses the line.
// 2. At most line_count - 1 lines wait; equal indices mean empty.
// 3. What the reader writes into the segment is not trusted: the writer follows its own copies of
//    its index and of the sizes, and a read index out of range makes the ring count as full.
// 4. The segment is created anew for every reader's start and never changes its size.
//
// One writer, one reader, in different processes. The write index is stored with release order
// after the line, so a reader that sees the index sees the line. The read index is loaded with
// acquire order before a slot is filled again, so the reader's copying out of it is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "platform/shared_memory.h"

namespace wavo::master {

class LineFifoWriter {
 public:
    /// No FIFO: false as a condition, accepts no line.
    LineFifoWriter() = default;

    /// Creates the segment `name` with `line_count` slots for lines of `axis_count` doubles, empty
    /// and without a reader. Gives an object without a FIFO on failure; platform::LastError()
    /// tells why. The segment's name goes with the object.
    /// REQUIRES: line_count >= 2; no other object holds a FIFO of this name.
    static LineFifoWriter Create(const std::string& name, std::size_t axis_count,
                                 std::uint64_t line_count);

    /// Bytes of a segment with these dimensions; 0 when no such segment can exist.
    static std::size_t SegmentSize(std::size_t axis_count, std::uint64_t line_count);

    explicit operator bool() const { return static_cast<bool>(m_segment); }

    /// Appends a line. Returns false when the ring is full: nothing was written.
    /// REQUIRES: `line` has axis_count values.
    bool Push(std::span<const double> line);

    /// Lines that could be pushed now.
    [[nodiscard]] std::uint64_t Room() const;

    /// Lines that wait for the reader.
    [[nodiscard]] std::uint64_t Waiting() const;

    /// Whether a reader holds the FIFO.
    [[nodiscard]] bool ReaderAttached() const;

    /// Whether the segment is still what the reader opens, and its header what was written there.
    /// One that is not is of no use to either side.
    [[nodiscard]] bool IsIntact() const;

    /// Drops the lines that wait. The reader must not be reading: only while it waits for the
    /// answer to a message it sent, or after it went.
    void Clear();

 private:
    [[nodiscard]] std::uint64_t ReadIndex() const;

    platform::SharedSegment m_segment;
    std::size_t m_line_size = 0;
    std::uint64_t m_line_count = 0;
    std::uint64_t m_write_index = 0;
};

}  // namespace wavo::master
