// A request to end this process, as the parts of this folder share it.
#pragma once

#include <windows.h>

namespace wavo::platform {

/// Notes that the end of this process was requested. Any thread.
void RequestTermination() noexcept;

/// Ends one wait per request; null before WatchTerminationRequests.
HANDLE TerminationEvent() noexcept;

}  // namespace wavo::platform
