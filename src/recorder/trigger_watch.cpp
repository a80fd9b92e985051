#include "recorder/trigger_watch.h"

#include <algorithm>
#include <cstdio>

#include "source/derivation.h"

namespace wavo::recorder {

namespace {

std::string TriggerText(const std::string& axis, std::int32_t order, TriggerSide side, double limit,
                        std::uint32_t graph) {
    char number[32];
    std::snprintf(number, sizeof number, "%g", limit);
    return AxisLabel(axis, order) + (side == TriggerSide::kAbove ? " > " : " < ") + number +
           " (graph " + std::to_string(graph) + ")";
}

}  // namespace

TriggerWatch::TriggerWatch(const std::vector<WavoGraph>& graphs,
                           const std::vector<std::string>& axis_names, double cycle_time) {
    for (const WavoGraph& definition : graphs) {
        Graph graph;
        graph.time_range = definition.XScale.ScaleType == ScaleTypeCode::kTime
                               ? definition.XScale.TimeRange
                               : definition.FadeOutTime;
        for (std::size_t i = 0; i < definition.Triggers.size(); ++i) {
            const TriggerEntry& entry = definition.Triggers[i];
            if (!IsTrigger(entry.TriggerType)) {
                continue;
            }
            Trigger trigger;
            trigger.order = definition.YCoorAxDerivation[i];
            trigger.divisor = DerivationDivisor(cycle_time, trigger.order);
            trigger.side =
                FiresAbove(entry.TriggerType) ? TriggerSide::kAbove : TriggerSide::kBelow;
            trigger.limit = entry.TriggerValue;
            trigger.text = TriggerText(definition.YCoorAxName[i], trigger.order, trigger.side,
                                       trigger.limit, definition.GraphNumber);
            // Of several kinds in a graph the last one decides.
            graph.is_stop = IsStopTrigger(entry.TriggerType);
            const auto axis = std::ranges::find(axis_names, definition.YCoorAxName[i]);
            if (axis == axis_names.end()) {
                m_unknown.push_back(trigger.text);
                continue;
            }
            trigger.axis = static_cast<std::size_t>(axis - axis_names.begin());
            graph.triggers.push_back(std::move(trigger));
        }
        if (!graph.triggers.empty()) {
            m_graphs.push_back(std::move(graph));
        }
    }
}

void TriggerWatch::Derive(Trigger& trigger, const LineBlock& block) {
    const std::size_t axes = block.Axes();
    const auto order = static_cast<std::size_t>(std::max(trigger.order, 0));
    trigger.values.resize(block.lines);
    std::vector<double> window(trigger.history);
    for (std::size_t i = 0; i < block.lines; ++i) {
        window.push_back(block.values[i * axes + trigger.axis]);
        if (window.size() <= order) {
            trigger.values[i] = 0.0;  // there are no earlier samples to difference yet
            continue;
        }
        trigger.values[i] = wavo::Derive(window, trigger.divisor);
        window.erase(window.begin());
    }
    trigger.history = std::move(window);
}

void TriggerWatch::Take(const LineBlock& block) {
    m_block_first = block.first;
    for (Graph& graph : m_graphs) {
        for (Trigger& trigger : graph.triggers) {
            Derive(trigger, block);
        }
    }
}

std::vector<Firing> TriggerWatch::Fire(std::size_t index) {
    std::vector<Firing> firings;
    for (Graph& graph : m_graphs) {
        const auto fires = std::ranges::find_if(graph.triggers, [index](const Trigger& trigger) {
            return IsBeyond(trigger.values[index], trigger.side, trigger.limit);
        });
        if (fires == graph.triggers.end()) {
            graph.was_false = true;
        } else if (graph.is_armed && graph.was_false) {
            graph.is_armed = false;
            graph.was_false = false;
            firings.push_back(
                {m_block_first + index, graph.is_stop, graph.time_range, fires->text});
        }
    }
    return firings;
}

double TriggerWatch::LongestStopRange() const {
    double longest = 0.0;
    for (const Graph& graph : m_graphs) {
        longest = graph.is_stop ? std::max(longest, graph.time_range) : longest;
    }
    return longest;
}

void TriggerWatch::Arm() {
    for (Graph& graph : m_graphs) {
        graph.is_armed = true;
    }
}

void TriggerWatch::BeginAnew() {
    for (Graph& graph : m_graphs) {
        for (Trigger& trigger : graph.triggers) {
            trigger.history.clear();
        }
    }
}

}  // namespace wavo::recorder
