// The recent history of one value stream: an axis value as the master publishes it, or its first
// or second derivative over time. All graphs that show the stream share one buffer.
//
// Works in sample counts: time is always sample index times the master's cycle time.
//
// Invariants:
// 1. The value FIFO holds StoredCount() samples, at most Capacity(). With capacity 0 it grows
//    without bound and StoredCount() stays 0.
// 2. PushedCount() - DroppedCount() is the size of the value FIFO.
// 3. The newest sample stands at PushedCount() x cycle time, the oldest at DroppedCount() x cycle
//    time, on one time axis.
// 4. While none of them has been dropped, the new values are the newest NewCount() samples of the
//    value FIFO and stored nowhere else; only before one would be dropped are they copied aside.
// 5. A run of the value FIFO is open only while storing is all that a sample asks for: enabled,
//    derivation history full, new values neither full nor copied aside. SetValue leaves its fast
//    path where the run ends, and SetValueAtRunEnd decides.
// 6. Streams miss lines of the master, each others: Lines() tells which line a sample came with.
//
// One thread; no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "graph/values/line_log.h"
#include "graph/values/sample_buffer.h"

namespace wavo {

/// `count` samples of a ring from a position on.
struct SampleStretch {
    std::uint64_t position = 0;
    std::uint64_t count = 0;

    friend bool operator==(const SampleStretch&, const SampleStretch&) = default;
};

class GraphValue {
 public:
    /// `cycle_time` and `time_range` in seconds. A derivation order below 1 stores the samples
    /// themselves. The capacity is time_range / cycle_time, truncated; 0 for a quotient that is
    /// negative or not a number, the largest number for one beyond it. REQUIRES: cycle_time > 0.
    GraphValue(std::string name, double cycle_time, double time_range,
               std::int32_t derivation_order);
    virtual ~GraphValue() = default;
    GraphValue(const GraphValue&) = default;
    GraphValue& operator=(const GraphValue&) = default;
    GraphValue(GraphValue&&) = default;
    GraphValue& operator=(GraphValue&&) = default;

    /// Stores one sample (its derivative, for a derived stream). Does nothing while disabled.
    /// Costs one store and one increment, for a derived stream the arithmetic besides.
    void SetValue(double sample) {
        if (!m_values.RunOpen()) [[unlikely]] {
            SetValueAtRunEnd(sample);
            return;
        }
        m_values.Put(m_derivation_order < 1 ? sample : Derive(sample));
    }

    /// The same as SetValue of samples[0], samples[stride], samples[2 * stride], ..., `count` of
    /// them: one column of a batch of lines. Several times as fast.
    void SetValues(const double* samples, std::size_t count, std::size_t stride);

    /// The next sample comes with this line of the master. To be told before each batch of lines;
    /// samples of which nothing was told came with lines 0, 1, 2, ... Does nothing while disabled.
    void ExpectLine(std::int64_t line);

    /// Empties the buffer and recomputes the capacity.
    void Reset();

    /// Copies the samples set since EmptyNewValues to `out`; `start_time` is that of the first,
    /// seconds.
    void GetNewValues(std::vector<double>& out, double& start_time) const;
    void EmptyNewValues();

    /// Copies the samples of the most recent `span` seconds to `out`, oldest first; `start_time`
    /// is that of the first, seconds. A span longer than what is held gives all.
    void GetTimeRangeValues(std::vector<double>& out, double span, double& start_time) const;

    /// The number of samples that GetTimeRangeValues gives.
    [[nodiscard]] std::uint64_t CountOfSpan(double span) const;

    /// Copies the samples between the times `from` and `to` (seconds, counted from the oldest
    /// sample held) to `out`. `now` is latched by the first request. A request that cannot be
    /// served gives the result of the last one that could.
    void GetDefineTimeRangeValue(std::vector<double>& out, double from, double to, double now);

    /// Where the samples stand in Values() that GetDefineTimeRangeValue would copy; nothing is
    /// copied and no result kept. Nothing for a request that cannot be served.
    std::optional<SampleStretch> FindDefineTimeRange(double from, double to, double now) {
        return FindDefineTimeRange(from, to, now, m_values.Size());
    }
    /// The same among `held` samples, for streams that are looked at together.
    std::optional<SampleStretch> FindDefineTimeRange(double from, double to, double now,
                                                     std::uint64_t held);

    /// Makes the next GetDefineTimeRangeValue latch its reference time again.
    void MarkFirstRangeRequest() { m_first_range_request = true; }

    void SetEnabled(bool enabled);

    /// Forgets the raw samples that derivatives are made from: the next ones do not follow them.
    /// What is stored stays. Call it for a buffer that was disabled and missed samples.
    void ForgetHistory();

