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

/// The good runs; not told which one cannot be read, or has another cycle time than the file.
measure::Told<std::vector<ColumnTable>> ReferencesOf(const ReportOptions& options,
                                                     const TableFile& file) {
    using Result = measure::Told<std::vector<ColumnTable>>;
    std::vector<ColumnTable> references;
    for (const std::string& path : options.references) {
        auto reference = ReadTable(path);
        if (!reference) {
            return Result::Not(reference.reason);
        }
        if (reference->cycle_time && file.cycle_time &&
            *reference->cycle_time != *file.cycle_time) {
            return Result::Not(measure::Words("%s: its lines are %g s apart, those of %s %g s",
                                              path.c_str(), *reference->cycle_time,
                                              options.file.c_str(), *file.cycle_time));
        }
        references.push_back(std::move(reference.value->table));
    }
    return references;
}

}  // namespace

int RunCompare(const ReportOptions& options, const TableFile& file, std::string* output,
               std::string* error) {
    const ColumnTable& table = file.table;
    const auto told = ReferencesOf(options, file);
    if (!told) {
        *error = told.reason;
        return kWrongUse;
    }
    const std::vector<ColumnTable>& references = *told;
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
    if (!compared) {
        *error = options.file + ": " + compared.reason;
        return kNotEvaluated;
    }
    const report::ComparisonReport report{options.file, options.references, options.cycle_time,
                                          std::move(*compared.value)};
    const measure::RunComparison& comparison = report.comparison;
    *output = measure::Words(
        "begins %s s from the reference's beginning, likeness %s\n",
        measure::Decimals(-static_cast<double>(comparison.shift) * options.cycle_time, 3).c_str(),
        measure::Decimals(comparison.likeness.value_or(0.0), 4).c_str());
    for (const measure::AxisComparison& axis : comparison.axes) {
        *output += measure::TextOf(axis, options.cycle_time) + "\n";
    }
    for (const auto& [path, text] : {std::pair{options.json, report::ComparisonJson(report)},
                                     std::pair{options.junit, report::ComparisonJunit(report)}}) {
        if (!path.empty() && !WriteWholeFile(path, text)) {
            *error = path + ": cannot be written" + FileNameFault(path);
            return kWrongUse;
        }
    }
    if (!measure::IsAllTold(comparison)) {
        return kNotEvaluated;
    }
    return measure::HasPassed(comparison) ? 0 : 1;
}

}  // namespace wavo::programs
