#include "link/ax_value_reader.h"

#include <algorithm>
#include <vector>

#include "link/shared_mem.h"
#include "support/diagnostics.h"

namespace wavo {

bool AxValueReader::Open(const char* name) {
    if (m_open || m_segment != nullptr) {
        Close();
    }
    if (name == nullptr) {
        MERRTRACE("Open(): Null pointer for name");
        return false;
    }
    m_name = name;
    m_segment = MSharedMem_Link(m_name);
    if (m_segment == nullptr) {
        MERRTRACE("Open(): MSharedMem_Link(%.40s) failed", m_name.c_str());
        return false;
    }
    if (!MMemLineFifo_Link(m_segment, MSharedMem_Size(m_segment), m_fifo)) {
        MERRTRACE("Open(): MMemLineFifo_Link() failed");
        return false;
    }
    m_open = true;
    return true;
}

std::uint64_t AxValueReader::LinesWaiting() const {
    return m_open ? MMemLineFifo_Waiting(m_fifo) : 0;
}

bool AxValueReader::Read(void* buffer, std::size_t line_length, std::uint64_t line_count,
                         std::size_t capacity) {
    if (!m_open) {
        MERRLOG("Write(): interface is not open");
        return false;
    }
    if (!MMemLineFifo_IsIntact(m_fifo)) {
        MERRLOG("AxValueReader::Read(): the header of value fifo %.40s is damaged", m_name.c_str());
        return false;
    }
    if (line_length > m_fifo.line_size) {
        MERRLOG("AxValueReader::Read(): lines of %zu bytes do not fit into slots of %zu bytes",
                line_length, static_cast<std::size_t>(m_fifo.line_size));
        return false;
    }
    if (line_length != 0 && line_count > capacity / line_length) {
        // More lines than slots never wait, which bounds the scratch area by the segment's size.
        const std::uint64_t count = std::min(line_count, m_fifo.line_count);
        std::vector<std::byte> scratch(3 * line_length * count);
        ReadFromFifo(scratch.data(), line_length, count);
        return false;
    }
    ReadFromFifo(static_cast<std::byte*>(buffer), line_length, line_count);
    return true;
}

void AxValueReader::ReadFromFifo(std::byte* buffer, std::size_t line_length,
                                 std::uint64_t line_count) {
    if (MMemLineFifo_Read(m_fifo, buffer, line_length, line_count) < line_count) {
        MERRLOG("AxValueReader::ReadFromFifo(): value fifo is empty");
        return;
    }
    MTRACE(4, "AxValueReader::ReadFromFifo(): read %u lines from main prg.",
           static_cast<unsigned>(line_count));
}

void AxValueReader::Close() {
    if (m_segment != nullptr) {
        if (m_open) {
            MMemLineFifo_Release(m_fifo);
        }
        if (!MSharedMem_Unlink(m_segment)) {
            MErrTrace_Dump();
            MERRLOG("Close(): MSharedMem_Unlink() failed");
        }
        m_segment = nullptr;
        m_fifo = {};
    }
    m_open = false;
    m_name.clear();
}

}  // namespace wavo