    [[nodiscard]] bool Enabled() const { return m_enabled; }

    /// Grows the buffer to a longer time range; all held samples and the four counters stay, the
    /// new values and the derivation history are emptied.
    void GrowTimeRange(double time_range);

    [[nodiscard]] const std::string& Name() const { return m_name; }
    [[nodiscard]] double CycleTime() const { return m_cycle_time; }
    [[nodiscard]] double TimeRange() const { return m_time_range; }
    [[nodiscard]] std::int32_t DerivationOrder() const { return m_derivation_order; }
    [[nodiscard]] std::uint64_t StoredCount() const;
    [[nodiscard]] std::uint64_t Capacity() const { return m_capacity; }
    [[nodiscard]] double DroppedCount() const {
        return static_cast<double>(m_values.FirstSequence());
    }
    [[nodiscard]] double PushedCount() const { return static_cast<double>(m_values.Appended()); }
    /// Samples set since the last reset. The value FIFO is never empty again once a sample was
    /// set, so this is the pushed count.
    [[nodiscard]] double TotalCount() const { return PushedCount(); }
    [[nodiscard]] double FirstNewIndex() const;
    /// Sequence number of the first of the new values, or of the next sample when there are none.
    [[nodiscard]] std::uint64_t FirstNewSequence() const { return m_new_begin; }
    /// The lines of the samples, by their sequence numbers.
    [[nodiscard]] const LineLog& Lines() const { return m_lines; }
    [[nodiscard]] const SampleBuffer& Values() const { return m_values; }
    /// Number of the samples that GetNewValues gives.
    [[nodiscard]] std::uint64_t NewCount() const;
    /// Time of the newest sample, seconds: pushed count x cycle time.
    [[nodiscard]] double LatestTime() const { return PushedCount() * m_cycle_time; }

 private:
    [[nodiscard]] std::uint64_t ComputeCapacity() const;
    /// Gives the value FIFO as many slots as the capacity asks for.
    void ExpectCapacity();
    [[nodiscard]] bool Full() const;
    /// Stores a sample where the run has ended, and opens the next run.
    void SetValueAtRunEnd(double sample);
    void OpenRun();
    /// Fills the front of the run's room.
    void FillRun(double* out, const double* samples, std::size_t count, std::size_t stride);
    /// The same for a stream of order 1 or 2.
    void DeriveRun(double* out, const double* samples, std::size_t count, std::size_t stride);
    /// Counts a sample that is about to be stored among the new values, or reports the overrun.
    void KeepNewValue(double value);
    void CopyNewValuesAside();
    /// No memory for one sample more: the buffer goes on with the capacity that it has.
    void CapacityBecomesSize();
    void ForgetNewValues();
    /// The next sample has no earlier ones to be derived from.
    void BeginDerivation();
    /// The time, seconds, of the first sample of the most recent span.
    [[nodiscard]] double StartOfSpan(double span) const;

    /// The value to store for a raw sample while the history fills.
    double DeriveAtStart(double sample);
    /// The value to store for a raw sample. REQUIRES: the history is full.
    double Derive(double sample) {
        // The difference comes out of an accumulator that starts at 0 and is negated after the
        // first subtraction: a stream that stands still gives -0.
        double* history = m_history.data();
        if (m_derivation_order == 1) {
            const double sum = -(0.0 - (sample - history[0]));
            history[0] = sample;
            return sum / m_divisor;
        }
        if (m_derivation_order == 2) {
            double sum = -(0.0 - (sample - history[1]));
            sum -= history[1] - history[0];
            history[0] = history[1];
            history[1] = sample;
            return sum / m_divisor;
        }
        return DeriveHigher(sample);
    }
    double DeriveHigher(double sample);
    [[nodiscard]] bool HistoryFull() const;

    std::string m_name;
    double m_cycle_time;
    double m_time_range;
    std::int32_t m_derivation_order;
    double m_divisor;  // cycle time to the power of the derivation order

    std::uint64_t m_capacity = 0;
    SampleBuffer m_values;
    // StoredCount() follows from what was stored when capacity or counts were last set anew.
    std::uint64_t m_stored_base = 0;
    std::uint64_t m_stored_base_appended = 0;

    std::uint64_t m_new_begin = 0;     // samples set before the first of the new values
    double m_first_new_index = 0.0;    // of the new values before these, kept while there are none
    bool m_new_values_aside = false;   // the new values stand in m_new_values
    std::vector<double> m_new_values;  // used only while they are aside

    LineLog m_lines;
    std::vector<double> m_history;  // the last raw samples, oldest first, at most order many
    bool m_first_range_request = true;
    std::vector<double> m_range_result;
    double m_reference_time = 0.0;
    bool m_enabled = true;
};

}  // namespace wavo
