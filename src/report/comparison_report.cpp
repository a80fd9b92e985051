#include "report/comparison_report.h"

#include <algorithm>
#include <limits>

#include "measure/words.h"
#include "report/ink.h"
#include "report/json_writer.h"
#include "report/pdf_file.h"
#include "report/reduced_points.h"

namespace wavo::report {

namespace {

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

}  // namespace

std::string VerdictOf(const measure::RunComparison& comparison) {
    return !measure::IsAllTold(comparison)  ? "not told"
           : measure::HasPassed(comparison) ? "pass"
                                            : "FAIL";
}

Chart DifferenceChart(const measure::AxisComparison& axis, std::span<const double> run,
                      std::int64_t shift, double cycle_time) {
    const std::size_t lines = axis.band.middle.size();
    const auto curve = [&](auto value) { return ReducedPoints({0, lines}, cycle_time, value); };
    const auto difference = [&](std::size_t i) {
        const std::int64_t at = static_cast<std::int64_t>(i) + shift;
        return at >= 0 && at < static_cast<std::int64_t>(run.size())
                   ? run[static_cast<std::size_t>(at)] - axis.band.middle[i]
                   : std::numeric_limits<double>::quiet_NaN();
    };
    Chart chart;
    chart.x_title = QStringLiteral("time of the reference in s");
    chart.y_title = QString::fromStdString(axis.axis) + QStringLiteral(", difference");
    chart.x_last = static_cast<double>(std::max<std::size_t>(lines, 1)) * cycle_time;
    chart.curves = {
        {curve(difference), kCounterClockwiseInk, false, QStringLiteral("difference")},
        {curve([&](std::size_t i) { return axis.band.width[i]; }), kBandInk, true,
         QStringLiteral("tolerance")},
        {curve([&](std::size_t i) { return -axis.band.width[i]; }), kBandInk, true, QString()}};
    return chart;
}

std::string ComparisonJson(const ComparisonReport& report) {
    JsonWriter json;
    json.Text("schema", "wavo-compare/1");
    WriteHeaderJson(json, report.header, report.lines, report.cycle_time);
    json.BeginArray("notes");
    for (const std::string& note : report.notes) {
        json.Text("", note);
    }
    json.EndArray();
    json.BeginArray("references");
    for (const std::string& reference : report.references) {
        json.Text("", reference);
    }
    json.EndArray();
    json.Number("shift_lines", static_cast<double>(report.comparison.shift));
    if (report.comparison.likeness) {
        json.Number("likeness", *report.comparison.likeness);
    }
    json.BeginArray("axes");
    for (const measure::AxisComparison& axis : report.comparison.axes) {
        json.BeginObject();
        json.Text("axis", axis.axis);
        json.Number("reference_lines", static_cast<double>(axis.band.middle.size()));
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
    json.Text("verdict", VerdictOf(report.comparison));
    return json.Finish();
}

std::string ComparisonJunit(const ComparisonReport& report) {
    std::string cases;
    std::size_t failures = 0;
    std::size_t errors = 0;
    for (const measure::AxisComparison& axis : report.comparison.axes) {
        const std::string text = Escaped(measure::TextOf(axis, report.cycle_time));
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
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" +
           Escaped(report.header.file.toStdString()) +
           measure::Words("\" tests=\"%zu\" failures=\"%zu\" errors=\"%zu\">\n",
                          report.comparison.axes.size(), failures, errors) +
           "  <properties>\n    <property name=\"compared\" value=\"" +
           measure::CoverageOf(report.comparison) + "\"/>\n  </properties>\n" + cases +
           "</testsuite>\n";
}

}  // namespace wavo::report
