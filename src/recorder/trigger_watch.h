// Watches the lines for the triggers of graphs.
//
// A condition is a value beyond a limit, as graphs have it: levels count, and derived streams start
// with zeros. A graph fires with the first line of which one of its triggers is true, and again
// only when it was armed anew and no trigger of it was true in between.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/values/trigger_test.h"
#include "recorder/line_block.h"

namespace wavo::recorder {

/// A graph has fired.
struct Firing {
    std::uint64_t line = 0;
    bool is_stop = false;     ///< a stop trigger: the recording of the graph ends here
    double time_range = 0.0;  ///< seconds that the graph records or shows
    std::string text;         ///< "X' > 5 (graph 1)"
};

class TriggerWatch {
 public:
    /// Watches graphs with triggers; others are left out. `axis_names` are those of the lines,
    /// `cycle_time` is in seconds.
    TriggerWatch(const std::vector<WavoGraph>& graphs, const std::vector<std::string>& axis_names,
                 double cycle_time);

    /// The longest time range of a graph that a stop trigger ends, seconds; 0 when there is none.
    [[nodiscard]] double LongestStopRange() const;

    /// Triggers of axes that the lines do not have: "X' > 5 (graph 1)".
    [[nodiscard]] const std::vector<std::string>& Unknown() const { return m_unknown; }

    /// Takes lines. What fires among them is told by Fire, line by line.
    void Take(const LineBlock& block);

    /// The graphs that fire with the line at `index` of the block. REQUIRES: each line of the block
    /// once, in order.
    std::vector<Firing> Fire(std::size_t index);

    /// Graphs that have fired may fire again, as soon as their condition was false since.
    void Arm();

    /// Lines are missing: derived streams begin anew.
    void BeginAnew();

 private:
    struct Trigger {
        std::size_t axis = 0;
        std::int32_t order = 0;
        double divisor = 1.0;
        TriggerSide side{};
        double limit = 0.0;
        std::string text;
        std::vector<double> history;  // the last samples, oldest first, at most `order`
        std::vector<double> values;   // of the present block
    };
    struct Graph {
        std::vector<Trigger> triggers;
        bool is_stop = false;
        double time_range = 0.0;
        bool is_armed = true;   // may fire when it was false
        bool was_false = true;  // since it fired; a graph fires with its first line
    };

    static void Derive(Trigger& trigger, const LineBlock& block);

    std::vector<Graph> m_graphs;
    std::uint64_t m_block_first = 0;
    std::vector<std::string> m_unknown;
};

}  // namespace wavo::recorder
