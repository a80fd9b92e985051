#include "programs/compare_run.h"

#include <algorithm>

#include "measure/reference_test.h"
#include "measure/words.h"
#include "programs/report_run.h"
#include "programs/table_file.h"
#include "report/comparison_report.h"
#include "support/file_name.h"

namespace wavo::programs {

namespace {

using tables::ColumnTable;

std::vector<std::string> AxesOf(const ReportOptions& options, const ColumnTable& table,
                                const ColumnTable& reference) {
    if (!options.axes.empty()) {
        return options.axes;
    }
    std::vector<std::string> axes;
    std::ranges::copy_if(table.names, std::back_inserter(axes), [&](const std::string& name) {
        return reference.Has(name) && name != "cycle" && name != "line";
    });
    return axes;
}

measure::RunColumns ColumnsOf(const ColumnTable& table, const std::vector<std::string>& axes) {
    measure::RunColumns columns;
    for (const std::string& axis : axes) {
        columns.push_back(table.Find(axis));
    }
    return columns;
}

/// What is compared with.
struct GoodRuns {
    std::vector<ColumnTable> tables;
    double cycle_time = 0.0;  ///< seconds, of all files; 0: none tells it
    std::vector<std::string> notes;
};

/// The good runs; not told which one cannot be read, or has another cycle time than what tells it
/// before: the file, else the option.
measure::Told<GoodRuns> GoodRunsOf(const ReportOptions& options, const TableFile& file) {
    using Result = measure::Told<GoodRuns>;
    GoodRuns good;
    std::string told_by = file.cycle_time ? options.file : "--cycle";
    good.cycle_time = file.cycle_time.value_or(options.cycle_time);
    if (options.cycle_time != 0.0 && options.cycle_time != good.cycle_time) {
        return Result::Not(measure::Words("%s: its lines are %g s apart, those of --cycle %g s",
                                          options.file.c_str(), good.cycle_time,
                                          options.cycle_time));
    }
    for (const std::string& path : options.references) {
        auto reference = ReadTable(path);
        if (!reference) {
            return Result::Not(reference.reason);
        }
        const double cycle_time = reference->cycle_time.value_or(good.cycle_time);
        if (good.cycle_time != 0.0 && cycle_time != good.cycle_time) {
            return Result::Not(measure::Words("%s: its lines are %g s apart, those of %s %g s",
                                              path.c_str(), cycle_time, told_by.c_str(),
                                              good.cycle_time));
        }
        told_by = good.cycle_time == 0.0 ? path : told_by;
        good.cycle_time = cycle_time;
        for (const std::string& note : reference->notes) {
            good.notes.push_back(std::string(path).append(": ").append(note));
        }
        good.tables.push_back(std::move(reference.value->table));
    }
    return good;
}

/// Every axis with the reason why nothing was compared; "run" stands for them when there is none.
std::vector<measure::AxisComparison> NotCompared(std::vector<std::string> axes,
                                                 const std::string& reason) {
    if (axes.empty()) {
        axes.emplace_back("run");
    }
    std::vector<measure::AxisComparison> not_compared;
    for (const std::string& axis : axes) {
        not_compared.push_back({axis, {}, measure::Told<measure::Compared>::Not(reason)});
    }
    return not_compared;
}

/// Writes the files that were asked for; the name of one that cannot be written, or nothing.
std::string WriteResults(const ReportOptions& options, const report::ComparisonReport& report) {
    for (const auto& [path, text] : {std::pair{options.json, report::ComparisonJson(report)},
                                     std::pair{options.junit, report::ComparisonJunit(report)}}) {
        if (!path.empty() && !WriteWholeFile(path, text)) {
            return path;
        }
    }
    return {};
}

std::string TextOf(const report::ComparisonReport& report) {
    const measure::RunComparison& comparison = report.comparison;
    std::string text = measure::Words(
        "begins %s s from the reference's beginning, likeness %s\n",
        measure::Decimals(-static_cast<double>(comparison.shift) * report.cycle_time, 3).c_str(),
        measure::Decimals(comparison.likeness.value_or(0.0), 4).c_str());
    text += measure::CoverageOf(comparison) + "\n";
    for (const measure::AxisComparison& axis : comparison.axes) {
        text += measure::TextOf(axis, report.cycle_time) + "\n";
    }
    return text;
}

}  // namespace

int RunCompare(const ReportOptions& options, const TableFile& file,
               const report::ReportHeader& header, std::string* output, std::string* error) {
    const ColumnTable& table = file.table;
    const auto told = GoodRunsOf(options, file);
    if (!told) {
        *error = told.reason;
        return kWrongUse;
    }
    const std::vector<ColumnTable>& references = told->tables;
    const auto axes = AxesOf(options, table, references.front());
    for (const std::string& axis : axes) {
        const bool everywhere =
            table.Has(axis) &&
            std::ranges::all_of(references, [&](const ColumnTable& r) { return r.Has(axis); });
        if (!everywhere) {
            *error = "no column " + axis + " in every file";
            return kWrongUse;
        }
    }
    std::vector<measure::RunColumns> good;
    good.reserve(references.size());
    for (const ColumnTable& reference : references) {
        good.push_back(ColumnsOf(reference, axes));
    }
    auto compared =
        measure::CompareRunsInSteps(axes, good, ColumnsOf(table, axes),
                                    {options.tolerance.value_or(0.0), options.spread}, std::nullopt)
            .Compute();
    report::ComparisonReport report;
    report.header = header;
    report.references = options.references;
    report.lines = table.Lines();
    report.cycle_time = told->cycle_time == 0.0 ? kUsualCycleTime : told->cycle_time;
    report.notes = file.notes;
    report.notes.insert(report.notes.end(), told->notes.begin(), told->notes.end());
    if (compared) {
        report.comparison = std::move(*compared.value);
        *output = TextOf(report);
    } else {
        report.comparison.axes = NotCompared(axes, compared.reason);
    }
    *output += NotesText(told->notes);
    if (const std::string path = WriteResults(options, report); !path.empty()) {
        *error = path + ": cannot be written" + FileNameFault(path);
        return kWrongUse;
    }
    if (!compared) {
        *error = options.file + ": " + compared.reason;
    }
    if (!measure::IsAllTold(report.comparison)) {
        return kNotEvaluated;
    }
    return measure::HasPassed(report.comparison) ? 0 : 1;
}

}  // namespace wavo::programs
