#include "view/file_commands.h"

#include <QString>
#include <optional>

#include "platform/file.h"
#include "settings/view_settings_file.h"
#include "support/diagnostics.h"
#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

FileQuestion GraphFileQuestion(const char* caption, const std::string& path) {
    return {QString::fromLatin1(caption), QString::fromStdString(path), QStringLiteral("ini"),
            QStringLiteral("Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||")};
}

}  // namespace

void FileCommands::New() {
    m_session.Files().New();
    m_session.Recordings().AddGraphIfNone();
}

void FileCommands::Open() {
    GraphFiles& files = m_session.Files();
    const std::optional<QString> chosen =
        m_prompts.open_file(m_parent, GraphFileQuestion("Open", files.CurrentPath()));
    if (!chosen) {
        return;
    }
    const std::string path = chosen->toStdString();
    const ViewSettings before = m_session.Settings().Current();
    files.SetCurrentPath(path);
    m_session.Settings().ReadFrom(path);
    if (!files.Open(path, FileNameOf(path), true) && m_session.Settings().Current() != before) {
        m_session.RebuildGraphs();  // nobody else does without new graphs
    }
    m_session.Recordings().AddGraphIfNone();
    m_session.CommandsChanged();
}

void FileCommands::OpenRecent(const std::string& path) {
    const ViewSettings before = m_session.Settings().Current();
    m_session.Files().Open(path, FileNameOf(path), false);
    m_session.Files().SetCurrentPath(path);
    m_session.Settings().ReadFrom(path);
    if (m_session.Settings().Current() != before) {
        m_session.RebuildGraphs();
    }
    m_session.Recordings().AddGraphIfNone();
    m_session.CommandsChanged();
}

void FileCommands::Save() {
    if (m_session.Files().IsUnnamed()) {
        SaveAs();
    } else if (Write()) {
        WriteSettings();
        m_session.Files().ShowRunTitle();
    }
}

void FileCommands::SaveAs() {
    const std::optional<QString> chosen = m_prompts.save_file(
        m_parent, GraphFileQuestion("Save As", m_session.Files().CurrentPath()));
    if (!chosen) {
        return;
    }
    const std::string path = chosen->toStdString();
    if (platform::Files().Exists(path) && !MayReplaceFile(m_prompts, m_parent, path)) {
        return;
    }
    m_session.Files().SetCurrentPath(path);
    Write();
    m_session.Files().ShowTitle(FileNameOf(path));
    WriteSettings();
    m_session.CommandsChanged();
}

void FileCommands::WriteSettings() {
    const std::string& path = m_session.Files().CurrentPath();
    bool has_kept = false;
    if (!WriteProperties(path, m_session.Settings().Current(), &has_kept)) {
        m_session.ShowWriteFault(path);
    }
    if (has_kept) {
        m_session.Files().NoteKept();
    }
}

bool FileCommands::Write() {
    const std::string& path = m_session.Files().CurrentPath();
    const Expected<std::size_t> axes_left_out = m_session.Files().Save();
    if (axes_left_out) {
        if (*axes_left_out > 0) {
            m_session.ShowAxesLeftOut(path);
        }
        return true;
    }
    MERRLOG("FileCommands::Write(): failed to save '%s'", path.c_str());
    m_session.ShowWriteFault(path);
    m_prompts.ShowError(m_parent, axes_left_out.Why().text);
    return false;
}

}  // namespace wavo
