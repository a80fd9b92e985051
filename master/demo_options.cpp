#include "master/demo_options.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

namespace wavo::master {

namespace {

constexpr double kShortestCycle = 1e-5;
constexpr double kLongestCycle = 10.0;

constexpr double kSlowest = 0.001;
constexpr double kFastest = 1000.0;
constexpr std::uint64_t kMostLines = 1'000'000'000'000'000;

std::string SetRecording(std::string_view value, DemoOptions* options) {
    options->recording = value;
    return value.empty() ? "no file name" : "";
}

std::string SetMotion(std::string_view value, DemoOptions* options) {
    const auto kind = MotionKindOf(value);
    options->motion = kind.value_or(MotionKind::kCircle);
    return kind ? "" : "not one of circle, jog, noise";
}

std::string SetSeed(std::string_view value, DemoOptions* options) {
    return SetCount(value, 0, kMostLines, &options->seed);
}

std::string SetAxes(std::string_view value, DemoOptions* options) {
    return SetAxisNames(value, &options->axes);
}

std::string SetCycle(std::string_view value, DemoOptions* options) {
    const auto number = ParseWhole<double>(value);
    if (!number || !(*number >= kShortestCycle && *number <= kLongestCycle)) {
        return "not a number of seconds from 0.00001 to 10";
    }
    options->cycle_time = *number;
    return {};
}

std::string SetAnnounce(std::string_view value, DemoOptions* options) {
    const auto number = ParseWhole<double>(value);
    if (!number || !(*number >= 0.0 && *number <= kLongestCycle)) {
        return "not a number of seconds from 0 to 10";
    }
    options->announce_interval = *number;
    return {};
}

std::string SetLoop(std::string_view value, DemoOptions* options) {
    return SetCount(value, 0, kMostLines, &options->rounds);
}

std::string SetLines(std::string_view value, DemoOptions* options) {
    return SetCount(value, 1, kMostLines, &options->lines);
}

std::string SetFifoLines(std::string_view value, DemoOptions* options) {
    return SetCount(value, 2, kMostFifoLines, &options->fifo_lines);
}

std::string SetSpeed(std::string_view value, DemoOptions* options) {
    options->full_speed = value == "full";
    options->speed = 1.0;
    if (value == "full" || value == "cycle") {
        return {};
    }
    const auto number = ParseWhole<double>(value);
    if (!number || !(*number >= kSlowest && *number <= kFastest)) {
        return "not one of cycle, full, and no number from 0.001 to 1000";
    }
    options->speed = *number;
    return {};
}

std::string SetFault(std::string_view value, DemoOptions* options) {
    static constexpr struct {
        std::string_view name;
        Fault fault;
    } kFaults[] = {{"overrun", Fault::kOverrun},
                   {"never-ready", Fault::kNeverReady},
                   {"hang", Fault::kHang},
                   {"die", Fault::kDie},
                   {"garbage-headers", Fault::kGarbageHeaders},
                   {"quit", Fault::kQuit},
                   {"capabilities", Fault::kCapabilities}};
    for (const auto& [name, fault] : kFaults) {
        if (name == value) {
            options->fault = fault;
            return {};
        }
    }
    return "not one of overrun, never-ready, hang, die, garbage-headers, quit, capabilities";
}

std::string SetFaultAfter(std::string_view value, DemoOptions* options) {
    return SetCount(value, 0, kMostLines, &options->fault_after);
}

/// NAME=LOWER:UPPER[:VELOCITY[:ACCELERATION]]
std::optional<AxisLimits> ParseLimits(const std::string& text) {
    const auto equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0 || equals > kLongestLimitedAxisName) {
        return std::nullopt;
    }
    AxisLimits limits;
    limits.axis = text.substr(0, equals);
    const std::vector<std::string> numbers = Split(std::string_view(text).substr(equals + 1), ':');
    double* const places[] = {&limits.values.lower_limit, &limits.values.upper_limit,
                              &limits.values.velocity_limit, &limits.values.acceleration_limit};
    if (numbers.size() < 2 || numbers.size() > std::size(places)) {
        return std::nullopt;
    }
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

std::string SetLimits(std::string_view value, DemoOptions* options) {
    options->limits.clear();
    options->publish_limits = value != "none";
    if (!options->publish_limits) {
        return {};
    }
    for (const std::string& part : Split(value, ',')) {
        const auto limits = ParseLimits(part);
        if (!limits) {
            return "\"" + part + "\" is not NAME=LOWER:UPPER[:VELOCITY[:ACCELERATION]]";
        }
        options->limits.push_back(*limits);
    }
    return {};
}

constexpr ValueOption<DemoOptions> kValueOptions[] = {{"--recording", SetRecording},
                                                      {"--motion", SetMotion},
                                                      {"--seed", SetSeed},
                                                      {"--axes", SetAxes},
                                                      {"--cycle", SetCycle},
                                                      {"--loop", SetLoop},
                                                      {"--announce", SetAnnounce},
                                                      {"--lines", SetLines},
                                                      {"--fifo-lines", SetFifoLines},
                                                      {"--speed", SetSpeed},
                                                      {"--limits", SetLimits},
                                                      {"--fault", SetFault},
                                                      {"--fault-after", SetFaultAfter}};

constexpr Switch<DemoOptions> kSwitches[] = {{"--skip-gaps", &DemoOptions::skip_gaps},
                                             {"--wait-viewer", &DemoOptions::wait_viewer},
                                             {"--stay", &DemoOptions::stay}};

/// Options that contradict each other.
std::string WhyNotTogether(const std::vector<std::string_view>& given) {
    const auto has = [&given](std::string_view name) {
        return std::ranges::find(given, name) != given.end();
    };
    if (has("--recording") && has("--motion")) {
        return "--recording and --motion exclude each other";
    }
    if (has("--skip-gaps") && !has("--recording")) {
        return "--skip-gaps needs --recording";
    }
    if (has("--fault-after") && !has("--fault")) {
        return "--fault-after needs --fault";
    }
    return {};
}

}  // namespace

OptionsOutcome ParseDemoOptions(std::span<const std::string> arguments, DemoOptions* options,
                                std::string* error) {
    std::vector<std::string_view> given;
    const OptionsOutcome outcome =
        ReadArguments<DemoOptions>(arguments, kValueOptions, kSwitches, options, &given, error);
    if (outcome != OptionsOutcome::kRun) {
        return outcome;
    }
    *error = WhyNotTogether(given);
    return error->empty() ? OptionsOutcome::kRun : OptionsOutcome::kError;
}

std::string DemoHelp() {
    return R"(Usage: demo_master [OPTION]...

Plays a recording or a motion to every viewer that connects, as a machine's master would.

What is played
  --recording FILE     a recording (.mcap), or comma-separated text, also compressed (.csv.gz)
  --motion NAME        circle (default), jog or noise
  --seed N             chooses the noise (default 1)
  --axes NAME,NAME     axes of the recording or the motion, or columns of the text, in this order
                       (default: all; of a text those of X, Y, Z, A, B, C, if it has some)
  --skip-gaps          leave out the lines that a recording misses (default: they take their
                       time, as lines of missing values)
  --loop N             end after N rounds (default 0: for ever)
  --lines N            end after N lines, whatever --loop says

How it is played
  --cycle SECONDS      time per line (default: that of the recording, else 0.001)
  --speed cycle|N|full full: as fast as the viewers take the lines, losing none; implies
                       --wait-viewer. A number, 4 say: so many lines per cycle time (default
                       cycle: one)
  --announce SECONDS   least time between two announcements of new values to a viewer, so that it
                       does not draw more often than anybody can see (default 0.01; 0: whenever
                       the viewer is ready, as always with --speed full)
  --wait-viewer        stand still while no viewer is connected; begin anew with the first line
                       when one connects
  --stay               after the last line keep the link until a signal ends the program
  --fifo-lines N       slots of each value FIFO (default 10000); one less can wait
  --limits LIST        limits of axes, NAME=LOWER:UPPER[:VELOCITY[:ACCELERATION]],..., in place of
                       those found from what is played; "none" publishes none

Faults, for trying out viewers; each happens once
  --fault NAME         overrun          lines without waiting, until every value FIFO ran over
                       never-ready      answers of viewers are not taken any more: no further
                                        batch, and an overrun when the value FIFO is full
                       hang             handles no message for 3 seconds
                       die              ends at once and leaves everything behind, exit status 137
                       garbage-headers  overwrites info block, value FIFO headers and capability
                                        modules with nonsense and pauses for half a second
                       quit             tells the viewers to quit
                       capabilities     publishes other limits and announces them
  --fault-after LINES  lines published to viewers before the fault (default 1000)

  --help               this text
  --version            the version

SIGINT and SIGTERM end the link, remove everything that was published and end the program with
status 0. At the end, and when a viewer has gone, it prints the lines sent, batches answered and
overruns of each viewer, and of all together. Exit status: 0; 1 when it cannot publish; 2 for wrong
arguments.
)";
}

}  // namespace wavo::master
