// Tables of numbers and parts of recordings in the main window: tables are opened as recordings,
// and Export Part... writes a part of the open recording to a file of its own.
//
// Events are handled while either works, so one waits for the other: there is one at a time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tables/part_export.h"
#include "ui/dialogs/export_part.h"
#include "ui/dialogs/table_work.h"
#include "ui/dialogs/work_in_steps.h"
#include "view/command_target.h"
#include "view/recording_files.h"

class QSettings;
class QWidget;

namespace wavo {

class CWavoView;
struct Prompts;

class TableControl final : public CommandTarget {
 public:
    /// Lets the view open tables. Dialogs stand over `frame`. Nothing is owned; all outlive this
    /// object, but the view opens nothing once it is gone. Without settings no answer is
    /// remembered. `clock` only ever goes forward.
    TableControl(QWidget& frame, CWavoView& view, const Prompts& prompts, QSettings* settings,
                 WorkInSteps::Clock clock = WorkInSteps::SteadyClock);

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;

    /// The lines of tables that are opened from now on are so many seconds apart, which is then not
    /// asked for; nothing: as ever.
    void SetCycleTime(std::optional<double> seconds) { m_cycle_time = seconds; }

    /// Gives up the work that is under way. For the end of the window.
    void Cancel() { m_steps.Cancel(); }

    /// Removes recordings of tables that programs have left behind.
    static void RemoveLeftBehind();

 private:
    std::optional<RecordingToOpen> Import(const std::string& path, OpenedFrom from);
    /// Finds the extremes of a recording that has none.
    bool Prepare(OpenRecording& recording);
    /// False, and the user is told, while other work is under way.
    bool MayWorkOn(const std::string& path) const;
    void Export();
    /// The computed axes, which a table has behind those of the recording.
    [[nodiscard]] std::vector<tables::PartColumn> ComputedColumns(OpenRecording& recording) const;
    [[nodiscard]] PartStretches Stretches(OpenRecording& recording) const;
    /// What the dialog begins with.
    [[nodiscard]] tables::PartFile Suggestion(const OpenRecording& recording) const;

    QWidget& m_frame;
    CWavoView& m_view;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    WorkInSteps m_steps;
    const TableSurroundings m_surroundings{&m_frame, m_prompts, m_steps};
    bool m_is_busy = false;
    std::optional<double> m_cycle_time;
    std::optional<tables::PartFile> m_last;  // that was exported
};

}  // namespace wavo
