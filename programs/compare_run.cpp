#include "programs/compare_run.h"

#include <algorithm>

#include "measure/comparison.h"
#include "measure/words.h"
#include "programs/report_run.h"
#include "programs/table_file.h"
#include "report/json_writer.h"
#include "support/file_name.h"

namespace wavo::programs {

namespace {

using tables::ColumnTable;

constexpr double kLeastLikeness = 0.5;

/// One axis against its band.
struct AxisComparison {
    std::string axis;
    measure::Told<measure::Compared> compared;
};

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

/// Values of a run moved onto the places of the reference.
std::vector<double> Moved(std::span<const double> values, std::size_t size, std::int64_t shift) {
    return measure::DifferenceFrom(std::vector<double>(size, 0.0), values, shift);
}

measure::ToleranceBand BandOf(const ReportOptions& options, const std::string& axis,
                              const std::vector<ColumnTable>& references,
                              const std::vector<std::int64_t>& shifts) {
    const auto first = references.front().Find(axis);
    if (!options.spread) {
        return measure::AbsoluteBand(first, *options.tolerance);
    }
    std::vector<std::vector<double>> runs;
    for (std::size_t i = 0; i < references.size(); ++i) {
        runs.push_back(Moved(references[i].Find(axis), first.size(), shifts[i]));
    }
    const std::vector<std::span<const double>> spans(runs.begin(), runs.end());
    return measure::SpreadBand(spans, *options.spread, options.tolerance.value_or(0.0));
}

/// Where a run begins in the reference, by the axes that move.
measure::Told<measure::Match> MatchOf(const std::vector<std::string>& axes,
                                      const ColumnTable& reference, const ColumnTable& run) {
    auto best = measure::Told<measure::Match>::Not("no axis to align by");
    for (const std::string& axis : axes) {
        auto match = measure::BestMatch(reference.Find(axis), run.Find(axis));
        if (match && (!best || match->likeness > best->likeness)) {
            best = std::move(match);
        } else if (!best) {
            best.reason = match.reason;
        }
    }
    if (best && best->likeness < kLeastLikeness) {
        return measure::Told<measure::Match>::Not("nothing in it is like the reference");
    }
    return best;
}

std::string TextOf(const AxisComparison& axis, double cycle_time) {
    if (!axis.compared) {
        return axis.axis + ": not compared: " + axis.compared.reason;
    }
    const measure::Compared& c = *axis.compared;
    return measure::Words(
        "%s: %s; worst %s (tolerance %s) at %s s of the reference; %zu of %zu lines outside",
        axis.axis.c_str(), c.passed ? "pass" : "FAIL", measure::Decimals(c.worst, 6).c_str(),
        measure::Decimals(c.worst_width, 6).c_str(),
        measure::Decimals(static_cast<double>(c.worst_at) * cycle_time, 3).c_str(), c.outside,
        c.compared);
}

std::string JsonOf(const ReportOptions& options, const measure::Match& match,
                   const std::vector<AxisComparison>& axes, const std::string& verdict) {
    report::JsonWriter json;
    json.Text("schema", "wavo-compare/1");
    json.Text("file", options.file);
    json.BeginArray("references");
    for (const std::string& reference : options.references) {
        json.Text("", reference);
    }
    json.EndArray();
    json.Number("cycle_time_s", options.cycle_time);
    json.Number("shift_lines", static_cast<double>(match.shift));
    json.Number("likeness", match.likeness);
    json.BeginArray("axes");
    for (const AxisComparison& axis : axes) {
        json.BeginObject();
        json.Text("axis", axis.axis);
        if (axis.compared) {
            json.Flag("passed", axis.compared->passed);
            json.Number("compared", static_cast<double>(axis.compared->compared));
            json.Number("outside", static_cast<double>(axis.compared->outside));
            json.Number("worst", axis.compared->worst);
            json.Number("worst_tolerance", axis.compared->worst_width);
            json.Number("worst_line", static_cast<double>(axis.compared->worst_at));
        } else {
            json.Text("reason", axis.compared.reason);
        }
        json.EndObject();
    }
    json.EndArray();
    json.Text("verdict", verdict);
    return json.Finish();
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '&'   ? std::string("&amp;")
                   : c == '<' ? std::string("&lt;")
                   : c == '>' ? std::string("&gt;")
                   : c == '"' ? std::string("&quot;")
                              : std::string(1, c);
    }
    return escaped;
}

std::string JunitOf(const ReportOptions& options, const std::vector<AxisComparison>& axes) {
    std::string cases;
    std::size_t failures = 0;
    std::size_t errors = 0;
    for (const AxisComparison& axis : axes) {
        const std::string text = Escaped(TextOf(axis, options.cycle_time));
        cases +=
            R"(  <testcase classname="wavo_report.compare" name=")" + Escaped(axis.axis) + "\"";
        if (axis.compared && axis.compared->passed) {
            cases += "/>\n";
            continue;
        }
        const char* element = axis.compared ? "failure" : "error";
        ++(axis.compared ? failures : errors);
        cases += std::string(">\n    <") + element + " message=\"" + text + "\"/>\n  </testcase>\n";
    }
    return measure::Words(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"%.200s\" "
               "tests=\"%zu\" failures=\"%zu\" errors=\"%zu\">\n",
               Escaped(options.file).c_str(), axes.size(), failures, errors) +
           cases + "</testsuite>\n";
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
        references.push_back(std::move(reference->table));
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
    std::vector<std::int64_t> shifts;
    for (const ColumnTable& reference : references) {
        const auto match = MatchOf(axes, references.front(), reference);
        shifts.push_back(match ? match->shift : 0);
    }
    const auto match = MatchOf(axes, references.front(), table);
    if (!match) {
        *error = options.file + ": " + match.reason;
        return kNotEvaluated;
    }
    std::vector<AxisComparison> compared;
    bool all_told = true;
    bool passed = true;
    *output = measure::Words(
        "begins %s s from the reference's beginning, likeness %s\n",
        measure::Decimals(-static_cast<double>(match->shift) * options.cycle_time, 3).c_str(),
        measure::Decimals(match->likeness, 4).c_str());
    for (const std::string& axis : axes) {
        compared.push_back({axis, measure::CompareWith(BandOf(options, axis, references, shifts),
                                                       table.Find(axis), match->shift)});
        all_told = all_told && compared.back().compared;
        passed = passed && compared.back().compared && compared.back().compared->passed;
        *output += TextOf(compared.back(), options.cycle_time) + "\n";
    }
    const std::string verdict = !all_told ? "not told" : passed ? "pass" : "FAIL";
    for (const auto& [path, text] :
         {std::pair{options.json, JsonOf(options, *match, compared, verdict)},
          std::pair{options.junit, JunitOf(options, compared)}}) {
        if (!path.empty() && !WriteWholeFile(path, text)) {
            *error = path + ": cannot be written" + FileNameFault(path);
            return kWrongUse;
        }
    }
    return !all_told ? kNotEvaluated : passed ? 0 : 1;
}

}  // namespace wavo::programs
