// A crash, and how records name it.
#pragma once

#include <windows.h>

namespace wavo::testing {

inline constexpr char kCrashName[] = "(access violation)";

/// Lets the crash leave nothing but its record. Before the crash hook is installed, which goes on
/// to what was there before it.
inline void PrepareToCrash() {
    ::SetUnhandledExceptionFilter(
        [](EXCEPTION_POINTERS*) -> LONG { return EXCEPTION_EXECUTE_HANDLER; });
}

inline void CrashNow() {
    auto* volatile nowhere = reinterpret_cast<int*>(0x40);
    *nowhere = 1;
}

}  // namespace wavo::testing
