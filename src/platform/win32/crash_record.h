// Where the text of a crash goes.
#pragma once

#include <windows.h>

#include <string_view>

#include "platform/crash_line.h"

namespace wavo::platform {

/// Writes each line to a file and to standard error.
class CrashRecord final : public CrashLine {
 public:
    /// `file`: open for appending, null for none; not owned.
    explicit CrashRecord(HANDLE file) noexcept : CrashLine("\r\n"), m_file(file) {}

 private:
    void Write(std::string_view line) noexcept override;

    const HANDLE m_file;
};

CrashTime UtcNow() noexcept;

}  // namespace wavo::platform
