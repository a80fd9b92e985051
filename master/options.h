// What the command lines of all masters have in common.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::master {

enum class OptionsOutcome { kRun, kHelp, kVersion, kError };

/// The parts of a text between separators; one empty part when the text is empty.
inline std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (true) {
        const auto end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(end + 1);
    }
}

/// The number that the whole text is; nothing when it is none.
template <typename Number>
std::optional<Number> ParseWhole(std::string_view text) {
    Number value{};
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return value;
}

/// Reads a whole number between two bounds, both included, into `*count`; returns what is wrong
/// with the text, or nothing.
inline std::string SetCount(std::string_view value, std::uint64_t lowest, std::uint64_t highest,
                            std::uint64_t* count) {
    const auto number = ParseWhole<std::uint64_t>(value);
    if (!number || *number < lowest || *number > highest) {
        return "not a whole number from " + std::to_string(lowest) + " to " +
               std::to_string(highest);
    }
    *count = *number;
    return {};
}

/// Reads names of axes with commas between them into `*axes`; returns what is wrong, or nothing.
std::string SetAxisNames(std::string_view value, std::vector<std::string>* axes);

/// An option that has a value, "--name value" or "--name=value". `set` reads the value into the
/// options and returns what is wrong with it, or nothing.
template <typename Options>
struct ValueOption {
    std::string_view name;
    std::string (*set)(std::string_view value, Options* options);
};

/// An option without a value.
template <typename Options>
struct Switch {
    std::string_view name;
    bool Options::*flag;
};

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
/// `*given` gets the names of the options that are there; they refer to `arguments`.
template <typename Options>
OptionsOutcome ReadArguments(std::span<const std::string> arguments,
                             std::span<const ValueOption<Options>> values,
                             std::span<const Switch<Options>> switches, Options* options,
                             std::vector<std::string_view>* given, std::string* error) {
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
        given->push_back(name);
        const auto flag = std::ranges::find(switches, argument, &Switch<Options>::name);
        if (flag != switches.end()) {
            options->*(flag->flag) = true;
            continue;
        }
        const auto option = std::ranges::find(values, name, &ValueOption<Options>::name);
        if (option == values.end()) {
            *error = "unknown argument \"" + arguments[i] + "\"";
            return OptionsOutcome::kError;
        }
        if (equals == std::string_view::npos && i + 1 == arguments.size()) {
            *error = std::string(name) + " needs a value";
            return OptionsOutcome::kError;
        }
        const std::string_view value =
            equals == std::string_view::npos ? arguments[++i] : argument.substr(equals + 1);
        if (const std::string wrong = option->set(value, options); !wrong.empty()) {
            *error = std::string(name) + " \"" + std::string(value) + "\": " + wrong;
            return OptionsOutcome::kError;
        }
    }
    return OptionsOutcome::kRun;
}

/// Longest value FIFO that can be asked for.
inline constexpr std::uint64_t kMostFifoLines = 100'000'000;

}  // namespace wavo::master
