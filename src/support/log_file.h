// A log file with a size limit and one previous generation, <name>.1.
//
// Several processes may write to one file: each line goes out as one append, and the file is
// opened for each line, so nobody writes into one that another process has moved aside.
// No function throws or reports: a log that cannot be written has nowhere to say so. The caller is
// told.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wavo::diagnostics {

/// Moves the file aside when it has reached `limit` bytes; where that is refused, it is emptied.
void RotateLog(const std::string& path, std::size_t limit) noexcept;

/// Appends `line`, which carries its line end. A file that would grow beyond `limit` is moved aside
/// first, or else emptied; where both are refused the line is dropped. A line longer than the limit
/// has a file of its own. Behind the half line that a full disk has left, `line` begins on a new
/// one. False when the line was not written, or not whole.
bool AppendToLog(const std::string& path, std::string_view line, std::size_t limit) noexcept;

}  // namespace wavo::diagnostics
