// What the long run shows, and what its user does: 16 graphs over a fixed set of streams of 64
// axes, and steps that depend on nothing but a seed.
//
// Invariant: no step asks for a stream or a time range that the first graphs did not have, so that
// the buffers never grow again.
#pragma once

#include <QString>
#include <QStringList>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/record/run_state.h"
#include "view/wavo_view.h"

namespace wavo::testing {

inline constexpr std::size_t kSoakAxes = 64;
inline constexpr std::size_t kSoakGraphs = 16;
inline constexpr double kSoakCycleTime = 0.00025;  // s

/// Names of the axes, in column order.
std::vector<std::string> SoakAxisNames();

/// Writes a recording of all axes: one period of slow sines, each with its own phase.
void WriteSoakRecording(const QString& path);

/// The graphs: four streams each, every fourth one over an axis, one in two with a trigger.
std::vector<WavoGraph> SoakGraphs();

class SoakUser {
 public:
    SoakUser(CWavoView& view, unsigned seed) : m_view(view), m_random(seed) {}

    /// Does one thing that a user may do, and looks at what became of it. The first things
    /// are a start, an edit and a zoom.
    void Step();

    /// Looks for triggers that have fired since the last look.
    void LookForTriggers();

    /// What the user did, and what the view showed afterwards.
    struct Deeds {
        std::uint64_t edits = 0;             ///< records that became other ones
        std::uint64_t edits_shown = 0;       ///< of these, drawn as they then were
        std::uint64_t edits_not_shown = 0;   ///< steps after which another record was drawn
        std::uint64_t zooms = 0;             ///< into a span
        std::uint64_t zooms_shown = 0;       ///< of these, the graph then showed that span
        std::uint64_t zooms_undone = 0;      ///< the graph showed something else after a step back
        std::uint64_t arms = 0;              ///< starts
        std::uint64_t armed = 0;             ///< graphs that waited for their trigger then
        std::uint64_t fired = 0;             ///< triggers seen waiting, then to have fired
        std::uint64_t runs_not_changed = 0;  ///< starts and stops without effect
    };
    [[nodiscard]] const Deeds& Done() const { return m_done; }

 private:
    std::size_t Below(std::size_t count) { return m_random() % count; }
    void Edit();
    void Zoom();
    void Arm();

    CWavoView& m_view;
    std::mt19937 m_random;
    Deeds m_done;
    std::vector<RunState> m_states;  // of the graphs, at the last look
};

}  // namespace wavo::testing
