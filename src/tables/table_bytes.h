// The bytes of a table, one behind the other, unpacked on the way where they begin as a gzip file
// does. Memory does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/fault.h"

struct z_stream_s;

namespace wavo::tables {

/// How the bytes end.
enum class BytesEnd {
    kNotYet,
    kWhole,
    kCutOff,      ///< the gzip data ends before its end
    kDamaged,     ///< the gzip data is none, from somewhere on
    kUnreadable,  ///< reading failed
};

class TableBytes {
 public:
    /// Opens a file, or whatever else can be read under this name; `path` is UTF-8. The fault is
    /// "PATH: no such file" or "PATH: cannot be read".
    static Expected<std::unique_ptr<TableBytes>> Open(const std::string& path);

    /// The bytes of `text`, which is not copied and outlives this object.
    static std::unique_ptr<TableBytes> Of(std::string_view text);

    ~TableBytes();
    TableBytes(const TableBytes&) = delete;
    TableBytes& operator=(const TableBytes&) = delete;

    /// Reads up to `room.size()` bytes; 0 at the end, which End tells, and without room.
    std::size_t Read(std::span<char> room);

    [[nodiscard]] BytesEnd End() const { return m_end; }

    /// What is wrong with the end, in words; empty while nothing is.
    [[nodiscard]] std::string EndText() const;

    /// Bytes of the file that were read so far, as they are stored, and of all of it (0: unknown).
    [[nodiscard]] std::uint64_t Taken() const { return m_taken; }
    [[nodiscard]] std::uint64_t Size() const { return m_size; }

 private:
    TableBytes() = default;

    /// Makes m_stored hold something, unless the file has ended.
    void Refill();
    std::size_t Unpack(std::span<char> room);

    std::ifstream m_file;
    std::vector<char> m_buffer;  // empty when a text is read
    std::string_view m_stored;   // read, not yet given
    bool m_is_begun = false;
    bool m_is_read = false;                // no stored bytes are left
    std::unique_ptr<z_stream_s> m_packed;  // only of gzip
    bool m_member_ended = false;
    BytesEnd m_end = BytesEnd::kNotYet;
    std::uint64_t m_taken = 0;
    std::uint64_t m_size = 0;
};

}  // namespace wavo::tables
