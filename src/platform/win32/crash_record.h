// Writing text while the process crashes: no memory is allocated, no lock taken, nothing formatted
// by the C library.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wavo::platform {

/// Puts lines together and writes each one to a file and to standard error.
class CrashRecord {
 public:
    /// `file`: open for appending, null for none; not owned.
    explicit CrashRecord(HANDLE file) noexcept : m_file(file) {}

    CrashRecord& Text(std::string_view text) noexcept;
    CrashRecord& Decimal(std::uint64_t number, int digits = 1) noexcept;
    CrashRecord& Hex(std::uint64_t number) noexcept;
    /// UTC in ISO 8601 with milliseconds.
    CrashRecord& Time(const SYSTEMTIME& time) noexcept;
    /// Ends the line and writes it out.
    void EndLine() noexcept;

 private:
    const HANDLE m_file;
    std::size_t m_size = 0;
    std::array<char, 2048> m_line{};
};

}  // namespace wavo::platform
