// The commands that open recordings and leave them again.
//
// Files of other kinds are opened by importers, which make a recording of them first.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "view/command_target.h"
#include "view/past_view.h"

class QWidget;

namespace wavo {

struct Prompts;

/// How the user came to open a file.
enum class OpenedFrom {
    kDialog,     ///< chosen among others
    kElsewhere,  ///< on the command line, dropped, opened before
};

/// Makes recordings of files of another kind.
struct RecordingImporter {
    std::string filter;                                   ///< of file dialogs: "Tables|*.csv|"
    std::function<bool(const std::string& path)> is_for;  ///< by the name of the file
    /// A recording that holds what the file does. Nothing when the user does not want
    /// it after all, or was told what is wrong. May show dialogs and take steps.
    std::function<std::optional<RecordingToOpen>(const std::string& path, OpenedFrom from)> import;
};

class RecordingFiles final : public CommandTarget {
 public:
    /// None of the references is owned; all outlive this object. Dialogs stand over `parent`.
    /// `opened`: a recording was opened by the user, its absolute path.
    RecordingFiles(Session& session, PastView& past, const Prompts& prompts, QWidget& parent,
                   std::function<void(const std::string& path)> opened);

    /// What is done with each recording before it is shown; false: it is not to be shown. May show
    /// progress and take steps.
    void SetPreparation(std::function<bool(OpenRecording&)> prepare) {
        m_prepare = std::move(prepare);
    }
    void AddImporter(RecordingImporter importer) { m_importers.push_back(std::move(importer)); }

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;
    /// Whether a command that can be on or off is on.
    [[nodiscard]] bool IsOn(CommandId id) const {
        return id == CommandId::kFollow && m_follows && m_session.Recording() != nullptr;
    }

    /// A file of this name is opened as a recording, not as a graph file.
    [[nodiscard]] bool IsRecording(const std::string& path) const;
    /// Opens a recording, or a file that an importer is for. False, and the user was told why, when
    /// that failed.
    bool Open(const std::string& path, OpenedFrom from = OpenedFrom::kElsewhere);

    /// Where the recent recordings are found: the path of the newest for 0; empty for none.
    void SetRecent(std::function<std::string(int index)> recent) { m_recent = std::move(recent); }

    /// Takes in what was written to the recording since, and shows what has become of its file.
    void Refresh();

 private:
    void Ask();
    [[nodiscard]] std::string RecentOf(CommandId id) const;
    void ShowAttachedGraphs();

    Session& m_session;
    PastView& m_past;
    const Prompts& m_prompts;
    QWidget& m_parent;
    const std::function<void(const std::string&)> m_opened;
    std::vector<RecordingImporter> m_importers;
    std::function<bool(OpenRecording&)> m_prepare;
    std::function<std::string(int)> m_recent;
    bool m_follows = false;
};

}  // namespace wavo
