#include "programs/report_run.h"

#include <QDateTime>
#include <QFileInfo>
#include <algorithm>

#include "measure/words.h"
#include "programs/compare_run.h"
#include "programs/table_file.h"
#include "report/axis_report.h"
#include "report/circle_report.h"
#include "support/file_name.h"
#include "tables/column_table.h"

namespace wavo::programs {

namespace {

using measure::NamedFigure;
using tables::ColumnTable;

constexpr double kFarthestReach = 0.2;  // s: a longer lag is none

report::ReportHeader HeaderOf(const ReportOptions& options, const std::string& made_by) {
    const QFileInfo file(QString::fromStdString(options.file));
    report::ReportHeader header;
    header.machine = QString::fromStdString(options.machine);
    header.program = QString::fromStdString(options.program);
    header.date = options.date.empty()
                      ? file.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                      : QString::fromStdString(options.date);
    header.file = file.fileName();
    header.made_by = QString::fromStdString(made_by);
    return header;
}

/// The columns of an axis that was named: commanded ones may be missing.
struct AxisColumns {
    measure::AxisPair names;
    std::span<const double> commanded;
    std::span<const double> actual;
};

measure::Told<AxisColumns> ColumnsOf(const ColumnTable& table, const std::string& axis) {
    AxisColumns columns;
    columns.names = {axis, "", axis};
    for (const measure::AxisPair& pair : measure::FindAxisPairs(table.names)) {
        if (pair.axis == axis || pair.actual == axis) {
            columns.names = pair;
            columns.commanded = table.Find(pair.commanded);
        }
    }
    columns.actual = table.Find(columns.names.actual);
    if (columns.actual.empty()) {
        std::string names;
        for (const std::string& name : table.names) {
            names += " " + name;
        }
        return measure::Told<AxisColumns>::Not("no column " + axis + "; there are" + names);
    }
    return columns;
}

/// The axes to take when nobody says: of a circle the first two of X, Y and Z that are there, of an
/// axis test all pairs.
std::vector<std::string> UsualAxes(const ReportOptions& options, const ColumnTable& table) {
    std::vector<std::string> axes;
    if (options.kind == ReportKind::kAxis) {
        for (const measure::AxisPair& pair : measure::FindAxisPairs(table.names)) {
            axes.push_back(pair.axis);
        }
        if (axes.empty() && table.Has("cmd") && table.Has("act")) {
            axes.emplace_back("cmd");
        }
        return axes;
    }
    for (const char* axis : {"X", "Y", "Z"}) {
        if (axes.size() < 2 && ColumnsOf(table, axis)) {
            axes.emplace_back(axis);
        }
    }
    return axes;
}

measure::Told<std::vector<AxisColumns>> AllColumns(const ReportOptions& options,
                                                   const ColumnTable& table) {
    using Result = measure::Told<std::vector<AxisColumns>>;
    std::vector<AxisColumns> all;
    for (const std::string& axis :
         options.axes.empty() ? UsualAxes(options, table) : options.axes) {
        if (axis == "cmd" && !table.Has("cmd_cmd")) {
            all.push_back({{"axis", "cmd", "act"}, table.Find("cmd"), table.Find("act")});
            continue;
        }
        const auto columns = ColumnsOf(table, axis);
        if (!columns) {
            return Result::Not(columns.reason);
        }
        all.push_back(*columns);
    }
    return all;
}

/// The table of figures as text.
std::string TextOf(std::span<const NamedFigure> figures, const measure::Judgement& judgement) {
    std::string text;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const NamedFigure& figure = figures[i];
        std::string line = figure.key;
        line.resize(std::max<std::size_t>(line.size() + 1, 20), ' ');
        line += figure.figure
                    ? measure::Decimals(*figure.figure, figure.decimals) + " " + figure.unit
                    : "not told: " + figure.figure.reason;
        const auto judged = std::ranges::find(judgement.judged, i, &measure::Judged::figure);
        if (judged != judgement.judged.end()) {
            line.resize(std::max<std::size_t>(line.size() + 2, 40), ' ');
            line += "limit " + measure::TextOf(judged->limit, figure.decimals) + ": " +
                    measure::TextOf(judged->verdict);
        }
        text += line + "\n";
    }
    return text;
}

measure::Told<measure::Limits> LimitsOf(const ReportOptions& options) {
    if (options.limits.empty()) {
        return measure::Limits();
    }
    const auto text = ReadWholeFile(options.limits);
    if (!text) {
        return measure::Told<measure::Limits>::Not(text.reason);
    }
    auto limits = measure::ParseLimits(*text);
    if (limits && limits->empty()) {
        return measure::Told<measure::Limits>::Not(options.limits + ": no limits in [Limits]");
    }
    return limits ? std::move(limits)
                  : measure::Told<measure::Limits>::Not(options.limits + ": " + limits.reason);
}

std::string Unwritable(const std::string& path) {
    return path + ": cannot be written" + FileNameFault(path);
}

/// Axes that ought to stand still: commanded and actual ones of letters outside the plane.
std::vector<measure::OtherAxis> OthersOf(const ColumnTable& table,
                                         const std::vector<AxisColumns>& plane) {
    std::vector<measure::OtherAxis> others;
    for (const char* axis : {"X", "Y", "Z"}) {
        const bool in_plane = std::ranges::any_of(
            plane, [&](const AxisColumns& columns) { return columns.names.axis == axis; });
        const auto columns = ColumnsOf(table, axis);
        if (!in_plane && columns) {
            others.push_back({axis, columns->actual});
        }
    }
    return others;
}

int RunCircle(const ReportOptions& options, const ColumnTable& table,
              const std::vector<AxisColumns>& axes, report::CircleReport* report,
              std::string* output, std::string* error) {
    if (axes.size() != 2) {
        *error = options.file + ": no two axes; name them with --axes";
        return kWrongUse;
    }
    report->first_axis = axes[0].names.axis;
    report->second_axis = axes[1].names.axis;
    report->path = {options.cycle_time, axes[0].actual, axes[1].actual, axes[0].commanded,
                    axes[1].commanded};
    report->setup = options.circle;
    report->setup.others = OthersOf(table, axes);
    report->polar_step = options.polar_step;
    report->result = measure::TestCircle(report->path, report->setup);
    const auto verdict = report::JudgeCircle(*report);
    *output = TextOf(verdict.figures, verdict.judgement) + NotesText(report->result.notes) +
              NotesText({report::kFeedbackCaveat});
    if (!options.out.empty() &&
        !report::WriteCirclePdf(QString::fromStdString(options.out), *report)) {
        *error = Unwritable(options.out);
        return kWrongUse;
    }
    if (!options.json.empty() && !WriteWholeFile(options.json, report::CircleJson(*report))) {
        *error = Unwritable(options.json);
        return kWrongUse;
    }
    return verdict.exit_code;
}

void TakeContour(const ReportOptions& options, const std::vector<AxisColumns>& axes,
                 report::AxisReport* report) {
    if (axes.size() < 2 || axes.size() > 3) {
        return;
    }
    double lag = 0.0;  // s
    for (const report::AxisPart& part : report->parts) {
        lag = std::max(lag, part.result.following.lag.value.value_or(0.0) / 1000.0);
    }
    report->contour_reach =
        measure::ContourReach(std::min(lag, kFarthestReach), options.cycle_time);
    std::vector<measure::ContourAxis> path;
    path.reserve(axes.size());
    for (const AxisColumns& columns : axes) {
        path.push_back({columns.commanded, columns.actual});
    }
    report->contour = measure::ContourFiguresOf(path, {0, axes.front().actual.size()},
                                                {.reach = report->contour_reach});
}

int RunAxis(const ReportOptions& options, const std::vector<AxisColumns>& axes,
            report::AxisReport* report, std::string* output, std::string* error) {
    if (axes.empty()) {
        *error = options.file + ": no commanded and actual columns that belong together";
        return kWrongUse;
    }
    report->setup = options.axis;
    for (const AxisColumns& columns : axes) {
        if (columns.commanded.empty()) {
            *error = options.file + ": no commanded column of " + columns.names.axis;
            return kWrongUse;
        }
        report->parts.push_back({columns.names, columns.commanded, columns.actual,
                                 measure::TestAxis(columns.commanded, columns.actual,
                                                   options.cycle_time, options.axis)});
    }
    TakeContour(options, axes, report);
    const auto verdict = report::JudgeAxes(*report);
    *output = TextOf(verdict.figures, verdict.judgement);
    for (const report::AxisPart& part : report->parts) {
        for (const std::string& note : part.result.notes) {
            *output += "note: " + part.names.axis + ": " + note + "\n";
        }
    }
    if (!options.out.empty() &&
        !report::WriteAxisPdf(QString::fromStdString(options.out), *report)) {
        *error = Unwritable(options.out);
        return kWrongUse;
    }
    if (!options.json.empty() && !WriteWholeFile(options.json, report::AxisJson(*report))) {
        *error = Unwritable(options.json);
        return kWrongUse;
    }
    return verdict.exit_code;
}

int RunOnFile(const ReportOptions& options, const TableFile& file, const std::string& made_by,
              std::string* output, std::string* error) {
    const auto limits = LimitsOf(options);
    const auto axes = AllColumns(options, file.table);
    if (!limits || !axes) {
        *error = limits ? options.file + ": " + axes.reason : limits.reason;
        return kWrongUse;
    }
    if (options.kind == ReportKind::kCircle) {
        report::CircleReport report;
        report.header = HeaderOf(options, made_by);
        report.limits = *limits;
        return RunCircle(options, file.table, *axes, &report, output, error);
    }
    report::AxisReport report;
    report.header = HeaderOf(options, made_by);
    report.limits = *limits;
    return RunAxis(options, *axes, &report, output, error);
}

}  // namespace

std::string NotesText(const std::vector<std::string>& notes) {
    std::string text;
    for (const std::string& note : notes) {
        text += "note: " + note + "\n";
    }
    return text;
}

int RunReport(const ReportOptions& options, const std::string& made_by, std::string* output,
              std::string* error) {
    const auto file = ReadTable(options.file);
    if (!file) {
        *error = file.reason;
        return kWrongUse;
    }
    int code = 0;
    if (options.kind == ReportKind::kCompare) {
        report::ReportHeader header = HeaderOf(options, made_by);
        header.file = QString::fromStdString(options.file);
        code = RunCompare(options, *file, header, output, error);
    } else {
        ReportOptions decided = options;
        if (decided.cycle_time == 0.0) {
            decided.cycle_time = file->cycle_time.value_or(kUsualCycleTime);
        }
        code = RunOnFile(decided, *file, made_by, output, error);
    }
    if (code != kWrongUse) {
        *output += NotesText(file->notes);
    }
    return code;
}

}  // namespace wavo::programs
