// Programs that are asked something, and this program itself.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace wavo::platform {

/// Starts a program, which is looked for where the shell would, and waits for its end. Returns what
/// it wrote to standard output; nothing when it cannot be started or its exit status is not 0. Its
/// standard input is empty, and what it writes to standard error is dropped.
std::optional<std::string> OutputOf(const std::vector<std::string>& command);

/// Path of the file of this program; empty when it cannot be told.
std::string ProgramPath();

}  // namespace wavo::platform
