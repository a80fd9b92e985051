// Checks a recording from its first to its last byte.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/fault.h"

namespace wavo::recording {

struct VerifyReport {
    std::uint64_t lines = 0;   ///< that are there and whole
    std::uint64_t chunks = 0;  ///< that are whole
    std::uint64_t bytes = 0;   ///< of the file
    bool is_complete = false;  ///< it was ended in order
    /// "recording was cut off at ..."; empty when it is complete.
    std::string cut_off;
    /// What is wrong, in words; a recording that was only cut off has nothing wrong.
    std::vector<std::string> findings;
};

/// Told how far it is, in bytes; false ends the check.
using VerifyProgress = std::function<bool(std::uint64_t done, std::uint64_t all)>;

/// Checks every CRC, the order of the lines, indexes against what they tell of, and levels against
/// the lines. The fault is that of opening it.
Expected<VerifyReport> VerifyRecording(const std::string& path, const VerifyProgress& progress);

}  // namespace wavo::recording
