#include "support/fast_file.h"

#include <cassert>
#include <cstring>
#include <stdexcept>

#include "platform/last_error.h"
#include "support/byte_scan.h"
#include "support/diagnostics.h"
#include "support/report_texts.h"

namespace wavo {

namespace {

using platform::FileHandle;
using platform::Files;
using platform::LastError;

/// What no file has as its handle, under the name that assertions show.
constexpr FileHandle INVALID_HANDLE_VALUE = platform::kInvalidFile;

constexpr char kCarriageReturn = '\r';
constexpr char kLineFeed = '\n';

}  // namespace

bool openfile(const std::string& path, int /*unused*/, FileHandle& file) {
    file = Files().OpenForReading(path);
    if (file == platform::kInvalidFile) {
        MERRTRACE(support_texts::kFileNotOpened, path.c_str(), LastError());
        return false;
    }
    return true;
}

bool read64(FileHandle file, void* data, std::size_t size, std::size_t& count) {
    count = 0;
    if (!Files().Read(file, data, size, count)) {
        MERRTRACE(support_texts::kReadFailed, "read64", static_cast<unsigned>(LastError()));
        count = 0;
        return false;
    }
    return true;
}

MFastFile::~MFastFile() = default;

MFastFileReader::~MFastFileReader() {
    if (!MFastFileReader::Close()) {
        MERRTRACE(support_texts::kReaderNotClosed);
    }
}

bool MFastFileReader::Open(const std::string& path) {
    Close();
    if (!openfile(path, 0, hFile)) {
        MERRTRACE(support_texts::kReaderNotOpened, path.c_str(), LastError());
        return false;
    }
    m_file_name = path;
    m_state = 0;
    m_has_failed = false;
    m_current = m_buffer.data();
    m_end = m_buffer.data();
    return true;
}

bool MFastFileReader::Close() {
    if (m_state == -1) {
        return true;
    }
    m_file_name.clear();
    const bool closed = Files().Close(hFile);
    if (!closed) {
        MERRTRACE(support_texts::kReaderCloseFailed, LastError());
    }
    hFile = platform::kInvalidFile;
    m_state = -1;
    // What is left in the buffer belongs to no file.
    m_current = m_end;
    return closed;
}

bool MFastFileReader::fill_buffer() {
    assert(hFile != INVALID_HANDLE_VALUE);
    std::size_t count = 0;
    if (!read64(hFile, m_buffer.data(), m_buffer.size(), count)) {
        MERRTRACE(support_texts::kBufferNotFilled);
        m_has_failed = true;
        return false;
    }
    if (count > 0) {
        m_current = m_buffer.data();
        m_end = m_current + count;
    }
    return true;
}

bool MFastFileReader::IsEOFAtBufferEnd() {
    if (m_state == -1) {
        MERRLOG(support_texts::kEndWithoutFile);
        return true;
    }
    MErrTrace_BeginContext();
    if (!fill_buffer()) {
        MERRLOG(support_texts::kEndNotRead);
        MErrTrace_ClearContext();
    }
    MErrTrace_EndContext();
    return m_current == m_end;
}

bool MFastFileReader::SkipLineFeed() {
    if (m_current == m_end && !fill_buffer()) {
        MERRTRACE(support_texts::kLineFeedNotRead);
        return false;
    }
    if (m_current != m_end && *m_current == kLineFeed) {
        ++m_current;
    }
    return true;
}

bool MFastFileReader::ReadLine(std::string& line) {
    line.clear();
    for (;;) {
        if (m_current == m_end) {
            if (!fill_buffer()) {
                MERRTRACE(support_texts::kLineNotRead);
                return false;
            }
            if (m_current == m_end) {
                return true;
            }
        }
        const char* const begin = m_current;
        m_current = bytes::FindEither(begin, m_end, kCarriageReturn, kLineFeed);
        try {
            line.append(begin, m_current);
        } catch (const std::exception&) {  // no memory, or longer than a string can be
            MERRTRACE("MFastFileReader::ReadLine(STL): out of memory");
            return false;
        }
        if (m_current != m_end) {
            return *m_current++ != kCarriageReturn || SkipLineFeed();
        }
    }
}

MFastFileReader::Line MFastFileReader::AppendLine(TextBuffer& text, std::size_t limit) {
    for (;;) {
        if (m_current == m_end) {
            if (!fill_buffer()) {
                MERRTRACE(support_texts::kLineNotRead);
                return Line::kFailed;
            }
            if (m_current == m_end) {
                return Line::kWhole;
            }
        }
        const char* const begin = m_current;
        const char* const found = bytes::FindEither(begin, m_end, kCarriageReturn, kLineFeed);
        const auto length = static_cast<std::size_t>(found - begin);
        const bool is_cut = length > limit;
        const std::size_t taken = is_cut ? limit : length;
        if (!text.Reserve(taken)) {
            return Line::kOutOfMemory;
        }
        // Most lines are short: a copy of fixed size is done in place.
        if (taken <= TextBuffer::kSlack && m_buffer.data() + m_buffer.size() - begin >=
                                               static_cast<std::ptrdiff_t>(TextBuffer::kSlack)) {
            std::memcpy(text.data() + text.size(), begin, TextBuffer::kSlack);
        } else {
            std::memcpy(text.data() + text.size(), begin, taken);
        }
        text.SetSize(text.size() + taken);
        m_current = begin + taken;
        if (is_cut) {
            return Line::kCut;
        }
        limit -= taken;
        if (m_current != m_end) {
            return *m_current++ != kCarriageReturn || SkipLineFeed() ? Line::kWhole : Line::kFailed;
        }
    }
}

std::uint64_t MFastFileReader::FileSize() const {
    return m_state == 0 ? Files().Size(hFile) : 0;
}

}  // namespace wavo
