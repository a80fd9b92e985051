#include "session/trigger_terms.h"

#include <algorithm>

#include "graph/record/run_state.h"

namespace wavo {

std::vector<ConditionTerm> TriggerTerms(const WavoGraph& graph, const StreamFinder& stream_of) {
    std::vector<ConditionTerm> terms;
    const std::size_t axes = std::min(graph.YCoorAxName.size(), graph.Triggers.size());
    for (std::size_t i = 0; i < axes; ++i) {
        const TriggerEntry& trigger = graph.Triggers[i];
        const bool is_above = trigger.TriggerType == TriggerTypeCode::kStartAbove ||
                              trigger.TriggerType == TriggerTypeCode::kStopAbove;
        const std::int32_t order =
            i < graph.YCoorAxDerivation.size() ? std::max(0, graph.YCoorAxDerivation[i]) : 0;
        History* const history = TestOfTrigger(trigger.TriggerType) == nullptr
                                     ? nullptr
                                     : stream_of(graph.YCoorAxName[i], order);
        if (history != nullptr) {
            terms.push_back({history, is_above ? TriggerSide::kAbove : TriggerSide::kBelow,
                             trigger.TriggerValue});
        }
    }
    return terms;
}

}  // namespace wavo
