#include "view/run_control.h"

#include <algorithm>

#include "ui/dialogs/graph_editor.h"

namespace wavo {

namespace {

constexpr char kNeedsStopAndStart[] =
    "A graph was made anew after its trigger had stopped it: Run control > Stop, then Start to go "
    "on";
constexpr char kNeedsStart[] =
    "A graph was made anew after its trigger had stopped it: Run control > Start to go on";

bool IsStopped(const GraphDraw& drawer) {
    return drawer.State() == RunState::kStoppedAfterStart ||
           drawer.State() == RunState::kStoppedAfterStop;
}

}  // namespace

void RunControl::Start() {
    m_cycle.SetRunning(true);
    m_host.ShowRunTitle();
    m_editor.SetAcquisitionRuns(true);
    m_host.ForgetZooms();
    m_board.EnableBuffers();
    ShowHint(false);
    m_host.Redraw(true);
    m_host.RunStateChanged();
}

void RunControl::Stop() {
    m_cycle.SetRunning(false);
    m_host.ShowRunTitle();
    m_editor.SetAcquisitionRuns(false);
    ShowHint(m_hint_shown);  // it needs less now
    m_host.RunStateChanged();
}

void RunControl::StartAfterTrigger() {
    for (const auto& drawer : m_board.Drawers()) {
        drawer->RestartAfterTrigger();
    }
    m_editor.SetAcquisitionRuns(true);
    m_host.LeaveZooms();
    m_board.EnableBuffers();
    ShowHint(false);
    m_host.Redraw(false);
    m_host.RunStateChanged();
}

bool RunControl::CanStartAfterTrigger() const {
    return std::any_of(m_board.Drawers().begin(), m_board.Drawers().end(),
                       [](const auto& drawer) { return IsStopped(*drawer); });
}

void RunControl::OnGraphsRebuilt() {
    ShowHint(SomeGraphGetsNoValues());
}

bool RunControl::SomeGraphGetsNoValues() const {
    return std::any_of(m_board.Drawers().begin(), m_board.Drawers().end(), [](const auto& drawer) {
        const std::vector<GraphValue*> values = drawer->Values();
        return !IsStopped(*drawer) &&
               std::any_of(values.begin(), values.end(),
                           [](const GraphValue* value) { return !value->Enabled(); });
    });
}

void RunControl::ShowHint(bool needed) {
    if (needed) {
        m_host.ShowRunHint(m_cycle.IsRunning() ? kNeedsStopAndStart : kNeedsStart);
    } else if (m_hint_shown) {
        m_host.ShowRunHint({});
    }
    m_hint_shown = needed;
}

}  // namespace wavo
