// A crash, and how records name it.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace wavo::testing {

inline constexpr char kCrashName[] = "(SIGSEGV)";

/// Lets the crash leave nothing but its record. Before the crash hook is installed.
inline void PrepareToCrash() {
    const rlimit no_core{};
    ::setrlimit(RLIMIT_CORE, &no_core);
}

inline void CrashNow() {
    std::raise(SIGSEGV);
}

}  // namespace wavo::testing
