#include "session/run_control.h"

namespace wavo {

namespace {

constexpr char kNeedsStopAndStart[] =
    "A graph was made anew after its trigger had stopped it: Run control > Stop, then Start to go "
    "on";
constexpr char kNeedsStart[] =
    "A graph was made anew after its trigger had stopped it: Run control > Start to go on";

}  // namespace

void RunControl::Start() {
    m_acquisition.SetRunning(true);
    m_files.ShowRunTitle();
    m_streams.Enable();
    ShowHint(false);
    m_observer.RunBegins(true);
    m_observer.RunStateChanged(true);
}

void RunControl::Stop() {
    m_acquisition.SetRunning(false);
    m_files.ShowRunTitle();
    ShowHint(m_hint_shown);  // it needs less now
    m_observer.RunStateChanged(false);
}

void RunControl::StartAfterTrigger() {
    m_shown.RestartAfterTrigger();
    m_streams.Enable();
    ShowHint(false);
    m_observer.RunBegins(false);
    m_observer.RunStateChanged(true);
}

void RunControl::OnGraphsRebuilt() {
    ShowHint(m_shown.IsAnyWithoutValues());
}

void RunControl::ShowHint(bool needed) {
    if (needed) {
        m_acquisition.ShowHint(m_acquisition.IsRunning() ? kNeedsStopAndStart : kNeedsStart);
    } else if (m_hint_shown) {
        m_acquisition.ShowHint({});
    }
    m_hint_shown = needed;
}

}  // namespace wavo
