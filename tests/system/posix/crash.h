// A crash, and how records name it.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace wavo::testing {

inline constexpr char kCrashName[] = "(SIGSEGV)";

inline void CrashNow() {
    const rlimit no_core{};
    ::setrlimit(RLIMIT_CORE, &no_core);
    std::raise(SIGSEGV);
}

}  // namespace wavo::testing
