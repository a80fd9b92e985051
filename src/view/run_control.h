// Starting and stopping the display of values.
//
// Invariants:
// 1. Start begins all graphs anew, and shows that at once: a restart that waited for the next batch
//    would throw that batch away.
// 2. Starting after a trigger leaves the running flag and the title alone.
// 3. A buffer that missed samples makes no derivative across the gap.
#pragma once

#include <string>

#include "view/acquisition_cycle.h"
#include "view/graph_board.h"

namespace wavo {

class GraphEditor;

/// What the run control needs of the view.
class RunControlHost {
 public:
    virtual ~RunControlHost() = default;
    /// Frame title: document name and " - running" or " - stopped".
    virtual void ShowRunTitle() = 0;
    /// The zooms are over: a restart follows.
    virtual void ForgetZooms() = 0;
    /// Graphs that are zoomed leave all their zooms.
    virtual void LeaveZooms() = 0;
    /// One drawing step, shown at once; with `restart` all graphs begin anew.
    virtual void Redraw(bool restart) = 0;
    /// Tells the user in the status bar what a graph needs; empty: nothing any more.
    virtual void ShowRunHint(const std::string& text) = 0;
    /// What can be commanded may have changed.
    virtual void RunStateChanged() = 0;
};

class RunControl {
 public:
    /// None of the references is owned; all outlive this object.
    RunControl(AcquisitionCycle& cycle, GraphBoard& board, GraphEditor& editor,
               RunControlHost& host)
        : m_cycle(cycle), m_board(board), m_editor(editor), m_host(host) {}

    void Start();
    void Stop();
    /// Moves every graph that its trigger has stopped back to the state that it began in.
    void StartAfterTrigger();

    [[nodiscard]] bool CanStart() const { return !m_cycle.IsRunning(); }
    [[nodiscard]] bool CanStop() const { return m_cycle.IsRunning(); }
    /// Some graph was stopped by its trigger.
    [[nodiscard]] bool CanStartAfterTrigger() const;

    /// The graphs were made anew. Some may be left without values, because a trigger had stopped
    /// them before: the user is told.
    void OnGraphsRebuilt();

 private:
    [[nodiscard]] bool SomeGraphGetsNoValues() const;
    void ShowHint(bool needed);

    AcquisitionCycle& m_cycle;
    GraphBoard& m_board;
    GraphEditor& m_editor;
    RunControlHost& m_host;
    bool m_hint_shown = false;
};

}  // namespace wavo
