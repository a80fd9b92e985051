// The faults of recordings, as the user reads them.
#pragma once

#include <string>

#include "support/fault.h"

namespace wavo::recording {

/// Fault::code of all functions of this folder.
enum class RecordingFault : int {
    kCannotOpen = 1,    ///< the system refuses the file
    kCannotRead = 2,    ///< reading failed
    kCannotWrite = 3,   ///< making, writing or syncing failed
    kExists = 4,        ///< a file of this name is there, and is never replaced
    kNotRecording = 5,  ///< something else than a recording
    kUnsupported = 6,   ///< a recording that this program cannot show
    kDamaged = 7,       ///< nothing of it can be shown
    kUnusable = 8,      ///< what is to be recorded cannot be
};

Fault MakeFault(RecordingFault code, std::string text);

/// "cannot write "PATH": words of the system for the last error".
Fault SystemFault(RecordingFault code, const std::string& what, const std::string& path);

}  // namespace wavo::recording
