// Where the text of a crash goes, from a signal handler.
#pragma once

#include <ctime>
#include <string_view>

#include "platform/crash_line.h"

namespace wavo::platform {

/// Writes each line to a file and to standard error.
class CrashRecord final : public CrashLine {
 public:
    /// `file`: descriptor of the file, -1 for none; not owned.
    explicit CrashRecord(int file) noexcept : CrashLine("\n"), m_file(file) {}

 private:
    void Write(std::string_view line) noexcept override;

    const int m_file;
};

/// May be called in a signal handler.
CrashTime UtcOf(const timespec& time) noexcept;

}  // namespace wavo::platform
