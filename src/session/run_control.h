// Starting and stopping the display of values.
//
// Invariants:
// 1. Start begins all graphs anew, and shows that at once: a restart that waited for the next batch
//    would throw that batch away.
// 2. Starting after a trigger leaves the running flag and the title alone.
// 3. A buffer that missed samples makes no derivative across the gap.
#pragma once

#include <string>

#include "session/acquisition.h"
#include "session/graph_files.h"
#include "session/shown_graphs.h"

namespace wavo {

class RunControl {
 public:
    /// None of the references is owned; all outlive this object.
    RunControl(Acquisition& acquisition, ValueStreams& streams, ShownGraphs& shown,
               GraphFiles& files, SessionObserver& observer)
        : m_acquisition(acquisition),
          m_streams(streams),
          m_shown(shown),
          m_files(files),
          m_observer(observer) {}

    void Start();
    void Stop();
    /// Moves every graph that its trigger has stopped back to the state that it began in.
    void StartAfterTrigger();

    [[nodiscard]] bool CanStart() const { return !m_acquisition.IsRunning(); }
    [[nodiscard]] bool CanStop() const { return m_acquisition.IsRunning(); }
    /// Some graph was stopped by its trigger.
    [[nodiscard]] bool CanStartAfterTrigger() const { return m_shown.IsAnyStopped(); }

    /// The graphs were made anew. Some may be left without values, because a trigger had stopped
    /// them before: the user is told.
    void OnGraphsRebuilt();

 private:
    void ShowHint(bool needed);

    Acquisition& m_acquisition;
    ValueStreams& m_streams;
    ShownGraphs& m_shown;
    GraphFiles& m_files;
    SessionObserver& m_observer;
    bool m_hint_shown = false;
};

}  // namespace wavo
