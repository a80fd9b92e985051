// The calls that led to the current place, in words.
#pragma once

#include <cstdint>

#include "platform/posix/crash_record.h"

namespace wavo::platform {

/// Writes one line per call, the innermost first: function, file and line as far as the program
/// carries them, module and offset. Begins at the instruction `start` when the stack leads there,
/// else at the caller. `demangle`: names as they stand in the source, which allocates memory.
///
/// Takes locks of the loader: to be called in a process of its own that may hang or fail.
void WriteBacktrace(CrashRecord* record, std::uintptr_t start, bool demangle);

}  // namespace wavo::platform
