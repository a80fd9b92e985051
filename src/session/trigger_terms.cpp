#include "session/trigger_terms.h"

#include <algorithm>
#include <optional>

namespace wavo {

namespace {

/// Nothing for what is no trigger.
std::optional<TriggerSide> SideOf(TriggerTypeCode type) {
    switch (type) {
        case TriggerTypeCode::kStartAbove:
        case TriggerTypeCode::kStopAbove:
            return TriggerSide::kAbove;
        case TriggerTypeCode::kStartBelow:
        case TriggerTypeCode::kStopBelow:
            return TriggerSide::kBelow;
        case TriggerTypeCode::kNone:
            break;
    }
    return std::nullopt;
}

}  // namespace

std::vector<ConditionTerm> TriggerTerms(const WavoGraph& graph, const StreamFinder& stream_of) {
    std::vector<ConditionTerm> terms;
    const std::size_t axes = std::min(graph.YCoorAxName.size(), graph.Triggers.size());
    for (std::size_t i = 0; i < axes; ++i) {
        const TriggerEntry& trigger = graph.Triggers[i];
        const std::optional<TriggerSide> side = SideOf(trigger.TriggerType);
        const std::int32_t order =
            i < graph.YCoorAxDerivation.size() ? std::max(0, graph.YCoorAxDerivation[i]) : 0;
        History* const history = side ? stream_of(graph.YCoorAxName[i], order) : nullptr;
        if (history != nullptr) {
            terms.push_back({history, *side, trigger.TriggerValue});
        }
    }
    return terms;
}

}  // namespace wavo
