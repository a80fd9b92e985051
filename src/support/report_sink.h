// Where the diagnostics hand their reports over to the output.
#pragma once

#include <chrono>

#include "support/diagnostics_output.h"

namespace wavo::diagnostics {

/// Largest size in bytes of a report's text; longer ones are cut.
inline constexpr std::size_t kLargestText = 8000;

/// Writes a report to file, standard error and observer. `level` counts for traces only.
/// Does not throw; leaves the last system error number as it is.
void Emit(const Report& report, unsigned level,
          std::chrono::system_clock::time_point time) noexcept;

}  // namespace wavo::diagnostics
