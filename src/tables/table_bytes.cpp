#include "tables/table_bytes.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>

#include "platform/file.h"
#include "platform/file_name.h"
#include "support/file_name.h"

namespace wavo::tables {

namespace {

constexpr std::size_t kStoredPiece = std::size_t{1} << 16U;
constexpr std::string_view kGzipMagic = "\x1f\x8b";

}  // namespace

Expected<std::unique_ptr<TableBytes>> TableBytes::Open(const std::string& path) {
    if (!IsFileName(path)) {
        return Fault{path + ": cannot be read" + FileNameFault(path)};
    }
    if (!platform::Files().Exists(path)) {
        return Fault{path + ": no such file"};
    }
    const std::filesystem::path file = platform::StreamPath(path);
    std::error_code failure;
    std::unique_ptr<TableBytes> bytes(new TableBytes);
    bytes->m_file.open(file, std::ios::binary);
    if (!bytes->m_file || std::filesystem::is_directory(file, failure)) {
        return Fault{path + ": cannot be read"};
    }
    const std::uintmax_t size = std::filesystem::file_size(file, failure);
    bytes->m_size = failure ? 0 : size;
    bytes->m_buffer.resize(kStoredPiece);
    return bytes;
}

std::unique_ptr<TableBytes> TableBytes::Of(std::string_view text) {
    std::unique_ptr<TableBytes> bytes(new TableBytes);
    bytes->m_stored = text;
    bytes->m_taken = bytes->m_size = text.size();
    bytes->m_is_read = true;
    return bytes;
}

TableBytes::~TableBytes() {
    if (m_packed != nullptr) {
        inflateEnd(m_packed.get());
    }
}

void TableBytes::Refill() {
    if (!m_stored.empty() || m_is_read) {
        return;
    }
    m_file.read(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
    m_stored = {m_buffer.data(), static_cast<std::size_t>(m_file.gcount())};
    m_taken += m_stored.size();
    if (!m_file) {
        m_is_read = true;
        if (m_file.bad() || !m_file.eof()) {
            m_end = BytesEnd::kUnreadable;
        }
    }
}

std::size_t TableBytes::Read(std::span<char> room) {
    if (room.empty() || m_end != BytesEnd::kNotYet) {
        return 0;
    }
    Refill();
    if (!m_is_begun) {
        m_is_begun = true;
        if (m_stored.starts_with(kGzipMagic)) {
            constexpr int kGzipOnly = 16 + MAX_WBITS;
            m_packed = std::make_unique<z_stream>();
            inflateInit2(m_packed.get(), kGzipOnly);  // without memory, inflate fails
        }
    }
    if (m_packed != nullptr) {
        return Unpack(room);
    }
    const std::size_t count = std::min(room.size(), m_stored.size());
    std::copy_n(m_stored.data(), count, room.data());
    m_stored.remove_prefix(count);
    if (count == 0 && m_end == BytesEnd::kNotYet) {
        m_end = BytesEnd::kWhole;
    }
    return count;
}

std::size_t TableBytes::Unpack(std::span<char> room) {
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    while (m_end == BytesEnd::kNotYet) {
        Refill();
        if (m_end != BytesEnd::kNotYet) {
            break;
        }
        if (m_member_ended) {
            if (m_stored.empty()) {
                m_end = BytesEnd::kWhole;
                break;
            }
            inflateReset(m_packed.get());
        }
        // zlib does not write to its input.
        m_packed->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(m_stored.data()));
        m_packed->avail_in = static_cast<uInt>(std::min(m_stored.size(), kMost));
        m_packed->next_out = reinterpret_cast<Bytef*>(room.data());
        m_packed->avail_out = static_cast<uInt>(std::min(room.size(), kMost));
        const uInt had = m_packed->avail_in;
        const uInt free = m_packed->avail_out;
        const int state = inflate(m_packed.get(), Z_NO_FLUSH);
        m_stored.remove_prefix(had - m_packed->avail_in);
        m_member_ended = state == Z_STREAM_END;
        const std::size_t count = free - m_packed->avail_out;
        if (state != Z_OK && state != Z_STREAM_END && state != Z_BUF_ERROR) {
            m_end = BytesEnd::kDamaged;
        } else if (had == 0 && count == 0) {
            m_end = BytesEnd::kCutOff;
        }
        if (count > 0) {
            return count;
        }
    }
    return 0;
}

std::string TableBytes::EndText() const {
    switch (m_end) {
        case BytesEnd::kNotYet:
        case BytesEnd::kWhole:
            return {};
        case BytesEnd::kCutOff:
        case BytesEnd::kDamaged:
            return "the gzip data is damaged or cut off";
        case BytesEnd::kUnreadable:
            return "cannot be read";
    }
    return {};
}

}  // namespace wavo::tables
