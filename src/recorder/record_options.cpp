#include "recorder/record_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "platform/folders.h"

namespace wavo::recorder {

namespace {

constexpr double kLongestDuration = 1000.0 * 86400.0;
constexpr double kLargestSize = 1e18;
constexpr std::uint64_t kMostLines = 1'000'000'000'000'000;

struct Unit {
    std::string_view name;
    double factor;
};
constexpr Unit kTimes[] = {{"ms", 0.001}, {"s", 1.0},     {"m", 60.0}, {"min", 60.0},
                           {"h", 3600.0}, {"d", 86400.0}, {"", 1.0}};
constexpr Unit kSizes[] = {
    {"kB", 1e3},     {"MB", 1e6},        {"GB", 1e9},           {"TB", 1e12},
    {"KiB", 1024.0}, {"MiB", 1048576.0}, {"GiB", 1073741824.0}, {"TiB", 1099511627776.0},
    {"B", 1.0},      {"", 1.0}};

/// A number with one of some units behind it.
std::optional<double> ParseQuantity(std::string_view text, std::span<const Unit> units) {
    double number = 0.0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (result.ec != std::errc() || !std::isfinite(number) || number < 0.0) {
        return std::nullopt;
    }
    const std::string_view unit(result.ptr, static_cast<std::size_t>(end - result.ptr));
    const auto found = std::ranges::find(units, unit, &Unit::name);
    return found != units.end() ? std::optional(number * found->factor) : std::nullopt;
}

/// Reads one option's value into the options; returns what is wrong with it, or nothing.
using SetOption = std::string (*)(std::string_view value, RecordOptions* options);

template <auto Member>
std::string SetPath(std::string_view value, RecordOptions* options) {
    options->*Member = platform::NativePath(std::string(value));
    return value.empty() ? "no file name" : "";
}

std::string SetDuration(std::string_view value, double* seconds, bool may_be_zero = false) {
    const std::optional<double> time = ParseDuration(value);
    if (!time || (*time == 0.0 && !may_be_zero)) {
        return "not a time such as 90s, 5m, 1.5h or 250ms";
    }
    *seconds = *time;
    return {};
}

template <auto Member>
std::string SetTime(std::string_view value, RecordOptions* options) {
    return SetDuration(value, &(options->*Member));
}

template <auto Member>
std::string SetTimeOrZero(std::string_view value, RecordOptions* options) {
    return SetDuration(value, &(options->*Member).emplace(), true);
}

std::string SetWait(std::string_view value, RecordOptions* options) {
    if (value == "forever") {
        options->wait.reset();
        return {};
    }
    return SetDuration(value, &options->wait.emplace(), true);
}

std::string SetLines(std::string_view value, RecordOptions* options) {
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, options->lines);
    const bool is_count = result.ec == std::errc() && result.ptr == end && options->lines > 0 &&
                          options->lines <= kMostLines;
    return is_count ? "" : "not a whole number from 1 to " + std::to_string(kMostLines);
}

std::string SetTell(std::string_view value, RecordOptions* options) {
    const char* const end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, options->tell);
    return result.ec == std::errc() && result.ptr == end && options->tell > 0
               ? ""
               : "not the number of a window";
}

std::string SetKeep(std::string_view value, RecordOptions* options) {
    const std::optional<std::uint64_t> size = ParseSize(value);
    options->keep = size.value_or(0);
    return options->keep > 0 ? "" : "not a size such as 20GB, 500MB or 1.5GiB";
}

struct ValueOption {
    std::string_view name;
    SetOption set;
};
constexpr ValueOption kValueOptions[] = {
    {"--out", SetPath<&RecordOptions::out>},
    {"--graphs", SetPath<&RecordOptions::graphs>},
    {"--attach", SetPath<&RecordOptions::attach>},
    {"--verify", SetPath<&RecordOptions::verify>},
    {"--for", SetTime<&RecordOptions::duration>},
    {"--lines", SetLines},
    {"--before", SetTimeOrZero<&RecordOptions::before>},
    {"--after", SetTimeOrZero<&RecordOptions::after>},
    {"--keep", SetKeep},
    {"--split", SetTime<&RecordOptions::split>},
    {"--wait", SetWait},
    {"--tell", SetTell},
};

struct Switch {
    std::string_view name;
    bool RecordOptions::*flag;
};
constexpr Switch kSwitches[] = {{"--repeat", &RecordOptions::repeat},
                                {"--quiet", &RecordOptions::quiet},
                                {"--json", &RecordOptions::json}};

