// Putting text together while the process crashes: no memory is allocated, no lock taken, nothing
// formatted by the C library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wavo::platform {

/// A point in time, UTC.
struct CrashTime {
    std::uint64_t year = 0;
    std::uint64_t month = 0;  ///< from 1
    std::uint64_t day = 0;    ///< from 1
    std::uint64_t hour = 0;
    std::uint64_t minute = 0;
    std::uint64_t second = 0;
    std::uint64_t millisecond = 0;
};

/// Puts lines together; each goes to Write as a whole. What is too long for a line falls away.
class CrashLine {
 public:
    CrashLine(const CrashLine&) = delete;
    CrashLine& operator=(const CrashLine&) = delete;

    CrashLine& Text(std::string_view text) noexcept;
    CrashLine& Decimal(std::uint64_t number, int digits = 1) noexcept;
    CrashLine& Hex(std::uint64_t number) noexcept;
    /// In ISO 8601 with milliseconds.
    CrashLine& Time(const CrashTime& time) noexcept;
    /// Ends the line and writes it out.
    void EndLine() noexcept;

 protected:
    /// `line_end`: what the system ends lines with; outlives this object.
    explicit CrashLine(std::string_view line_end) noexcept : m_line_end(line_end) {}
    ~CrashLine() = default;

    virtual void Write(std::string_view line) noexcept = 0;

 private:
    const std::string_view m_line_end;
    std::size_t m_size = 0;
    std::array<char, 2048> m_line{};
};

}  // namespace wavo::platform
