// The reader's end of a line FIFO: a ring of fixed-size lines in a shared memory segment, one
// writer (the master) and one reader.
//
// Slots run from 0 to line count - 1. Read index equals write index: empty. At most line count - 1
// lines can wait. The reader writes the read index and the reader mark, nothing else.
//
// The segment is not trusted. MMemLineFifo_Link checks the header against the mapping and takes
// the geometry and the read index over; from then on no offset is ever computed from a field that
// could have changed. Who else rewrites the read index has damaged the FIFO.
//
// Memory order: a line is read after its slot was seen filled (acquire on the write index), and
// its slot is given back only when the copy is complete (full fence before the store of the read
// index).
#pragma once

#include <cstddef>
#include <cstdint>

#include "link/wire_format.h"

namespace wavo {

/// A claimed FIFO. Points into the caller's mapping; owns nothing.
struct LineFifo {
    LineFifoHeader* header = nullptr;
    const std::byte* data = nullptr;
    std::uint64_t line_size = 0;   ///< bytes from slot to slot, as checked when linked
    std::uint64_t line_count = 0;  ///< slots, as checked when linked
    std::uint64_t read_index = 0;  ///< slot of the next line to be read
};

/// Claims the FIFO in the `size` bytes at `base` as its only reader. False, with an error trace,
/// when another reader holds it or its header cannot be right.
bool MMemLineFifo_Link(void* base, std::uint64_t size, LineFifo& fifo);

/// Gives the FIFO back, unless the mark is no longer ours.
void MMemLineFifo_Release(const LineFifo& fifo);

/// Whether the header still describes the FIFO that was linked, its read index is the one that the
/// reader left there and its write index is in range.
bool MMemLineFifo_IsIntact(const LineFifo& fifo);

/// Number of lines that wait; 0 for a FIFO that is not intact.
std::uint64_t MMemLineFifo_Waiting(const LineFifo& fifo);

/// Copies the first `length` bytes of up to `count` lines to `lines`, one after another, and gives
/// the slot of each back as soon as it is copied. Stops early when no line waits any more, the mark
/// is not set or an index cannot be right. Returns the number of lines copied.
/// REQUIRES: length <= fifo.line_size; `lines` has room for count x length bytes.
std::uint64_t MMemLineFifo_Read(LineFifo& fifo, void* lines, std::size_t length,
                                std::uint64_t count);

}  // namespace wavo
