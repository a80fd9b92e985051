#include "link/ax_value_reader.h"

#include <algorithm>
#include <vector>

#include "link/report_texts.h"
#include "link/shared_mem.h"
#include "support/diagnostics.h"

namespace wavo {

bool AxValueReader::Open(const char* name) {
    if (m_open || m_segment != nullptr) {
        Close();
    }
    if (name == nullptr) {
        MERRTRACE(link_texts::kOpenWithoutName);
        return false;
    }
    m_name = name;
    m_segment = MSharedMem_Link(m_name);
    if (m_segment == nullptr) {
        MERRTRACE(link_texts::kSegmentNotLinked, m_name.c_str());
        return false;
    }
    if (!MMemLineFifo_Link(m_segment, MSharedMem_Size(m_segment), m_fifo)) {
        MERRTRACE(link_texts::kFifoNotLinked);
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
        MERRLOG(link_texts::kReadWhileClosed);
        return false;
    }
    m_copied = 0;
    if (m_damaged || FindDamage(false)) {
        return false;
    }
    if (line_length > m_fifo.line_size) {
        MERRLOG("AxValueReader::Read(): lines of %zu bytes do not fit into slots of %zu bytes",
                line_length, static_cast<std::size_t>(m_fifo.line_size));
        m_damaged = true;
        return false;
    }
    if (line_length != 0 && line_count > capacity / line_length) {
        // More lines than slots never wait.
        ThrowAway(line_length, std::min(line_count, m_fifo.line_count));
        FindDamage(true);
        return false;
    }
    m_copied = ReadFromFifo(static_cast<std::byte*>(buffer), line_length, line_count);
    if (FindDamage(true)) {
        m_thrown_away += m_copied;  // some of them may be zeros that nobody wrote
        return false;
    }
    return true;
}

void AxValueReader::ThrowAway(std::size_t line_length, std::uint64_t line_count) {
    constexpr std::size_t kPiece = std::size_t{1} << 20U;  // bytes, or one line
    const std::uint64_t most = std::max<std::uint64_t>(kPiece / line_length, 1);
    std::vector<std::byte> scratch(line_length * most);
    while (line_count > 0) {
        const std::uint64_t wanted = std::min(line_count, most);
        const std::uint64_t read = ReadFromFifo(scratch.data(), line_length, wanted);
        m_thrown_away += read;
        line_count -= wanted;
        if (read < wanted) {
            return;
        }
    }
}

std::uint64_t AxValueReader::ReadFromFifo(std::byte* buffer, std::size_t line_length,
                                          std::uint64_t line_count) {
    const std::uint64_t read = MMemLineFifo_Read(m_fifo, buffer, line_length, line_count);
    if (read < line_count) {
        MERRLOG(link_texts::kFifoEmpty);
        return read;
    }
    MTRACE(4, link_texts::kLinesRead, static_cast<unsigned>(line_count));
    return read;
}

bool AxValueReader::FindDamage(bool while_reading) {
    const platform::SegmentState state = MSharedMem_State(m_segment);
    if (state == platform::SegmentState::kResized) {
        MERRLOG("AxValueReader::Read(): value fifo %.40s has changed its size", m_name.c_str());
    } else if (state == platform::SegmentState::kRemoved && !while_reading) {
        MERRLOG("AxValueReader::Read(): value fifo %.40s was removed or replaced", m_name.c_str());
    } else if (!MMemLineFifo_IsIntact(m_fifo)) {
        MERRLOG("AxValueReader::Read(): the header of value fifo %.40s is damaged", m_name.c_str());
    } else {
        return false;
    }
    m_damaged = true;
    return true;
}

void AxValueReader::Close() {
    if (m_segment != nullptr) {
        if (m_open) {
            MMemLineFifo_Release(m_fifo);
        }
        if (!MSharedMem_Unlink(m_segment)) {
            MErrTrace_Dump();
            MERRLOG(link_texts::kSegmentNotUnlinked);
        }
        m_segment = nullptr;
        m_fifo = {};
    }
    m_open = false;
    m_damaged = false;
    m_name.clear();
}

}  // namespace wavo
