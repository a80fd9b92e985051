// Times as people read them.
#pragma once

#include <cstdint>
#include <string>

namespace wavo::recording {

/// "2026-08-01 14:03:22.250 UTC" of nanoseconds since the Unix epoch.
std::string UtcText(std::uint64_t time);

/// The same; of a time within a year of the epoch, as lines of tables have it that count from a
/// beginning of their own, the seconds: "22.250 s".
std::string MomentText(std::uint64_t time);

}  // namespace wavo::recording
