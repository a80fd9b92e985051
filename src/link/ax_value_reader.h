// The viewer's end of its value FIFO: opens the line FIFO that the master fills for this viewer,
// reads batches of lines, closes the link.
//
// A line is one double per axis, in the order of the axis names of the info block.
//
// Invariants:
// 1. While open, this reader's mark stands in the FIFO.
// 2. A FIFO that was found damaged (IsDamaged) gives no line any more until it is opened anew.
// 3. What a failed Open linked is unlinked by the next Open or Close, without touching the mark
//    of the reader that holds the FIFO.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "link/line_fifo.h"

namespace wavo {

class AxValueReader {
 public:
    AxValueReader() = default;
    ~AxValueReader() { Close(); }
    AxValueReader(const AxValueReader&) = delete;
    AxValueReader& operator=(const AxValueReader&) = delete;

    /// Opens the FIFO in the segment `name`, closing an open one first. Failures go to the error
    /// trace.
    bool Open(const char* name);

    [[nodiscard]] bool IsOpen() const { return m_open; }

    /// Bytes of all slots, more than Read ever copies at once; 0 when not open.
    [[nodiscard]] std::size_t SlotsSize() const {
        return m_open ? static_cast<std::size_t>(m_fifo.line_size * m_fifo.line_count) : 0;
    }

    /// Number of lines that wait; 0 when not open.
    [[nodiscard]] std::uint64_t LinesWaiting() const;

    /// Copies `line_count` lines of `line_length` bytes to `buffer` (line i at i x line_length).
    /// More than `capacity` bytes: the lines are taken and thrown away, so that the master can go
    /// on, and the call fails. Fewer lines than asked: the rest of the buffer keeps what it held,
    /// the call succeeds. A FIFO whose header or segment was tampered with, also while it was being
    /// read, and slots that are too small for the lines, fail and count as damaged. Failures go to
    /// the error log.
    bool Read(void* buffer, std::size_t line_length, std::uint64_t line_count,
              std::size_t capacity);

    /// Whether Read found that this FIFO cannot be relied on any more.
    [[nodiscard]] bool IsDamaged() const { return m_damaged; }

    /// Lines that the last call of Read has copied.
    [[nodiscard]] std::uint64_t LinesCopied() const { return m_copied; }

    /// Lines that calls of Read have taken and thrown away, since the reader was made.
    [[nodiscard]] std::uint64_t LinesThrownAway() const { return m_thrown_away; }

    void Close();

 private:
    /// Returns the number of lines read.
    std::uint64_t ReadFromFifo(std::byte* buffer, std::size_t line_length,
                               std::uint64_t line_count);
    /// Takes the lines piece by piece and forgets them.
    void ThrowAway(std::size_t line_length, std::uint64_t line_count);
    /// Looks for damage and reports it. `while_reading`: a name that is gone is none.
    bool FindDamage(bool while_reading);

    bool m_open = false;
    bool m_damaged = false;
    std::string m_name;
    void* m_segment = nullptr;  // linked segment; null when closed
    LineFifo m_fifo;            // valid while open
    std::uint64_t m_copied = 0;
    std::uint64_t m_thrown_away = 0;
};

}  // namespace wavo
