// Whether a graph records, waits or has stopped, and the tests that move it on.
//
// A graph without triggers stays in kRunning. With a start trigger it goes 2 -> 3 -> 4, with a stop
// trigger 5 -> 6; a restart brings it back to the first state of its road. The numbers are those
// that other parts of the program compare with.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "graph/model/wavo_graph.h"

namespace wavo {

enum class RunState : std::int32_t {
    kRunning = 1,            ///< no trigger
    kWaitingForStart = 2,    ///< values are tested and thrown away
    kRunningAfterStart = 3,  ///< recording since the start trigger
    kStoppedAfterStart = 4,  ///< the recording is complete
    kWaitingForStop = 5,     ///< recording until the stop trigger
    kStoppedAfterStop = 6,   ///< the stop trigger ended the recording
};

/// A trigger has ended the recording.
inline bool IsStopped(RunState state) {
    return state == RunState::kStoppedAfterStart || state == RunState::kStoppedAfterStop;
}

/// Text that a graph shows for its state, ending in two blanks; empty for kRunning.
const char* StatusText(RunState state);

/// Tests values against a limit. `index` becomes the position of the first value that fires, or
/// the largest number when none does. Levels count, not crossings: a value that is already beyond
/// the limit fires. NaN never fires.
using TriggerTest = bool (*)(const std::vector<double>& values, std::uint64_t& index, double limit);

bool TestTriggerGreater(const std::vector<double>& values, std::uint64_t& index, double limit);
bool TestTriggerLess(const std::vector<double>& values, std::uint64_t& index, double limit);

/// The test of a trigger type; null for a type without one (none, or not known).
TriggerTest TestOfTrigger(TriggerTypeCode type);

/// The state that a graph with this trigger begins in; nothing for a type that sets none.
std::optional<RunState> InitialRunState(TriggerTypeCode type);

}  // namespace wavo
