// The view as target of commands, and what its delegates for commands need of it.
#include "support/diagnostics.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

/// Index of a command of the recent files; -1 for another command.
int RecentFileIndex(CommandId id) {
    const int number = static_cast<int>(id);
    const int first = static_cast<int>(CommandId::kRecentFile);
    return number >= first && number <= static_cast<int>(CommandId::kLastRecentFile)
               ? number - first
               : -1;
}

}  // namespace

bool CWavoView::IsEnabled(CommandId id) const {
    switch (id) {
        case CommandId::kStart:
            return m_run_control.CanStart();
        case CommandId::kStop:
            return m_run_control.CanStop();
        case CommandId::kStartAfterTrigger:
            return m_run_control.CanStartAfterTrigger();
        case CommandId::kConnect:
            return m_cycle.CanConnect();
        case CommandId::kOpen:
            return m_file_commands.CanOpen();
        case CommandId::kSave:
            return m_file_commands.CanSave();
        case CommandId::kSaveAs:
            return m_file_commands.CanSaveAs();
        case CommandId::kShowGraphEditor:
            return !IsGraphEditorShown();
        case CommandId::kNew:
        case CommandId::kPageSetup:
        case CommandId::kPrint:
        case CommandId::kPrintPreview:
        case CommandId::kProperties:
        case CommandId::kAdditionalText:
            return true;
        default:
            return !RecentFile(id).empty();
    }
}

void CWavoView::Execute(CommandId id) {
    if (!IsEnabled(id)) {
        return;
    }
    switch (id) {
        case CommandId::kStart:
            return m_run_control.Start();
        case CommandId::kStop:
            return m_run_control.Stop();
        case CommandId::kStartAfterTrigger:
            return m_run_control.StartAfterTrigger();
        case CommandId::kConnect:
            return ConnectMachineData();
        case CommandId::kNew:
            return m_file_commands.New();
        case CommandId::kOpen:
            return m_file_commands.Open();
        case CommandId::kSave:
            return m_file_commands.Save();
        case CommandId::kSaveAs:
            return m_file_commands.SaveAs();
        case CommandId::kPageSetup:
            return m_printer.SetUpPage(this);
        case CommandId::kPrint:
            return m_printer.Print(this);
        case CommandId::kPrintPreview:
            return m_printer.Preview(this);
        case CommandId::kProperties:
            return EditProperties();
        case CommandId::kAdditionalText:
            return EditAdditionalText();
        case CommandId::kShowGraphEditor:
            return ShowGraphEditor();
        default:
            return m_file_commands.OpenRecent(RecentFile(id));
    }
}

std::string CWavoView::RecentFile(CommandId id) const {
    const int index = RecentFileIndex(id);
    return index >= 0 && m_recent_files ? m_recent_files(index) : std::string();
}

void CWavoView::ShowSettings() {
    const std::lock_guard guard(m_value_lock);
    RebuildGraphs();
}

void CWavoView::ShowNoGraphs() {
    const std::lock_guard guard(m_value_lock);
    RebuildGraphs();
}

void CWavoView::ShowTitle(const std::string& title) {
    Q_EMIT FrameTitleChanged(QString::fromStdString(title));
}

void CWavoView::CurrentFileChanged() {
    Q_EMIT CommandsChanged();
}

void CWavoView::LeaveZooms() {
    for (const auto& drawer : m_board.Drawers()) {
        while (const std::optional<ZoomState> before =
                   m_zoom_history.Pop(drawer->Graph().GraphNumber)) {
            drawer->RestoreZoom(*before);
        }
    }
    ClearZoomHistory();
}

void CWavoView::Redraw(bool restart) {
    m_restart = m_restart || restart;
    DrawAndShow();
}

void CWavoView::ShowRunHint(const std::string& text) {
    Q_EMIT PaneTextChanged(StatusPane::kMessage,
                           QString::fromStdString(text.empty() ? m_link_text : text));
}

void CWavoView::RunStateChanged() {
    Q_EMIT CommandsChanged();
}

}  // namespace wavo
