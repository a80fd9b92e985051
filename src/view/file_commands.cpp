#include "view/file_commands.h"

#include <QString>
#include <optional>

#include "platform/file.h"
#include "support/diagnostics.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"
#include "view/view_settings_file.h"

namespace wavo {

namespace {

SaveFileQuestion GraphFileQuestion(const char* caption, const std::string& path) {
    return {QString::fromLatin1(caption), QString::fromStdString(path), QStringLiteral("ini"),
            QStringLiteral("Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||")};
}

}  // namespace

void FileCommands::New() {
    {
        const std::lock_guard guard(m_value_lock);
        m_board.Clear();
        m_cycle.InitialiseEditor();
    }
    m_host.ShowTitle("new");
    m_files.SetAdditionalText({});
    m_host.ShowNoGraphs();
}

void FileCommands::Open() {
    const std::optional<QString> chosen =
        ChooseOpenFile(m_host.DialogParent(), GraphFileQuestion("Open", m_files.CurrentPath()));
    if (!chosen) {
        return;
    }
    const std::string path = chosen->toStdString();
    const ViewSettings before = m_host.MutableSettings();
    m_files.SetCurrentPath(path);
    ReadSettings(path);
    if (!m_files.Open(path, FileNameOf(path), true) && m_host.MutableSettings() != before) {
        m_host.ShowSettings();  // nobody else does without new graphs
    }
    m_host.CurrentFileChanged();
}

void FileCommands::OpenRecent(const std::string& path) {
    const ViewSettings before = m_host.MutableSettings();
    m_files.Open(path, FileNameOf(path), false);
    m_files.SetCurrentPath(path);
    ReadSettings(path);
    if (m_host.MutableSettings() != before) {
        m_host.ShowSettings();
    }
    m_host.CurrentFileChanged();
}

void FileCommands::Save() {
    if (Write()) {
        WriteSettings();
        m_host.ShowRunTitle();
    }
}

void FileCommands::SaveAs() {
    const std::optional<QString> chosen =
        ChooseSaveFile(m_host.DialogParent(), GraphFileQuestion("Save As", m_files.CurrentPath()));
    if (!chosen) {
        return;
    }
    const std::string path = chosen->toStdString();
    if (platform::Files().Exists(path) &&
        ShowBox(m_host.DialogParent(), {"file " + path + " already exist, override ?", "file exist",
                                        BoxIcon::kExclamation, BoxButtons::kOkCancel}) !=
            BoxAnswer::kOk) {
        return;
    }
    m_files.SetCurrentPath(path);
    Write();
    m_host.ShowTitle(FileNameOf(path));
    WriteSettings();
    m_host.CurrentFileChanged();
}

void FileCommands::ReadSettings(const std::string& path) {
    if (platform::Files().Exists(path)) {
        ReadProperties(path, m_host.MutableSettings());
    } else {
        m_host.MutableSettings() = DefaultViewSettings();
    }
}

void FileCommands::WriteSettings() {
    bool has_kept = false;
    if (!WriteProperties(m_files.CurrentPath(), m_host.MutableSettings(), &has_kept)) {
        m_host.ShowWriteFault(m_files.CurrentPath());
    }
    if (has_kept) {
        m_files.NoteKept();
    }
}

bool FileCommands::Write() {
    const GraphFiles::Saved saved = m_files.Save();
    if (saved.succeeded) {
        if (saved.axes_left_out > 0) {
            m_host.ShowAxesLeftOut(m_files.CurrentPath());
        }
        return true;
    }
    MERRLOG("FileCommands::Write(): failed to save '%s'", m_files.CurrentPath().c_str());
    m_host.ShowWriteFault(m_files.CurrentPath());
    ShowErrorBox(m_host.DialogParent(), "Failed to create ini. data file");
    return false;
}

}  // namespace wavo
