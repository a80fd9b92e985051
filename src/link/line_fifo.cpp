#include "link/line_fifo.h"

#include <atomic>
#include <cinttypes>
#include <cstring>

#include "link/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

constexpr std::uint64_t kAlignment = 8;
constexpr std::size_t kMarkOffset = offsetof(LineFifoHeader, reader_mark);

bool IsAligned(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address) % kAlignment == 0;
}

std::uint64_t LoadAcquire(std::uint64_t& word) {
    return std::atomic_ref(word).load(std::memory_order_acquire);
}

std::uint64_t LoadRelaxed(std::uint64_t& word) {
    return std::atomic_ref(word).load(std::memory_order_relaxed);
}

// The mark is touched before the alignment of the segment is known, hence by copy. Only one reader
// at a time is ever given a segment, so that it orders nothing.
std::uint64_t LoadMark(const std::byte* base) {
    std::uint64_t mark = 0;
    std::memcpy(&mark, base + kMarkOffset, sizeof mark);
    return mark;
}

void StoreMark(std::byte* base, std::uint64_t mark) {
    std::memcpy(base + kMarkOffset, &mark, sizeof mark);
}

/// The mark that this process leaves: the address of the data area in its own mapping.
std::uint64_t OwnMark(const std::byte* base) {
    return reinterpret_cast<std::uintptr_t>(base + sizeof(LineFifoHeader));
}

/// Whether the header describes a ring that fits into `size` bytes. Reports what is wrong.
bool HeaderIsPlausible(const LineFifoHeader& header, std::uint64_t size) {
    if (header.line_count < 2) {
        MERRTRACE("MMemLineFifo_Link(): Number of lines (%" PRIu64 ") is below 2",
                  header.line_count);
        return false;
    }
    if (header.line_size == 0 ||
        header.line_size > (size - sizeof(LineFifoHeader)) / header.line_count) {
        MERRTRACE("MMemLineFifo_Link(): %" PRIu64 " lines of %" PRIu64
                  " bytes do not fit into a segment of %" PRIu64 " bytes",
                  header.line_count, header.line_size, size);
        return false;
    }
    if (header.write_index >= header.line_count || header.read_index >= header.line_count) {
        MERRTRACE("MMemLineFifo_Link(): Write index %" PRIu64 " or read index %" PRIu64
                  " is not below the number of lines (%" PRIu64 ")",
                  header.write_index, header.read_index, header.line_count);
        return false;
    }
    return true;
}

/// Copies one line. Short lines are copied in place: for them a call costs more than the copy.
inline void CopyLine(std::byte* target, const std::byte* source, std::size_t length) {
    constexpr std::size_t kShort = 256;
    constexpr std::size_t kStep = 16;
    if (length > kShort) {
        std::memcpy(target, source, length);
        return;
    }
    std::size_t done = 0;
    for (; done + kStep <= length; done += kStep) {
        std::memcpy(target + done, source + done, kStep);
    }
    for (; done < length; ++done) {
        target[done] = source[done];
    }
}

inline bool ReadLine(LineFifo& fifo, std::byte* line, std::size_t length) {
    LineFifoHeader& header = *fifo.header;
    const std::uint64_t read_index = fifo.read_index;
    // Acquire: the line is seen whole once its slot is seen filled.
    const std::uint64_t write_index = LoadAcquire(header.write_index);
    if (LoadRelaxed(header.reader_mark) == 0 || write_index >= fifo.line_count ||
        LoadRelaxed(header.read_index) != read_index || read_index == write_index) {
        return false;
    }
    CopyLine(line, fifo.data + read_index * fifo.line_size, length);
    if (LoadRelaxed(header.write_index) != read_index) {
        // The copy is complete before the writer may use the slot again.
        std::atomic_thread_fence(std::memory_order_seq_cst);
        const std::uint64_t next = read_index + 1;
        fifo.read_index = next == fifo.line_count ? 0 : next;
        std::atomic_ref(header.read_index).store(fifo.read_index, std::memory_order_relaxed);
    }
    return true;
}

}  // namespace

bool MMemLineFifo_Link(void* base, std::uint64_t size, LineFifo& fifo) {
    if (size < sizeof(LineFifoHeader)) {
        MERRTRACE("MMemLineFifo_Link(): Segment of %" PRIu64 " bytes is too small", size);
        return false;
    }
    auto* const bytes = static_cast<std::byte*>(base);
    if (LoadMark(bytes) != 0) {
        MERRTRACE(link_texts::kFifoHasReader);
        return false;
    }
    LineFifoHeader header;
    std::memcpy(&header, base, sizeof header);
    if (!HeaderIsPlausible(header, size)) {
        return false;
    }
    StoreMark(bytes, OwnMark(bytes));
    std::byte* const data = bytes + sizeof(LineFifoHeader);
    if (!IsAligned(data)) {
        MERRTRACE(link_texts::kDataNotAligned, static_cast<void*>(data),
                  static_cast<std::size_t>(kAlignment));
        StoreMark(bytes, 0);
        return false;
    }
    if (!IsAligned(base)) {
        MERRTRACE(link_texts::kIndexNotAligned,
                  static_cast<void*>(bytes + offsetof(LineFifoHeader, write_index)),
                  static_cast<std::size_t>(kAlignment));
        StoreMark(bytes, 0);
        return false;
    }
    fifo = {static_cast<LineFifoHeader*>(base), data, header.line_size, header.line_count,
            header.read_index};
    return true;
}

void MMemLineFifo_Release(const LineFifo& fifo) {
    auto* const bytes = reinterpret_cast<std::byte*>(fifo.header);
    if (LoadMark(bytes) == OwnMark(bytes)) {
        StoreMark(bytes, 0);
    }
}

bool MMemLineFifo_IsIntact(const LineFifo& fifo) {
    return LoadRelaxed(fifo.header->reader_mark) == OwnMark(fifo.data - sizeof(LineFifoHeader)) &&
           LoadRelaxed(fifo.header->line_size) == fifo.line_size &&
           LoadRelaxed(fifo.header->line_count) == fifo.line_count &&
           LoadRelaxed(fifo.header->write_index) < fifo.line_count &&
           LoadRelaxed(fifo.header->read_index) == fifo.read_index;
}

std::uint64_t MMemLineFifo_Waiting(const LineFifo& fifo) {
    const std::uint64_t write_index = LoadAcquire(fifo.header->write_index);
    if (write_index >= fifo.line_count || LoadRelaxed(fifo.header->read_index) != fifo.read_index) {
        return 0;
    }
    return write_index >= fifo.read_index ? write_index - fifo.read_index
                                          : write_index + fifo.line_count - fifo.read_index;
}

std::uint64_t MMemLineFifo_Read(LineFifo& fifo, void* lines, std::size_t length,
                                std::uint64_t count) {
    auto* line = static_cast<std::byte*>(lines);
    for (std::uint64_t i = 0; i < count; ++i, line += length) {
        if (!ReadLine(fifo, line, length)) {
            return i;
        }
    }
    return count;
}

}  // namespace wavo
