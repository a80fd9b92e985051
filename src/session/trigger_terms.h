// The triggers of a graph as a condition that is looked for in the past.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/values/condition_search.h"

namespace wavo {

/// The past of an axis with an order of derivation; null where there is none.
using StreamFinder = std::function<History*(const std::string& axis, std::int32_t order)>;

/// A term per trigger of the graph whose axis has a past.
std::vector<ConditionTerm> TriggerTerms(const WavoGraph& graph, const StreamFinder& stream_of);

}  // namespace wavo
