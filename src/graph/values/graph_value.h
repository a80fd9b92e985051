// The recent history of one value stream: an axis value as the master publishes it, or its first
// or second derivative over time. All graphs that show the stream share one buffer.
//
// Works in sample counts: time is always sample index times the master's cycle time.
//
// Invariants:
// 1. The value FIFO holds StoredCount() samples, at most Capacity() (without bound when that is 0).
// 2. PushedCount() - DroppedCount() is the size of the value FIFO.
// 3. The newest sample stands at PushedCount() x cycle time, the oldest at DroppedCount() x cycle
//    time, on one time axis.
//
// One thread; no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "graph/values/sample_ring.h"

namespace wavo {

class GraphValue {
 public:
    /// `cycle_time` and `time_range` in seconds. REQUIRES: cycle_time > 0, derivation_order >= 0.
    GraphValue(std::string name, double cycle_time, double time_range,
               std::int32_t derivation_order);
    virtual ~GraphValue() = default;
    GraphValue(const GraphValue&) = default;
    GraphValue& operator=(const GraphValue&) = default;
    GraphValue(GraphValue&&) = default;
    GraphValue& operator=(GraphValue&&) = default;

    /// Stores one sample (its derivative, for a derived stream). Does nothing while disabled.
    void SetValue(double sample);

    /// Empties the buffer and recomputes the capacity.
    void Reset();

    /// Copies the samples set since EmptyNewValues to `out`; `start_time` is that of the first,
    /// seconds.
    void GetNewValues(std::vector<double>& out, double& start_time) const;
    void EmptyNewValues() { m_new_values.clear(); }

    /// Copies the samples of the most recent `span` seconds to `out`, oldest first; `start_time`
    /// is that of the first, seconds. A span longer than what is held gives all.
    void GetTimeRangeValues(std::vector<double>& out, double span, double& start_time) const;

    /// Copies the samples between the times `from` and `to` (seconds, counted from the oldest
    /// sample held) to `out`. `now` is latched by the first request. A request that cannot be
    /// served gives the result of the last one that could.
    void GetDefineTimeRangeValue(std::vector<double>& out, double from, double to, double now);

    /// Makes the next GetDefineTimeRangeValue latch its reference time again.
    void MarkFirstRangeRequest() { m_first_range_request = true; }

    void SetEnabled(bool enabled) { m_enabled = enabled; }
    [[nodiscard]] bool Enabled() const { return m_enabled; }

    /// Grows the buffer to a longer time range; all held samples and the four counters stay, the
    /// new values and the derivation history are emptied.
    void GrowTimeRange(double time_range);

    [[nodiscard]] const std::string& Name() const { return m_name; }
    [[nodiscard]] double CycleTime() const { return m_cycle_time; }
    [[nodiscard]] double TimeRange() const { return m_time_range; }
    [[nodiscard]] std::int32_t DerivationOrder() const { return m_derivation_order; }
    [[nodiscard]] std::uint64_t StoredCount() const { return m_stored_count; }
    [[nodiscard]] std::uint64_t Capacity() const { return m_capacity; }
    [[nodiscard]] double DroppedCount() const { return m_dropped_count; }
    [[nodiscard]] double PushedCount() const { return m_pushed_count; }
    [[nodiscard]] double TotalCount() const { return m_total_count; }
    [[nodiscard]] double FirstNewIndex() const { return m_first_new_index; }
    [[nodiscard]] const SampleRing& Values() const { return m_values; }
    [[nodiscard]] const std::vector<double>& NewValues() const { return m_new_values; }
    /// Time of the newest sample, seconds: pushed count x cycle time.
    [[nodiscard]] double LatestTime() const { return m_pushed_count * m_cycle_time; }

 private:
    [[nodiscard]] std::uint64_t ComputeCapacity() const;
    /// The value to store for a raw sample, from the derivation history.
    double Derive(double sample);

    std::string m_name;
    double m_cycle_time;
    double m_time_range;
    std::int32_t m_derivation_order;

    std::uint64_t m_stored_count = 0;
    std::uint64_t m_capacity = 0;
    SampleRing m_values;
    std::vector<double> m_new_values;
    double m_first_new_index = 0.0;
    double m_dropped_count = 0.0;
    double m_pushed_count = 0.0;
    double m_total_count = 0.0;
    std::vector<double> m_history;  // the last (order + 1) raw samples, oldest first
    bool m_first_range_request = true;
    std::vector<double> m_range_result;
    double m_reference_time = 0.0;
    bool m_enabled = true;
};

}  // namespace wavo
