#include "view/session_display.h"

#include <QCoreApplication>
#include <QString>
#include <QWidget>
#include <utility>

#include "session/session.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/prompts.h"
#include "view/data_export.h"
#include "view/graph_board.h"
#include "view/graph_screen.h"
#include "view/measurements.h"
#include "view/past_control.h"
#include "view/view_keys.h"
#include "view/view_mouse.h"
#include "view/view_news.h"
#include "view/zoom_control.h"

namespace wavo {

void SessionDisplay::PaneTextChanged(StatusPane pane, const std::string& text) {
    Q_EMIT m_parts.news.PaneTextChanged(pane, QString::fromStdString(text));
}

void SessionDisplay::TitleChanged(const std::string& title) {
    Q_EMIT m_parts.news.FrameTitleChanged(QString::fromStdString(title));
}

void SessionDisplay::CommandsChanged() {
    Q_EMIT m_parts.news.CommandsChanged();
}

void SessionDisplay::FileOpened(const std::string& path) {
    Q_EMIT m_parts.news.RecentFileOpened(QString::fromStdString(path));
}

bool SessionDisplay::EditDocument(bool forget) {
    if (forget) {
        m_parts.editor.SetNotInitialised();
        m_parts.editor.ResetSelection();
    }
    const SourceDescription& description = m_parts.session.Source().Description();
    const bool is_taken = m_parts.editor.Init(m_parts.session.Graphs(), description.axis_names);
    if (description.cycle_time > 0.0) {
        m_parts.editor.SetCycleTime(description.cycle_time);
    }
    return is_taken;
}

bool SessionDisplay::HasEditedGraphs() const {
    return m_parts.editor.IsInitialised();
}

void SessionDisplay::OnGraphShown() {
    Q_EMIT m_parts.news.MeasureChanged();
    if (m_parts.session.Recording() != nullptr) {
        CommandsChanged();  // another graph has other triggers
    }
}

void SessionDisplay::GraphsChanged() {
    // Changes that were announced before are in the graphs that are made now. Made once more after
    // its trigger has stopped it, a graph would get no values.
    QCoreApplication::removePostedEvents(&m_parts.view, AppMessageEvent::EventType());
    m_parts.editor.SetBackground(m_parts.session.Settings().Current().background);
    m_parts.zooms.Forget();
    m_parts.mouse.Cancel();
    m_parts.keys.Cancel();
    m_parts.measurements.Forget();
    if (std::exchange(m_live_comes_back, false) && m_parts.screen.BringGraphsBack()) {
        BringLiveBack();
    } else {
        MakeGraphs();
    }
    m_parts.screen.DrawAndShow();
    CommandsChanged();
    Q_EMIT m_parts.news.MeasureChanged();
}

void SessionDisplay::MakeGraphs() {
    // A box runs an event loop, which must not meet graphs that are half made.
    for (const std::string& fault : m_parts.screen.MakeGraphs()) {
        ShowError(fault);
    }
    m_parts.session.Run().OnGraphsRebuilt();
    m_parts.past.Window().OnGraphsMade();
}

void SessionDisplay::LiveGraphsLeave() {
    m_selected_live = m_parts.editor.SelectedNumber();
    m_parts.measurements.Forget();
    m_parts.past.Window().SetLiveAside();
    m_parts.zooms.SetAside();
    m_parts.board.SetAside();
}

void SessionDisplay::BringLiveBack() {
    m_parts.session.Run().OnGraphsRebuilt();
    m_parts.past.Window().OnLiveBack();
    m_parts.zooms.BringBack(m_selected_live);
}

void SessionDisplay::ValuesArrived() {
    m_parts.screen.DrawAndShow();
    Q_EMIT m_parts.news.BatchShown(m_parts.session.Values().TotalLines());
}

bool SessionDisplay::IsDrawing() const {
    return m_parts.screen.IsDrawing();
}

void SessionDisplay::RunBegins(bool anew) {
    m_parts.past.Window().Leave();
    if (anew) {
        m_parts.zooms.Forget();  // the graphs begin anew, and so leave their zooms
    } else {
        m_parts.zooms.LeaveAll();
    }
    m_parts.screen.DrawAndShow(anew);
}

void SessionDisplay::RunStateChanged(bool values_flow) {
    // What is seen of a recording may be larger than any memory: its parts are exported.
    m_parts.editor.SetAcquisitionRuns(values_flow || m_parts.session.Recording() != nullptr);
    CommandsChanged();
    Q_EMIT m_parts.news.MeasureChanged();
}

void SessionDisplay::ShowError(const std::string& text) {
    m_parts.prompts.ShowError(&m_parts.view, text);
}

void SessionDisplay::EndProcess() {
    m_parts.data_export.Cancel();
    m_parts.past.Search().Cancel();
    Q_EMIT m_parts.news.QuitRequested();
}

}  // namespace wavo
