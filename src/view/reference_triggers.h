// Where the start triggers of graphs fire: in a good run, in recordings, in what graphs record now.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "graph/draw/graph_draw.h"
#include "measure/figure.h"
#include "session/reference_run.h"
#include "session/session.h"
#include "view/graph_board.h"

namespace wavo {

class ReferenceTriggers {
 public:
    /// None of the references is owned; all outlive this object. `selected`: the number of the
    /// graph that the user has selected.
    ReferenceTriggers(Session& session, const GraphBoard& board,
                      std::function<std::uint32_t()> selected)
        : m_session(session), m_board(board), m_selected(std::move(selected)) {}

    /// Looks anew: at the triggers of the graphs, and with which lines these have begun.
    void Renew(ReferenceRun& run);

    /// By how many of them lines of the source lie behind the good run, by the selected graph, else
    /// the first one that has a start trigger; why it is not known in words.
    [[nodiscard]] measure::Told<std::int64_t> ShiftOf(const LineRange& lines) const;

    /// The same of what a graph records now, by its own trigger. Nothing when that has not fired.
    [[nodiscard]] std::optional<std::int64_t> ShiftIn(const GraphDraw& graph) const;

 private:
    [[nodiscard]] const WavoGraph* TriggeredGraph() const;
    [[nodiscard]] std::optional<std::int64_t> LineIn(const WavoGraph& graph,
                                                     const LineRange& lines) const;

    Session& m_session;
    const GraphBoard& m_board;
    const std::function<std::uint32_t()> m_selected;
    // By number of the graph.
    std::map<std::uint32_t, std::int64_t> m_places;  ///< lines of the good run
    /// Lines with which recordings began. A graph that is zoomed, or made anew, knows it no more.
    std::map<std::uint32_t, std::int64_t> m_starts;
};

}  // namespace wavo
