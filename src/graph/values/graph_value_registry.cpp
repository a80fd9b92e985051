#include "graph/values/graph_value_registry.h"

#include <algorithm>
#include <cmath>

#include "graph/values/report_texts.h"

namespace wavo {

namespace {

/// Cycle times that differ by less are one cycle time, seconds.
constexpr double kCycleTimeTolerance = 1e-6;

}  // namespace

GraphValueRegistry::Result GraphValueRegistry::GetGraphValueFifo(const std::string& name,
                                                                 double cycle_time,
                                                                 double time_range,
                                                                 std::int32_t derivation_order) {
    const auto found = std::find_if(m_values.begin(), m_values.end(), [&](const GraphValue& value) {
        return value.DerivationOrder() == derivation_order && value.Name() == name;
    });
    if (found == m_values.end()) {
        return {&m_values.emplace_back(name, cycle_time, time_range, derivation_order), nullptr};
    }
    if (std::fabs(found->CycleTime() - cycle_time) >= kCycleTimeTolerance) {
        return {nullptr, values_texts::kOtherCycleTime};
    }
    if (found->TimeRange() >= time_range) {
        return {&*found, nullptr};
    }
    found->GrowTimeRange(time_range);
    return {&*found, nullptr};
}

}  // namespace wavo
