#include "ui/dialogs/table_work.h"

#include <memory>
#include <utility>

#include "tables/table_import.h"

namespace wavo {

namespace {

/// Has work done; tells the user when it fails.
bool RunWork(const TableSurroundings& surroundings, tables::SteppedWork& work, const QString& title,
             const std::string& path) {
    const WorkInSteps::Ending ending =
        surroundings.steps.Run(work, title, QString::fromStdString(path), surroundings.window);
    if (ending == WorkInSteps::Ending::kFailed) {
        surroundings.prompts.ShowError(surroundings.window, work.Why().text);
    }
    return ending == WorkInSteps::Ending::kDone;
}

}  // namespace

std::optional<OpenedTable> OpenTable(const TableSurroundings& surroundings, const std::string& path,
                                     const TableOpening& opening) {
    const auto preview = tables::PreviewTable(path);
    if (!preview) {
        surroundings.prompts.ShowError(surroundings.window, preview.Why().text);
        return std::nullopt;
    }
    const std::optional<tables::TimeChoice> choice =
        opening.cycle_time
            ? std::optional(tables::TimeChoice{std::nullopt, 1.0, *opening.cycle_time})
            : TimeOfTable(surroundings.window, opening.settings, *preview, opening.ask);
    if (!choice) {
        if (opening.ask == AskTime::kNever) {
            surroundings.prompts.ShowError(
                surroundings.window,
                path + ": it does not tell when its lines are, and nobody is there to be asked");
        }
        return std::nullopt;
    }
    const auto import =
        tables::TableImport::Begin(*preview, *choice, opening.folder, opening.program);
    if (!import) {
        surroundings.prompts.ShowError(surroundings.window, import.Why().text);
        return std::nullopt;
    }
    if (!RunWork(surroundings, **import, QStringLiteral("Import Table"), path)) {
        return std::nullopt;
    }
    return OpenedTable{(*import)->Take(), (*import)->Notices()};
}

bool WritePart(const TableSurroundings& surroundings, recording::RecordingReader& reader,
               recording::LineSpan part, const tables::PartFile& file) {
    const auto work = tables::PartExport::Begin(reader, part, file);
    if (!work) {
        surroundings.prompts.ShowError(surroundings.window, work.Why().text);
        return false;
    }
    return RunWork(surroundings, **work, QStringLiteral("Export Part"), file.path);
}

}  // namespace wavo
