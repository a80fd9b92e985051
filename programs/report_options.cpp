#include "programs/report_options.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "support/number_text.h"

namespace wavo::programs {

namespace {

constexpr double kSecondsPerMinute = 60.0;
constexpr double kMicrometre = 1e-3;  // mm

/// The parts between commas; an empty text has none.
std::vector<std::string> PartsOf(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto end = text.find(',');
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return parts;
}

/// Takes one option's value; returns what is wrong with it, or nothing.
using TakeValue = std::string (*)(const std::string& value, ReportOptions* options);

std::string TakeNumber(const std::string& value, double least, double most, double* number) {
    const auto read = FindWholeDouble(value);
    if (!read || *read < least || *read > most) {
        return "not a number of that kind";
    }
    *number = *read;
    return {};
}

std::string TakePositive(const std::string& value, std::optional<double>* number) {
    number->emplace();
    return TakeNumber(value, 1e-9, 1e9, &**number);
}

std::string TakeCentre(const std::string& value, ReportOptions* options) {
    const auto parts = PartsOf(value);
    measure::Circle centre;
    if (parts.size() != 2 || !TakeNumber(parts[0], -1e9, 1e9, &centre.x).empty() ||
        !TakeNumber(parts[1], -1e9, 1e9, &centre.y).empty()) {
        return "not two numbers with a comma between them";
    }
    options->circle.centre = centre;
    return {};
}

std::string TakeRise(const std::string& value, ReportOptions* options) {
    const auto dash = value.find('-');
    auto& step = options->axis.step;
    if (dash == std::string::npos ||
        !TakeNumber(value.substr(0, dash), 0.0, 100.0, &step.rise_from).empty() ||
        !TakeNumber(value.substr(dash + 1), 0.0, 100.0, &step.rise_to).empty() ||
        step.rise_from >= step.rise_to) {
        return "not two percentages like 10-90";
    }
    return {};
}

std::string TakeTarget(const std::string& value, ReportOptions* options) {
    options->axis.step.target =
        value == "commanded" ? measure::StepTarget::kCommanded : measure::StepTarget::kReached;
    return value == "commanded" || value == "reached" ? "" : "not one of reached, commanded";
}

/// A number of micrometres as millimetres.
std::string TakeMicrometres(const std::string& value, double* millimetres) {
    std::string wrong = TakeNumber(value, 1e-6, 1e9, millimetres);
    *millimetres *= kMicrometre;
    return wrong;
}

struct OptionRow {
    const char* name;
    const char* value;  ///< what --help calls it; empty for a flag
    const char* help;
    TakeValue take;
};

using Text = const std::string&;
using Options = ReportOptions*;

/// Options of every report.
std::vector<OptionRow> RowsOfAll() {
    return {
        {"--axes", "X,Y", "the axes; of a circle two. Else those that the file has",
         [](Text v, Options o) {
             o->axes = PartsOf(v);
             return std::string(o->axes.empty() ? "no names" : "");
         }},
        {"--cycle", "SECONDS", "cycle time; else that of the recording, 0.001 of a table",
         [](Text v, Options o) { return TakeNumber(v, 1e-6, 100.0, &o->cycle_time); }},
        {"--out", "FILE.pdf", "writes the report",
         [](Text v, Options o) { return o->out = v, std::string(); }},
        {"--json", "FILE", "writes the figures",
         [](Text v, Options o) { return o->json = v, std::string(); }},
        {"--limits", "FILE.ini", "limits of figures, by their keys, in a section [Limits]",
         [](Text v, Options o) { return o->limits = v, std::string(); }},
        {"--machine", "TEXT", "for the heading",
         [](Text v, Options o) { return o->machine = v, std::string(); }},
        {"--program", "TEXT", "for the heading",
         [](Text v, Options o) { return o->program = v, std::string(); }},
        {"--date", "TEXT", "for the heading; that of the file when not given",
         [](Text v, Options o) { return o->date = v, std::string(); }},
    };
}

/// Options of circle tests.
std::vector<OptionRow> RowsOfCircles() {
    return {
        {"--radius", "MM", "circle: the nominal radius; else that of the commanded circle",
         [](Text v, Options o) { return TakePositive(v, &o->circle.radius); }},
        {"--feed", "MM/MIN", "circle: the programmed feed; turns near it are reported",
         [](Text v, Options o) {
             std::string wrong = TakePositive(v, &o->circle.feed);
             *o->circle.feed /= kSecondsPerMinute;
             return wrong;
         }},
        {"--centre", "X,Y", "circle: the nominal centre, for the radial errors F", TakeCentre},
        {"--minimum-zone", "", "circle: circular errors about the minimum zone's centre too",
         [](Text, Options o) { return o->circle.minimum_zone = true, std::string(); }},
        {"--zone", "DEGREES", "circle: half width of what is left out at reversals; 5",
         [](Text v, Options o) { return TakeNumber(v, 0.0, 30.0, &o->circle.shape.zone); }},
        {"--noise", "UM", "circle: known noise of the radius",
         [](Text v, Options o) { return TakePositive(v, &o->circle.shape.noise); }},
        {"--div", "UM", "circle: radial error per grid circle of the picture",
         [](Text v, Options o) { return TakePositive(v, &o->polar_step); }},
    };
}

/// Options of axis tests.
std::vector<OptionRow> RowsOfAxes() {
    return {
        {"--window", "UM", "axis: a move has settled within so much of its end; 10",
         [](Text v, Options o) { return TakeMicrometres(v, &o->axis.step.move_window); }},
        {"--dwell", "SECONDS", "axis: standstill behind a move, at least; 0.1",
         [](Text v, Options o) { return TakeNumber(v, 1e-3, 1e3, &o->axis.step.dwell); }},
        {"--rise", "FROM-TO", "axis: percentages of the rise time; 10-90", TakeRise},
        {"--settled", "PERCENT", "axis: a step has settled within so much of its target; 2",
         [](Text v, Options o) { return TakeNumber(v, 0.01, 50.0, &o->axis.step.settled); }},
        {"--target", "WHICH", "axis: of a step, reached (when not given) or commanded", TakeTarget},
        {"--response", "", "axis: the closed-loop frequency response too",
         [](Text, Options o) { return o->axis.response = true, std::string(); }},
        {"--rotary", "", "axis: in degrees",
         [](Text, Options o) { return o->axis.rotary = true, std::string(); }},
    };
}

/// Options of comparisons.
std::vector<OptionRow> RowsOfComparisons() {
    return {
        {"--reference", "FILE", "compare: a good run; may be given several times",
         [](Text v, Options o) { return o->references.push_back(v), std::string(); }},
        {"--tolerance", "VALUE", "compare: largest difference",
         [](Text v, Options o) { return TakePositive(v, &o->tolerance); }},
        {"--spread", "TIMES", "compare: the same in standard deviations of the good runs",
         [](Text v, Options o) { return TakePositive(v, &o->spread); }},
        {"--junit", "FILE.xml", "compare: writes the result as a test report",
         [](Text v, Options o) { return o->junit = v, std::string(); }},
    };
}

/// All options, in the order in which --help shows them.
const std::vector<OptionRow>& Rows() {
    static const std::vector<OptionRow> rows = [] {
        std::vector<OptionRow> all;
        for (const auto& part : {RowsOfAll(), RowsOfCircles(), RowsOfAxes(), RowsOfComparisons()}) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return rows;
}

std::string CheckTogether(const ReportOptions& options) {
    if (options.file.empty()) {
        return "no file";
    }
    if (options.kind == ReportKind::kCircle && !options.axes.empty() && options.axes.size() != 2) {
        return "--axes: a circle has two";
    }
    if (options.kind == ReportKind::kCompare) {
        if (options.references.empty()) {
            return "compare needs --reference";
        }
        if (!options.tolerance && !options.spread) {
            return "compare needs --tolerance or --spread";
        }
        if (options.spread && options.references.size() < 2) {
            return "--spread needs two references or more";
        }
        if (!options.out.empty() || !options.limits.empty()) {
            return "compare writes --json and --junit only";
        }
    }
    return {};
}

}  // namespace

ReportOutcome ParseReportOptions(std::span<const std::string> arguments, ReportOptions* options,
                                 std::string* error) {
    const auto wrong = [&](const std::string& why) {
        *error = why;
        return ReportOutcome::kError;
    };
    if (arguments.empty()) {
        return wrong("nothing to do");
    }
    for (const std::string& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
            return ReportOutcome::kHelp;
        }
        if (argument == "--version") {
            return ReportOutcome::kVersion;
        }
    }
    constexpr std::array<std::pair<std::string_view, ReportKind>, 3> kKinds{
        {{"circle", ReportKind::kCircle},
         {"axis", ReportKind::kAxis},
         {"compare", ReportKind::kCompare}}};
    const auto kind = std::ranges::find(kKinds, std::string_view(arguments[0]),
                                        &std::pair<std::string_view, ReportKind>::first);
    if (kind == kKinds.end()) {
        return wrong(arguments[0] + ": not one of circle, axis, compare");
    }
    options->kind = kind->second;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with("--")) {
            if (!options->file.empty()) {
                return wrong(argument + ": one file only");
            }
            options->file = argument;
            continue;
        }
        const auto row =
            std::ranges::find_if(Rows(), [&](const OptionRow& r) { return argument == r.name; });
        if (row == Rows().end()) {
            return wrong(argument + ": no such option");
        }
        const bool flag = *row->value == '\0';
        if (!flag && i + 1 == arguments.size()) {
            return wrong(argument + " needs a value");
        }
        const std::string& value = flag ? argument : arguments[++i];
        const std::string why = row->take(value, options);
        if (!why.empty()) {
            return wrong(std::string(argument).append(" ").append(value).append(": ").append(why));
        }
    }
    const std::string why = CheckTogether(*options);
    return why.empty() ? ReportOutcome::kRun : wrong(why);
}

std::string ReportHelp() {
    std::string help =
        "Figures of a machine from recorded values, without a window.\n\n"
        "  wavo_report circle FILE [OPTION...]    circle test of two axes\n"
        "  wavo_report axis FILE [OPTION...]      commanded against actual values of axes\n"
        "  wavo_report compare FILE --reference GOOD [OPTION...]   against good runs\n\n"
        "FILE is a recording (.mcap), or a table as text with the names of the columns in its\n"
        "first line, plain or compressed with gzip. X_cmd is the commanded column of X, X_act or\n"
        "X_fb.\n\n";
    for (const OptionRow& row : Rows()) {
        std::string name = "  ";
        name.append(row.name).append(" ").append(row.value);
        name.resize(std::max<std::size_t>(name.size() + 1, 26), ' ');
        help.append(name).append(row.help).append("\n");
    }
    return help +
           "\nExit code: 0 pass or no limits, 1 fail, 2 wrong arguments or files, 3 could not be\n"
           "evaluated, or a figure with a limit could not be told.\n";
}

}  // namespace wavo::programs
