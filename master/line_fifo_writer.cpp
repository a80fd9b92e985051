#include "master/line_fifo_writer.h"

#include <algorithm>
#include <atomic>
#include <limits>

#include "link/wire_format.h"

namespace wavo::master {

namespace {

/// Slots keep a multiple of 8 bytes, also for a master without axes.
std::size_t LineSize(std::size_t axis_count) {
    return std::max<std::size_t>(axis_count, 1) * sizeof(double);
}

/// The header field at `offset`, to be read and written whole. Segments begin at a page, so the
/// fields are aligned.
std::atomic_ref<std::uint64_t> Field(const platform::SharedSegment& segment, std::size_t offset) {
    auto* bytes = static_cast<std::byte*>(segment.data());
    return std::atomic_ref<std::uint64_t>(*reinterpret_cast<std::uint64_t*>(bytes + offset));
}

}  // namespace

std::size_t LineFifoWriter::SegmentSize(std::size_t axis_count, std::uint64_t line_count) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::ptrdiff_t>::max();
    if (axis_count > kLargest / sizeof(double)) {
        return 0;
    }
    const std::uint64_t line_size = LineSize(axis_count);
    if (line_count > (kLargest - sizeof(LineFifoHeader)) / line_size) {
        return 0;
    }
    return static_cast<std::size_t>(sizeof(LineFifoHeader) + line_count * line_size);
}

LineFifoWriter LineFifoWriter::Create(const std::string& name, std::size_t axis_count,
                                      std::uint64_t line_count) {
    LineFifoWriter fifo;
    const std::size_t size = SegmentSize(axis_count, line_count);
    if (size == 0) {
        return fifo;
    }
    fifo.m_segment = platform::SharedSegment::Create(name, size);
    if (!fifo.m_segment) {
        return fifo;
    }
    fifo.m_line_size = LineSize(axis_count);
    fifo.m_line_count = line_count;
    // The viewer opens the segment only after the first batch was announced to it, long after
    // these stores; the message orders them.
    Field(fifo.m_segment, offsetof(LineFifoHeader, line_size))
        .store(fifo.m_line_size, std::memory_order_relaxed);
    Field(fifo.m_segment, offsetof(LineFifoHeader, line_count))
        .store(line_count, std::memory_order_release);
    return fifo;
}

std::uint64_t LineFifoWriter::ReadIndex() const {
    // Acquire: the reader has copied the lines before this index out of their slots.
    return Field(m_segment, offsetof(LineFifoHeader, read_index)).load(std::memory_order_acquire);
}

std::uint64_t LineFifoWriter::Waiting() const {
    if (!m_segment) {
        return 0;
    }
    const std::uint64_t read_index = ReadIndex();
    if (read_index >= m_line_count) {
        return m_line_count - 1;
    }
    return m_write_index >= read_index ? m_write_index - read_index
                                       : m_write_index + m_line_count - read_index;
}

std::uint64_t LineFifoWriter::Room() const {
    return m_segment ? m_line_count - 1 - Waiting() : 0;
}

bool LineFifoWriter::Push(std::span<const double> line) {
    if (Room() == 0) {
        return false;
    }
    auto* slot = static_cast<std::byte*>(m_segment.data()) + sizeof(LineFifoHeader) +
                 m_write_index * m_line_size;
    std::copy_n(reinterpret_cast<const std::byte*>(line.data()), line.size_bytes(), slot);
    m_write_index = m_write_index + 1 == m_line_count ? 0 : m_write_index + 1;
    // Release: a reader that sees the new index sees the whole line.
    Field(m_segment, offsetof(LineFifoHeader, write_index))
        .store(m_write_index, std::memory_order_release);
    return true;
}

bool LineFifoWriter::ReaderAttached() const {
    return m_segment && Field(m_segment, offsetof(LineFifoHeader, reader_mark))
                                .load(std::memory_order_relaxed) != 0;
}

bool LineFifoWriter::IsIntact() const {
    const auto holds = [this](std::size_t offset, std::uint64_t value) {
        return Field(m_segment, offset).load(std::memory_order_relaxed) == value;
    };
    return m_segment && m_segment.State() == platform::SegmentState::kWhole &&
           holds(offsetof(LineFifoHeader, line_size), m_line_size) &&
           holds(offsetof(LineFifoHeader, line_count), m_line_count) &&
           holds(offsetof(LineFifoHeader, write_index), m_write_index) &&
           ReadIndex() < m_line_count;
}

void LineFifoWriter::Clear() {
    if (!m_segment) {
        return;
    }
    const std::uint64_t read_index = ReadIndex();
    if (read_index < m_line_count) {
        m_write_index = read_index;
        Field(m_segment, offsetof(LineFifoHeader, write_index))
            .store(m_write_index, std::memory_order_release);
    }
}

}  // namespace wavo::master
