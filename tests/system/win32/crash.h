// A crash, and how records name it.
#pragma once

#include <windows.h>

namespace wavo::testing {

inline constexpr char kCrashName[] = "(access violation)";

inline void CrashNow() {
    ::SetErrorMode(SEM_NOGPFAULTERRORBOX);  // end without a box
    auto* volatile nowhere = reinterpret_cast<int*>(0x40);
    *nowhere = 1;
}

}  // namespace wavo::testing
