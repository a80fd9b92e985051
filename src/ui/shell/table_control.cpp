#include "ui/shell/table_control.h"

#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QString>
#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "platform/folders.h"
#include "support/flag_scope.h"
#include "tables/levels_work.h"
#include "ui/prompts.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

using recording::LineSpan;

constexpr std::array kTableExtensions{".csv", ".csv.gz", ".txt"};
constexpr char kTableFilter[] = "Tables|*.csv;*.csv.gz;*.txt|";

bool HasExtension(const QString& path, const char* extension) {
    return path.endsWith(QLatin1String(extension), Qt::CaseInsensitive);
}

bool IsTable(const std::string& path) {
    return std::ranges::any_of(kTableExtensions, [&path](const char* extension) {
        return HasExtension(QString::fromStdString(path), extension);
    });
}

/// The name of a file without the folder and without what tells its kind.
QString BareName(const QFileInfo& file) {
    return HasExtension(file.fileName(), ".gz")
               ? QFileInfo(file.completeBaseName()).completeBaseName()
               : file.completeBaseName();
}

/// The lines of a stretch that lie within all; nothing when there are none.
std::optional<LineSpan> Within(const LineRange& lines, const LineSpan& all) {
    const auto clamp = [&all](std::int64_t line) {
        return std::clamp(static_cast<std::uint64_t>(std::max<std::int64_t>(line, 0)), all.first,
                          all.end);
    };
    const LineSpan part{clamp(lines.begin), clamp(lines.end)};
    return part.first < part.end ? std::optional(part) : std::nullopt;
}

}  // namespace

TableControl::TableControl(QWidget& frame, CWavoView& view, const Prompts& prompts,
                           QSettings* settings, WorkInSteps::Clock clock)
    : m_frame(frame),
      m_view(view),
      m_prompts(prompts),
      m_settings(settings),
      m_steps(std::move(clock)) {
    view.Past().Files().AddImporter(
        {kTableFilter, IsTable,
         [this](const std::string& path, OpenedFrom from) { return Import(path, from); }});
    view.Past().Files().SetPreparation(
        [this](OpenRecording& recording) { return Prepare(recording); });
}

bool TableControl::IsEnabled(CommandId id) const {
    return id == CommandId::kExportPart && m_view.Work().Recording() != nullptr && !m_is_busy;
}

void TableControl::Execute(CommandId id) {
    if (IsEnabled(id)) {
        Export();
    }
}

void TableControl::RemoveLeftBehind() {
    if (const std::string folder = platform::CacheFolder(); !folder.empty()) {
        tables::TemporaryRecording::RemoveLeftBehind(folder);
    }
}

std::optional<RecordingToOpen> TableControl::Import(const std::string& path, OpenedFrom from) {
    if (!MayWorkOn(path)) {
        return std::nullopt;
    }
    const FlagScope busy(m_is_busy);
    const std::string folder = platform::CacheFolder();
    if (folder.empty()) {
        m_prompts.ShowError(&m_frame, path + ": there is no folder for temporary recordings");
        return std::nullopt;
    }
    const AskTime ask = !m_prompts.is_somebody_there  ? AskTime::kNever
                        : from == OpenedFrom::kDialog ? AskTime::kAlways
                                                      : AskTime::kUnlessRemembered;
    std::optional<OpenedTable> table = OpenTable(
        m_surroundings, path, {m_settings, ask, m_cycle_time, folder, "wavo " WAVO_VERSION});
    if (!table) {
        return std::nullopt;
    }
    const auto keeper = std::make_shared<tables::TemporaryRecording>(std::move(table->recording));
    return RecordingToOpen{keeper->Path(), path, std::move(table->notices), keeper};
}

bool TableControl::MayWorkOn(const std::string& path) const {
    if (m_is_busy) {
        m_prompts.ShowError(&m_frame, path + ": not opened, as another file is being worked on");
    }
    return !m_is_busy;
}

bool TableControl::Prepare(OpenRecording& recording) {
    if (recording.Reader().SettleLevels(0) == 0) {
        return true;
    }
    if (!MayWorkOn(recording.Path())) {
        return false;
    }
    const FlagScope busy(m_is_busy);
    tables::LevelsWork work(recording.Reader());
    return m_steps.Run(work, QStringLiteral("Open Recording"),
                       QString::fromStdString(recording.Path()),
                       &m_frame) == WorkInSteps::Ending::kDone;
}

void TableControl::Export() {
    const FlagScope busy(m_is_busy);
    m_view.Past().Files().Refresh();
    const std::shared_ptr<OpenRecording> recording = m_view.Work().Recordings().Share();
    ExportPart dialog(Stretches(*recording), Suggestion(*recording), m_prompts, &m_frame);
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    m_last = dialog.File();
    // Of a table another file is read, but to the user it is the table that is open.
    if (QFileInfo(QString::fromStdString(m_last->path)) ==
        QFileInfo(QString::fromStdString(recording->Path()))) {
        m_prompts.ShowError(&m_frame, tables::kOntoItself);
        return;
    }
    tables::PartFile file = *m_last;
    file.columns = ComputedColumns(*recording);
    WritePart(m_surroundings, recording->Reader(), dialog.Part(), file);
}

std::vector<tables::PartColumn> TableControl::ComputedColumns(OpenRecording& recording) const {
    std::vector<tables::PartColumn> columns;
    const std::vector<std::string>& names = m_view.Work().Values().AxisNames();
    for (std::size_t i = m_view.Work().Computed().OtherNames().size(); i < names.size(); ++i) {
        if (History* const values = recording.StreamOf(names[i], 0)) {
            columns.push_back({names[i], values});
        }
    }
    return columns;
}

PartStretches TableControl::Stretches(OpenRecording& recording) const {
    const recording::RecordingReader& reader = recording.Reader();
    PartStretches stretches;
    stretches.everything = {reader.FirstLine(), reader.EndLine()};
    stretches.cycle_time = recording.CycleTime();
    stretches.visible = Within(m_view.Past().Window().Window().Seen(), stretches.everything);
    GraphCursors& cursors = m_view.Cursors();
    cursors.Renew();
    const std::optional<std::int64_t> a = cursors.LineOf(CursorName::kA);
    const std::optional<std::int64_t> b = cursors.LineOf(CursorName::kB);
    if (cursors.IsShown() && a && b) {
        stretches.marked = Within({std::min(*a, *b), std::max(*a, *b) + 1}, stretches.everything);
    }
    return stretches;
}

tables::PartFile TableControl::Suggestion(const OpenRecording& recording) const {
    const QFileInfo opened(QString::fromStdString(recording.Path()));
    const QDir folder = m_last ? QFileInfo(QString::fromStdString(m_last->path)).absoluteDir()
                               : opened.absoluteDir();
    const QString path = folder.filePath(BareName(opened) + QStringLiteral("_part.mcap"));
    return {QDir::toNativeSeparators(path).toStdString(),
            m_last ? m_last->format : tables::PartFormat::kRecording,
            m_view.Work().Settings().Current().export_settings};
}

}  // namespace wavo