/// Options that contradict each other.
std::string WhyNotTogether(const std::vector<std::string_view>& given) {
    const auto has = [&given](std::string_view name) {
        return std::ranges::find(given, name) != given.end();
    };
    for (const std::string_view name : {"--before", "--after", "--repeat"}) {
        if (has(name) && !has("--graphs")) {
            return std::string(name) + " needs --graphs";
        }
    }
    if (has("--graphs") && has("--attach")) {
        return "--graphs and --attach exclude each other";
    }
    if (has("--for") && has("--lines")) {
        return "--for and --lines exclude each other";
    }
    if (has("--quiet") && has("--json")) {
        return "--quiet and --json exclude each other";
    }
    const auto goes_with_verify = [](std::string_view name) {
        return name == "--verify" || name == "--json" || name == "--quiet";
    };
    if (has("--verify") && !std::ranges::all_of(given, goes_with_verify)) {
        return "--verify goes with --json and --quiet alone";
    }
    return {};
}

}  // namespace

std::optional<double> ParseDuration(std::string_view text) {
    const std::optional<double> seconds = ParseQuantity(text, kTimes);
    return seconds && *seconds <= kLongestDuration ? seconds : std::nullopt;
}

std::optional<std::uint64_t> ParseSize(std::string_view text) {
    const std::optional<double> bytes = ParseQuantity(text, kSizes);
    return bytes && *bytes <= kLargestSize ? std::optional(static_cast<std::uint64_t>(*bytes))
                                           : std::nullopt;
}

OptionsOutcome ParseRecordOptions(std::span<const std::string> arguments, RecordOptions* options,
                                  std::string* error) {
    std::vector<std::string_view> given;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            return OptionsOutcome::kHelp;
        }
        if (argument == "--version") {
            return OptionsOutcome::kVersion;
        }
        const auto equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        given.push_back(name);
        const auto flag = std::ranges::find(kSwitches, argument, &Switch::name);
        if (flag != std::end(kSwitches)) {
            options->*(flag->flag) = true;
            continue;
        }
        const auto option = std::ranges::find(kValueOptions, name, &ValueOption::name);
        if (option == std::end(kValueOptions)) {
            *error = "unknown argument \"" + arguments[i] + "\"";
            return OptionsOutcome::kError;
        }
        if (equals == std::string_view::npos && i + 1 == arguments.size()) {
            *error = std::string(name) + " needs a value";
            return OptionsOutcome::kError;
        }
        const std::string_view value = equals == std::string_view::npos
                                           ? std::string_view(arguments[++i])
                                           : argument.substr(equals + 1);
        if (const std::string wrong = option->set(value, options); !wrong.empty()) {
            *error = std::string(name) + " \"" + std::string(value) + "\": " + wrong;
            return OptionsOutcome::kError;
        }
    }
    *error = WhyNotTogether(given);
    if (!error->empty()) {
        return OptionsOutcome::kError;
    }
    return options->verify.empty() ? OptionsOutcome::kRun : OptionsOutcome::kVerify;
}

std::string RecordHelp() {
    return R"(Usage: wavo_record [OPTION]...
       wavo_record --verify FILE

Records what the axes of a machine do, as long as the machine's master runs, beside any viewers.

What is written
  --out NAME           the recording, NAME.mcap (default: recording). A file that is there is never
                       replaced: then it is NAME-2.mcap, NAME-3.mcap and so on
  --split TIME         begins a new file after this time, such as 1h
  --keep SIZE          what all recordings of this name may take together, such as 20GB: the oldest
                       are removed. Without --split and --repeat a new file is begun after every
                       eighth of it
  --attach FILE        puts a graph file into each recording, for those who look at it later; with
                       --graphs its file is there already

When it is written
  --for TIME           ends after this time, such as 60s, 5m or 1.5h
  --lines N            ends after N lines
  --graphs FILE        waits for the triggers of the graphs in FILE. Written is what follows until
                       the graph's recording ends: its time range behind a start trigger, up to a
                       stop trigger
  --before TIME        and this much from before the trigger (default: 0s, and the graph's time range
                       with a stop trigger)
  --after TIME         this much behind the trigger, whatever the graph says
  --repeat             waits for the triggers again, as soon as their condition has been false; a
                       file each time
  --wait TIME          how long to wait for a master at the start (default 10s), or "forever"

What is told
  --quiet              nothing but errors
  --json               one object at the end, on standard output
  --tell WINDOW        a viewer's window that is told how it goes, as other viewers are that ask
  --verify FILE        checks a recording from its first to its last byte, and says what is wrong

  --help               this text
  --version            the version

SIGINT, SIGTERM and a message to quit end the recording in order. Exit status: 0 complete; 1 it could
not be done (no master in time, the disk; a recording that is damaged); 2 wrong arguments; 3 complete,
but lines were lost.
)";
}

}  // namespace wavo::recorder
