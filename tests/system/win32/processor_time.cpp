#include "processor_time.h"

#include <windows.h>

#include <cstdint>

namespace wavo::testing {

namespace {

std::chrono::nanoseconds DurationOf(const FILETIME& time) {
    constexpr int kUnit = 100;  // ns
    const std::uint64_t units =
        std::uint64_t{time.dwHighDateTime} << 32U | std::uint64_t{time.dwLowDateTime};
    return std::chrono::nanoseconds(units * kUnit);
}

}  // namespace

std::chrono::nanoseconds ThreadProcessorTime() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME in_system{};
    FILETIME in_program{};
    ::GetThreadTimes(::GetCurrentThread(), &created, &ended, &in_system, &in_program);
    return DurationOf(in_system) + DurationOf(in_program);
}

}  // namespace wavo::testing
