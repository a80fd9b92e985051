#include "graph/record/run_state.h"

#include <cstddef>
#include <limits>
#include <optional>

#include "graph/values/trigger_test.h"

namespace wavo {

const char* StatusText(RunState state) {
    switch (state) {
        case RunState::kRunning:
            return "";
        case RunState::kWaitingForStart:
            return "waiting for start-trigger  ";
        case RunState::kRunningAfterStart:
            return "running after start-trigger  ";
        case RunState::kStoppedAfterStart:
            return "stopped after start-trigger  ";
        case RunState::kWaitingForStop:
            return "running, waiting for stop-trigger  ";
        case RunState::kStoppedAfterStop:
            return "stopped after stop-trigger  ";
    }
    return "";
}

namespace {

bool FindFirst(const std::vector<double>& values, std::uint64_t& index, TriggerSide side,
               double limit) {
    const std::optional<std::size_t> first = FirstBeyond(values, side, limit);
    index = first.value_or(std::numeric_limits<std::uint64_t>::max());
    return first.has_value();
}

}  // namespace

bool TestTriggerGreater(const std::vector<double>& values, std::uint64_t& index, double limit) {
    return FindFirst(values, index, TriggerSide::kAbove, limit);
}

bool TestTriggerLess(const std::vector<double>& values, std::uint64_t& index, double limit) {
    return FindFirst(values, index, TriggerSide::kBelow, limit);
}

TriggerTest TestOfTrigger(TriggerTypeCode type) {
    if (!IsTrigger(type)) {
        return nullptr;
    }
    return FiresAbove(type) ? &TestTriggerGreater : &TestTriggerLess;
}

std::optional<RunState> InitialRunState(TriggerTypeCode type) {
    if (IsStartTrigger(type)) {
        return RunState::kWaitingForStart;
    }
    return IsStopTrigger(type) ? std::optional(RunState::kWaitingForStop) : std::nullopt;
}

}  // namespace wavo
