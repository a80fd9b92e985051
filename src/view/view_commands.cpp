#include "view/view_commands.h"

#include <QDialog>

#include "ui/dialogs/add_text.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/messages.h"
#include "view/graph_printer.h"
#include "view/graph_screen.h"

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

ViewCommands::ViewCommands(Session& session, GraphScreen& screen, CAxSelect& editor,
                           GraphPrinter& printer, const Prompts& prompts, QWidget& parent)
    : m_session(session),
      m_screen(screen),
      m_editor(editor),
      m_printer(printer),
      m_prompts(prompts),
      m_parent(parent),
      m_files(session, prompts, &parent) {}

bool ViewCommands::IsEnabled(CommandId id) const {
    const bool is_recorded = m_session.Recording() != nullptr;
    switch (id) {
        case CommandId::kStart:
            return !is_recorded && m_session.Run().CanStart();
        case CommandId::kStop:
            return !is_recorded && m_session.Run().CanStop();
        case CommandId::kStartAfterTrigger:
            return !is_recorded && m_session.Run().CanStartAfterTrigger();
        case CommandId::kConnect:
            return m_session.Source().CanStart();
        case CommandId::kOpen:
            return m_files.CanOpen();
        case CommandId::kSave:
            return m_files.CanSave();
        case CommandId::kSaveAs:
            return m_files.CanSaveAs();
        case CommandId::kShowGraphEditor:
            return !m_screen.IsEditorShown();
        case CommandId::kNew:
        case CommandId::kPageSetup:
        case CommandId::kPrint:
        case CommandId::kPrintPreview:
        case CommandId::kProperties:
        case CommandId::kAdditionalText:
        case CommandId::kComputedAxes:
            return true;
        default:
            return !RecentFile(id).empty();
    }
}

void ViewCommands::Execute(CommandId id) {
    if (!IsEnabled(id)) {
        return;
    }
    switch (id) {
        case CommandId::kStart:
            return m_session.Run().Start();
        case CommandId::kStop:
            return m_session.Run().Stop();
        case CommandId::kStartAfterTrigger:
            return m_session.Run().StartAfterTrigger();
        case CommandId::kConnect:
            return m_session.Values().ConnectByUser();
        case CommandId::kNew:
            return m_files.New();
        case CommandId::kOpen:
            return m_files.Open();
        case CommandId::kSave:
            return m_files.Save();
        case CommandId::kSaveAs:
            return m_files.SaveAs();
        case CommandId::kPageSetup:
            return m_printer.SetUpPage(&m_parent);
        case CommandId::kPrint:
            return m_printer.Print(&m_parent);
        case CommandId::kPrintPreview:
            return m_printer.Preview(&m_parent);
        case CommandId::kProperties:
            return EditProperties();
        case CommandId::kAdditionalText:
            return EditAdditionalText();
        case CommandId::kComputedAxes:
            return EditComputedAxes();
        case CommandId::kShowGraphEditor:
            return ShowGraphEditor();
        default:
            return m_files.OpenRecent(RecentFile(id));
    }
}

std::string ViewCommands::RecentFile(CommandId id) const {
    const int index = RecentFileIndex(id);
    return index >= 0 && m_recent_files ? m_recent_files(index) : std::string();
}

void ViewCommands::EditProperties() {
    ViewSettings& current = m_session.Settings().Current();
    ViewSettings settings = current;
    if (CWavoProperties(settings, m_prompts, &m_parent).exec() != QDialog::Accepted) {
        return;
    }
    const bool editor_was_wanted = current.show_graph_editor;
    current = settings;
    m_session.SaveSettings();
    m_session.SetTraceLevel();
    m_session.RebuildGraphs();
    if (!editor_was_wanted && current.show_graph_editor) {
        ShowGraphEditor();
    } else if (editor_was_wanted && !current.show_graph_editor) {
        PostAppMessage(&m_editor, AppMessage::kCloseEditor, 0, 0);
    }
}

void ViewCommands::EditAdditionalText() {
    std::string text = m_session.Files().AdditionalText();
    if (CAddText(text, &m_parent).exec() == QDialog::Accepted) {
        m_session.Files().SetAdditionalText(text);
        m_screen.DrawAndShow();
    }
}

void ViewCommands::EditComputedAxes() {
    ComputedAxes& computed = m_session.Computed();
    ComputedAxesDialog dialog(computed.Definitions(), computed.OtherNames(), &m_parent);
    if (dialog.exec() != QDialog::Accepted || dialog.Axes() == computed.Definitions()) {
        return;
    }
    const std::uint32_t edited = m_editor.SelectedNumber();
    computed.Define(dialog.Axes());
    SendAppMessage(&m_editor, AppMessage::kSelectGraph, 0, edited);
}

void ViewCommands::ShowGraphEditor() {
    m_screen.ShowEditor(true);
    m_session.CommandsChanged();
    m_screen.DrawAndShow();
}

}  // namespace wavo
