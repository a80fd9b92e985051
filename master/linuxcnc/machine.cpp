#include "master/linuxcnc/machine.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <string_view>

#include "master/linuxcnc/hal_samplers.h"
#include "master/options.h"
#include "platform/posix/program_output.h"

namespace wavo::master {

namespace {

/// The pins of a file with NAME=PIN in each line; blank lines and those that begin with "#" do not
/// count.
std::string PinsOfFile(const std::string& path, std::string* error) {
    const std::optional<std::string> text = ReadTextFile(path);
    if (!text) {
        *error = "cannot read the list of pins " + path;
        return {};
    }
    std::string list;
    for (std::string line : Split(*text, '\n')) {
        std::erase_if(line, [](char letter) { return letter == ' ' || letter == '\r'; });
        if (!line.empty() && line.front() != '#') {
            list.append(list.empty() ? "" : ",").append(line);
        }
    }
    return list;
}

std::vector<ChosenPin> ChosenPins(const MachineIni& ini, std::string_view given,
                                  std::string* error) {
    std::vector<ChosenPin> pins;
    const bool adds = given.starts_with('+');
    if (given.empty() || adds) {
        pins = DefaultPins(ini, error);
        given.remove_prefix(adds ? 1 : 0);
    }
    const std::string list = given.starts_with('@')
                                 ? PinsOfFile(std::string(given.substr(1)), error)
                                 : std::string(given);
    if (error->empty() && !list.empty()) {
        *error = ParsePins(list, &pins);
    }
    if (error->empty() && pins.empty()) {
        *error = "no pins are named";
    }
    return pins;
}

std::optional<HalListing> AskController(std::string* error) {
    if (!ControllerRuns(error)) {
        return std::nullopt;
    }
    const auto pins = platform::OutputOf({"halcmd", "-s", "show", "pin"});
    const auto threads = platform::OutputOf({"halcmd", "-s", "show", "thread"});
    if (!pins || !threads) {
        *error = "halcmd does not tell the controller's pins";
        return std::nullopt;
    }
    return HalListing::Parse(*pins, *threads);
}

}  // namespace

std::optional<std::string> ReadTextFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return file.is_open() && !file.bad() ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<Machine> Machine::Find(const std::string& ini_path, const std::string& pins,
                                     std::string* error) {
    std::optional<MachineIni> ini = MachineIni::Read(ini_path, ReadTextFile, error);
    if (!ini) {
        return std::nullopt;
    }
    std::vector<ChosenPin> chosen = ChosenPins(*ini, pins, error);
    if (!error->empty()) {
        return std::nullopt;
    }
    std::optional<HalListing> hal = AskController(error);
    if (!hal) {
        return std::nullopt;
    }
    *error = WhyNotSampled(chosen, *hal);
    if (!error->empty()) {
        return std::nullopt;
    }
    return Machine{std::move(*ini), std::move(chosen), std::move(*hal)};
}

std::optional<std::vector<SampledChannel>> Machine::WiredChannels(std::string* error) const {
    for (std::size_t first = 0; first < kMostSamplers; ++first) {
        auto channels = ShareOut(pins, first, error);
        if (channels && WhyNotWired(*channels, hal).empty()) {
            error->clear();
            return channels;
        }
    }
    const auto channels = ShareOut(pins, FirstChannel(hal), error);
    if (channels) {
        *error = WhyNotWired(*channels, hal);
    }
    return std::nullopt;
}

double Machine::CycleTime() const {
    constexpr double kMostDifference = 0.01;
    const double told = CycleTimeOf(ini);
    const double true_period = hal.ServoPeriod();
    const bool is_true =
        true_period <= 0.0 || std::abs(true_period - told) <= kMostDifference * told;
    return is_true ? told : true_period;
}

std::vector<AxisLimits> Machine::Limits() const {
    std::vector<AxisLimits> limits;
    for (const ChosenPin& chosen : pins) {
        const bool is_bit = hal.Find(chosen.pin)->type == "bit";
        if (const auto values = LimitsOfPin(ini, chosen.pin, is_bit)) {
            limits.push_back({chosen.name, *values});
        }
    }
    return limits;
}

}  // namespace wavo::master
