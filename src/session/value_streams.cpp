#include "session/value_streams.h"

#include <algorithm>
#include <set>
#include <utility>

#include "graph/values/missing_value.h"
#include "session/line_tap.h"
#include "session/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

void ValueStreams::AddTap(LineTap& tap) {
    m_taps.push_back(&tap);
    tap.TakeAxes(m_axis_names);
}

void ValueStreams::RemoveTap(LineTap& tap) {
    std::erase(m_taps, &tap);
    if (m_aside) {
        std::erase(m_aside->taps, &tap);
    }
}

GraphStreams ValueStreams::StreamsOf(const WavoGraph& graph, double cycle_time) {
    const double time_range = GraphTimeRange(graph);
    GraphStreams streams;
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        streams.y.push_back(
            FindBuffer(graph.YCoorAxName[i], cycle_time, time_range, graph.YCoorAxDerivation[i]));
    }
    if (graph.XCoorType == CoorType::kAxis) {
        streams.x = FindBuffer(graph.XCoorAxName, cycle_time, time_range, 0);
    }
    return streams;
}

GraphValue* ValueStreams::FindBuffer(const std::string& axis_name, double cycle_time,
                                     double time_range, std::int32_t derivation) {
    if (cycle_time == 0.0) {  // no master yet: nothing is known of time
        return nullptr;
    }
    const auto [value, reason] =
        m_registry.GetGraphValueFifo(axis_name, cycle_time, time_range, derivation);
    if (value == nullptr) {
        MERRLOG(session_texts::kStreamNotFound, reason);
        m_faults.emplace_back(reason);
        MERRLOG(session_texts::kStreamNotMade);
    }
    return value;
}

void ValueStreams::SetCycleTime(double cycle_time) {
    if (cycle_time != m_cycle_time) {
        Drop();
        m_cycle_time = cycle_time;
    }
}

void ValueStreams::ListBuffers(const std::vector<std::string>& axis_names) {
    m_columns_share_buffers =
        std::set<std::string>(axis_names.begin(), axis_names.end()).size() != axis_names.size();
    m_distribution.assign(axis_names.size(), {});
    m_axis_names = axis_names;
    for (LineTap* const tap : m_taps) {
        tap->TakeAxes(axis_names);
    }
    for (std::size_t a = 0; a < axis_names.size(); ++a) {
        for (GraphValue& value : m_registry.Values()) {
            if (value.Name() == axis_names[a]) {
                m_distribution[a].push_back(&value);
            }
        }
    }
}

void ValueStreams::Drop() {
    if (m_before_drop) {
        m_before_drop();
    }
    m_distribution.clear();
    m_registry.Clear();
    for (LineTap* const tap : m_taps) {
        tap->BeginAnew();
    }
}

void ValueStreams::SetAside() {
    m_distribution.clear();
    m_aside = Buffers{std::exchange(m_registry, {}), m_cycle_time, std::exchange(m_taps, {})};
}

void ValueStreams::BringBack() {
    Drop();
    Buffers kept = *std::exchange(m_aside, std::nullopt);
    m_registry = std::move(kept.registry);
    m_cycle_time = kept.cycle_time;
    m_taps.insert(m_taps.begin(), kept.taps.begin(), kept.taps.end());
}

void ValueStreams::Distribute(const ValueBatch& batch) {
    ExpectLines();
    for (LineTap* const tap : m_taps) {
        tap->TakeLines(m_lines, batch);
    }
    m_lines += static_cast<std::int64_t>(batch.count);
    const std::size_t columns = std::min(m_distribution.size(), batch.axes);
    if (m_columns_share_buffers) {
        DistributeLineByLine(batch, columns);
        return;
    }
    for (std::size_t a = 0; a < columns; ++a) {
        for (GraphValue* const value : m_distribution[a]) {
            value->SetValues(batch.lines + a, batch.count, batch.axes);
        }
    }
}

void ValueStreams::Skip(double lines) {
    constexpr double kMost = 9e15;  // counts that a double tells apart
    const auto count = static_cast<std::int64_t>(std::min(lines, kMost));
    const double none = NoSample();
    m_lines += count;
    for (GraphValue& value : m_registry.Values()) {
        const auto held = static_cast<std::int64_t>(
            std::min<std::uint64_t>(value.Capacity(), static_cast<std::uint64_t>(count)));
        value.ExpectLine(m_lines - held);
        value.SetValues(&none, static_cast<std::size_t>(held), 0);
    }
}

// The buffers may have missed lines, each others.
void ValueStreams::ExpectLines() {
    for (GraphValue& value : m_registry.Values()) {
        value.ExpectLine(m_lines);
    }
}

// A buffer that takes more than one column gets the values in the order of the lines.
void ValueStreams::DistributeLineByLine(const ValueBatch& batch, std::size_t columns) {
    for (std::uint64_t i = 0; i < batch.count; ++i) {
        for (std::size_t a = 0; a < columns; ++a) {
            for (GraphValue* const value : m_distribution[a]) {
                value->SetValue(batch.lines[i * batch.axes + a]);
            }
        }
    }
}

void ValueStreams::BeginAnew(const std::vector<std::string>& axis_names) {
    for (LineTap* const tap : m_taps) {
        if (!axis_names.empty()) {
            tap->BeginAnew();
        }
    }
    for (GraphValue& value : m_registry.Values()) {
        if (std::ranges::find(axis_names, value.Name()) != axis_names.end()) {
            value.Reset();
        }
    }
}

void ValueStreams::EmptyNewValues() {
    for (GraphValue& value : m_registry.Values()) {
        value.EmptyNewValues();
    }
}

void ValueStreams::Reset() {
    for (LineTap* const tap : m_taps) {
        tap->BeginAnew();
    }
    for (GraphValue& value : m_registry.Values()) {
        value.Reset();
    }
}

void ValueStreams::Enable() {
    for (GraphValue& value : m_registry.Values()) {
        if (!value.Enabled()) {  // it missed samples
            value.ForgetHistory();
            value.SetEnabled(true);
        }
    }
}

}  // namespace wavo
