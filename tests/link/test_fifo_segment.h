// A line FIFO in a fake segment, written as a master would.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "fake_shared_memory.h"
#include "link/wire_format.h"

namespace wavo::testing {

class FifoSegment {
 public:
    FifoSegment(const std::string& name, std::uint64_t lines, std::uint64_t doubles_per_line)
        : m_doubles(doubles_per_line) {
        std::byte* const memory = AddFakeSegment(
            name, sizeof(LineFifoHeader) + lines * doubles_per_line * sizeof(double));
        m_header = new (memory) LineFifoHeader{};
        m_header->line_count = lines;
        m_header->line_size = doubles_per_line * sizeof(double);
    }

    LineFifoHeader& header() { return *m_header; }

    /// Writes a line of value, value + 1, ... into the next slot.
    void Write(double value) {
        std::vector<double> line(m_doubles);
        for (std::size_t i = 0; i < line.size(); ++i) {
            line[i] = value + static_cast<double>(i);
        }
        auto* const data = reinterpret_cast<std::byte*>(m_header + 1);
        std::memcpy(data + m_header->write_index * m_header->line_size, line.data(),
                    line.size() * sizeof(double));
        m_header->write_index = (m_header->write_index + 1) % m_header->line_count;
    }

 private:
    std::uint64_t m_doubles;
    LineFifoHeader* m_header;
};

}  // namespace wavo::testing
