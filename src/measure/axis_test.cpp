#include "measure/axis_test.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "measure/words.h"

namespace wavo::measure {

namespace {

constexpr std::string_view kCommandedEnding = "_cmd";

void TakeDwells(AxisResult* result) {
    if (result->reversals.empty()) {
        result->mean_dwell = result->longest_dwell = Figure::Not("no reversals");
        return;
    }
    double sum = 0.0;
    double longest = *result->reversals.front().dwell;
    for (const ReversalDwell& reversal : result->reversals) {
        sum += *reversal.dwell;
        longest = std::max(longest, *reversal.dwell);
    }
    result->mean_dwell = sum / static_cast<double>(result->reversals.size());
    result->longest_dwell = longest;
}

std::vector<std::string> AxisNotes(std::span<const double> commanded,
                                   std::span<const double> actual, const AxisResult& result) {
    std::vector<std::string> notes;
    const std::array<std::span<const double>, 2> columns{commanded, actual};
    const auto whole = WholeStretches(columns);
    std::size_t kept = 0;
    for (const Stretch& stretch : whole) {
        kept += stretch.Size();
    }
    if (kept < commanded.size()) {
        notes.push_back(Words("gaps: %zu of %zu lines are missing or not numbers",
                              commanded.size() - kept, commanded.size()));
    }
    if (!result.following.lag) {
        notes.push_back("lag: " + result.following.lag.reason);
    } else if (result.following.samples == LagSamples::kMoving) {
        notes.emplace_back(
            "lag: no 0.2 s of constant speed; taken while moving, which acceleration biases");
    }
    if (result.motion.not_counted > 0) {
        notes.push_back(
            Words("%zu changes of the commanded value stand too close together for a "
                  "step or a move",
                  result.motion.not_counted));
    }
    for (const Move& move : result.motion.moves) {
        if (!move.settling) {
            notes.push_back(Words("the move that ends at line %zu does not settle", move.last));
        }
    }
    return notes;
}

}  // namespace

std::vector<AxisPair> FindAxisPairs(std::span<const std::string> names) {
    std::vector<AxisPair> pairs;
    for (const std::string& name : names) {
        if (!name.ends_with(kCommandedEnding) || name.size() == kCommandedEnding.size()) {
            continue;
        }
        const std::string axis = name.substr(0, name.size() - kCommandedEnding.size());
        for (const char* ending : {"_act", "_fb", ""}) {
            const std::string actual = axis + ending;
            if (std::ranges::find(names, actual) != names.end()) {
                pairs.push_back({axis, name, actual});
                break;
            }
        }
    }
    return pairs;
}

Steps<AxisResult> TestAxisInSteps(std::span<const double> commanded, std::span<const double> actual,
                                  double cycle_time, AxisSetup setup) {
    AxisResult result;
    result.cycle_time = cycle_time;
    result.lines = commanded.size();
    result.following = FollowingErrorOf(commanded, actual, cycle_time, {0, commanded.size()});
    if (setup.rotary) {
        result.following.linear_gain = Figure::Not("a rotary axis");
    }
    co_await Pause{};
    result.motion = FindStepsAndMoves(commanded, actual, cycle_time, setup.step);
    co_await Pause{};
    result.reversals = FindReversalDwells(commanded, actual, cycle_time, setup.reversal_window);
    TakeDwells(&result);
    co_await Pause{};
    result.response = setup.response
                          ? FrequencyResponseOf(commanded, actual, cycle_time, setup.response_setup)
                          : Told<FrequencyResponse>::Not("not asked for");
    co_await Pause{};
    result.notes = AxisNotes(commanded, actual, result);
    co_return result;
}

AxisResult TestAxis(std::span<const double> commanded, std::span<const double> actual,
                    double cycle_time, const AxisSetup& setup) {
    return TestAxisInSteps(commanded, actual, cycle_time, setup).Compute();
}

}  // namespace wavo::measure
