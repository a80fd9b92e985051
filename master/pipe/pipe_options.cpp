#include "master/pipe/pipe_options.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace wavo::master {

namespace {

constexpr double kShortestCycle = 1e-6;
constexpr double kLongestCycle = 3600.0;
constexpr double kTimeInFifo = 10.0;  // seconds
constexpr double kLeastFifoLines = 1000.0;
constexpr double kMostFifoLinesUnasked = 1e6;

std::string SetPipeAxes(std::string_view value, PipeOptions* options) {
    return SetAxisNames(value, &options->axes);
}

std::string SetPipeCycle(std::string_view value, PipeOptions* options) {
    const auto number = ParseWhole<double>(value);
    if (!number || !(*number >= kShortestCycle && *number <= kLongestCycle)) {
        return "not a number of seconds from 0.000001 to 3600";
    }
    options->cycle_time = *number;
    return {};
}

std::string SetTimeUnit(std::string_view value, PipeOptions* options) {
    static constexpr struct {
        std::string_view name;
        double seconds;
    } kUnits[] = {{"s", 1.0}, {"ms", 1e-3}, {"us", 1e-6}, {"ns", 1e-9}};
    for (const auto& unit : kUnits) {
        if (unit.name == value) {
            options->time_unit = unit.seconds;
            return {};
        }
    }
    return "not one of s, ms, us, ns";
}

std::optional<AxisLimits> ParsePipeLimits(const std::string& text) {
    const auto equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0 || equals > kLongestLimitedAxisName) {
        return std::nullopt;
    }
    const std::vector<std::string> parts = Split(std::string_view(text).substr(equals + 1), ':');
    const auto dots = parts[0].find("..");
    if (dots == std::string::npos || parts.size() > 3) {
        return std::nullopt;
    }
    std::vector<std::string> numbers{parts[0].substr(0, dots), parts[0].substr(dots + 2)};
    numbers.insert(numbers.end(), parts.begin() + 1, parts.end());
    AxisLimits limits;
    limits.axis = text.substr(0, equals);
    double* const places[] = {&limits.values.lower_limit, &limits.values.upper_limit,
                              &limits.values.velocity_limit, &limits.values.acceleration_limit};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto number = ParseWhole<double>(numbers[i]);
        if (!number || !std::isfinite(*number)) {
            return std::nullopt;
        }
        *places[i] = *number;
    }
    return limits.values.lower_limit < limits.values.upper_limit ? std::optional(limits)
                                                                 : std::nullopt;
}

std::string SetPipeLimits(std::string_view value, PipeOptions* options) {
    options->limits.clear();
    for (const std::string& part : Split(value, ',')) {
        const auto limits = ParsePipeLimits(part);
        if (!limits) {
            return "\"" + part + "\" is not NAME=LOWER..UPPER[:VELOCITY[:ACCELERATION]]";
        }
        options->limits.push_back(*limits);
    }
    return {};
}

std::string SetPipeFifoLines(std::string_view value, PipeOptions* options) {
    return SetCount(value, 2, kMostFifoLines, &options->fifo_lines.emplace());
}

std::string SetPort(std::string_view value, PipeOptions* options) {
    std::uint64_t port = 0;
    std::string wrong = SetCount(value, 0, std::numeric_limits<std::uint16_t>::max(), &port);
    options->port = static_cast<std::uint16_t>(port);
    return wrong;
}

constexpr ValueOption<PipeOptions> kPipeValueOptions[] = {
    {"--axes", SetPipeAxes},     {"--cycle", SetPipeCycle},          {"--time-unit", SetTimeUnit},
    {"--limits", SetPipeLimits}, {"--fifo-lines", SetPipeFifoLines}, {"--listen", SetPort}};

constexpr Switch<PipeOptions> kPipeSwitches[] = {{"--wait-viewer", &PipeOptions::wait_viewer}};

}  // namespace

OptionsOutcome ParsePipeOptions(std::span<const std::string> arguments, PipeOptions* options,
                                std::string* error) {
    std::vector<std::string_view> given;
    const OptionsOutcome outcome = ReadArguments<PipeOptions>(
        arguments, kPipeValueOptions, kPipeSwitches, options, &given, error);
    if (outcome != OptionsOutcome::kRun) {
        return outcome;
    }
    if (options->cycle_time && std::ranges::find(given, "--time-unit") != given.end()) {
        *error = "--time-unit is that of a column of time, which there is none of with --cycle";
        return OptionsOutcome::kError;
    }
    return outcome;
}

std::uint64_t FifoLinesOf(const PipeOptions& options, double cycle_time) {
    return options.fifo_lines.value_or(static_cast<std::uint64_t>(
        std::clamp(kTimeInFifo / cycle_time, kLeastFifoLines, kMostFifoLinesUnasked)));
}

std::string PipeHelp() {
    return R"(Usage: my_program | wavo_pipe [OPTION]...

Reads lines of numbers and publishes each as a line of values to every viewer that connects.

The lines
  A tab, a comma or a semicolon, else blanks separate the fields; the first line tells which. An empty
  field and "nan" are missing values. The decimal point is a point; also a comma, where commas do not
  separate. A line with too many or too few fields, or with one that is no number, is reported (the
  first ten, then counted) and shown as missing values.

  --axes NAME,NAME     names of the axes, one for each column but that of the time (default: the
                       first line of the input has them)
  --cycle SECONDS      time from one line to the next (default: the first column is the time; lines
                       that are missing in it are reported and shown as missing values)
  --time-unit UNIT     of the first column: s (default), ms, us or ns
  --limits LIST        limits of axes, NAME=LOWER..UPPER[:VELOCITY[:ACCELERATION]],...

How they are taken
  --listen PORT        take the lines from one TCP client after another in place of the standard input,
                       from programs on this computer only; 0 takes a free port and tells it
  --wait-viewer        publish no line before a viewer is connected
  --fifo-lines N       slots of each value FIFO (default: ten seconds, at least 1000, at most 1000000);
                       when a viewer has left its FIFO full for as long as that lasts, ten seconds at
                       most, it is told of the overrun and the lines go on without it

  --help               this text
  --version            the version

The end of the input, SIGINT and SIGTERM end the link in order. Exit status: 0; 1 when it cannot
publish or nothing can be made of the input; 2 for wrong arguments.
)";
}

}  // namespace wavo::master
