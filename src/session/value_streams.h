// The value buffers of all graphs, and which of them take the values of which axis.
//
// Invariants:
// 1. Nobody refers to a buffer that has gone: who does is told before (SetBeforeDrop).
// 2. Distribution list a holds every buffer of axis a of the master, whatever its derivation. Axes
//    of one name share their buffers.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/values/graph_streams.h"
#include "graph/values/graph_value_registry.h"
#include "source/value_source.h"

namespace wavo {

class LineTap;

class ValueStreams {
 public:
    /// Called before all buffers go: nobody may refer to them afterwards.
    void SetBeforeDrop(std::function<void()> before_drop) {
        m_before_drop = std::move(before_drop);
    }

    /// Hands the lines that buffers get to `tap` too, from now on. Not owned.
    void AddTap(LineTap& tap);
    /// Nothing when it is none.
    void RemoveTap(LineTap& tap);

    /// The buffers of a graph, made or grown where needed; null ones while `cycle_time` (seconds)
    /// is 0, and where there is a fault, which is reported and kept for TakeFaults.
    GraphStreams StreamsOf(const WavoGraph& graph, double cycle_time);

    /// The seconds per line of the values to come. Buffers count in lines: those of another cycle
    /// time hold other times and go.
    void SetCycleTime(double cycle_time);

    /// Makes the distribution lists for these axes, in the order of their columns.
    void ListBuffers(const std::vector<std::string>& axis_names);

    /// Faults of StreamsOf since the last call, in words for the user.
    std::vector<std::string> TakeFaults() { return std::exchange(m_faults, {}); }

    /// Destroys all buffers and empties the distribution lists.
    void Drop();

    /// Keeps all buffers as they are, and goes on without any. Nobody may refer to them but who
    /// keeps them as well. The taps of now hear nothing meanwhile. REQUIRES: none are set aside.
    void SetAside();
    /// Drops the buffers of now and goes on with those that were set aside, their cycle time and
    /// taps.
    void BringBack();

    /// Hands the lines of a batch to the buffers, in order.
    void Distribute(const ValueBatch& batch);

    /// Lines that nobody has: each buffer that takes values gets missing ones in their place, at
    /// most as many as it holds. `lines` may be beyond every number.
    void Skip(double lines);

    /// Empties the buffers of some axes: what they get next does not follow what they hold.
    void BeginAnew(const std::vector<std::string>& axis_names);

    /// The new values of all buffers were shown.
    void EmptyNewValues();
    void Reset();
    /// Lets all buffers take values again; those that missed some begin their derivatives anew.
    void Enable();

    [[nodiscard]] GraphValueRegistry& Registry() { return m_registry; }
    /// The buffers of column a, in the order in which they were made.
    [[nodiscard]] std::span<const std::vector<GraphValue*>> DistributionLists() const {
        return m_distribution;
    }

 private:
    GraphValue* FindBuffer(const std::string& axis_name, double cycle_time, double time_range,
                           std::int32_t derivation);
    void ExpectLines();
    void DistributeLineByLine(const ValueBatch& batch, std::size_t columns);

    struct Buffers {
        GraphValueRegistry registry;
        double cycle_time = 0.0;
        std::vector<LineTap*> taps;
    };

    std::function<void()> m_before_drop;
    std::vector<LineTap*> m_taps;
    std::vector<std::string> m_axis_names;  ///< of the columns
    GraphValueRegistry m_registry;
    double m_cycle_time = 0.0;  ///< that the buffers count in
    std::optional<Buffers> m_aside;
    std::vector<std::vector<GraphValue*>> m_distribution;
    std::vector<std::string> m_faults;
    std::int64_t m_lines = 0;              ///< handed out so far
    bool m_columns_share_buffers = false;  ///< the master has axes of the same name
};

}  // namespace wavo
