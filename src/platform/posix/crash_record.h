// Writing text in a signal handler: no memory is allocated, no lock taken, nothing formatted by
// the C library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace wavo::platform {

/// Puts lines together and writes each one to a file and to standard error.
class CrashRecord {
 public:
    /// `file`: descriptor of the file, -1 for none; not owned.
    explicit CrashRecord(int file) noexcept : m_file(file) {}

    CrashRecord& Text(std::string_view text) noexcept;
    CrashRecord& Decimal(std::uint64_t number, int digits = 1) noexcept;
    CrashRecord& Hex(std::uint64_t number) noexcept;
    /// UTC in ISO 8601 with milliseconds.
    CrashRecord& Time(const timespec& time) noexcept;
    /// Ends the line and writes it out.
    void EndLine() noexcept;

 private:
    const int m_file;
    std::size_t m_size = 0;
    std::array<char, 2048> m_line{};
};

}  // namespace wavo::platform
