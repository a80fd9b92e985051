#include "master/linuxcnc/wiring.h"

#include <algorithm>
#include <map>

namespace wavo::master {

namespace {

/// Time since the cycle before, in clocks of the processor.
constexpr std::string_view kFingerprintPin = "motion.servo.last-period";
/// Lets all samplers begin in one cycle.
constexpr std::string_view kEnableSignal = "wavo-enable";
constexpr std::size_t kLongestHalLine = 1000;

/// The letter of a type that a sampler takes; nothing for others.
std::optional<char> LetterOf(const std::string& type) {
    static const std::map<std::string, char> letters = {
        {"float", 'f'}, {"bit", 'b'}, {"s32", 's'}, {"u32", 'u'}};
    const auto found = letters.find(type);
    return found != letters.end() ? std::optional(found->second) : std::nullopt;
}

std::string SamplerName(const SampledChannel& channel) {
    return "sampler." + std::to_string(channel.channel);
}

/// The letters of a sampler's columns.
std::string LettersOf(const SampledChannel& channel, const HalListing& hal) {
    std::string letters;
    for (const std::string& pin : ColumnPins(channel)) {
        const HalPin* const found = hal.Find(pin);
        letters.push_back(found != nullptr ? LetterOf(found->type).value_or('f') : 'u');
    }
    return letters;
}

/// The words "depth=...,... cfg=...,...".
std::string SamplerArguments(const std::vector<SampledChannel>& channels, const HalListing& hal) {
    std::string depths;
    std::string letters;
    for (const SampledChannel& channel : channels) {
        const char* const comma = depths.empty() ? "" : ",";
        depths.append(comma).append(std::to_string(kSamplerDepth));
        letters.append(comma).append(LettersOf(channel, hal));
    }
    return "depth=" + depths + " cfg=" + letters;
}

std::string LoadLines(const std::vector<SampledChannel>& channels, const HalListing& hal) {
    const std::string arguments = SamplerArguments(channels, hal);
    if (channels.front().channel == 0) {
        return "loadrt sampler " + arguments + "\n";
    }
    return "# Another file loads sampler already, which is possible once only. Add to its line "
           "there,\n"
           "# behind the commas of what it has:  " +
           arguments + "\n";
}

/// The lines that put pins and columns on signals.
class Nets {
 public:
    explicit Nets(const HalListing& hal) : m_hal(hal) {}

    /// Those of one sampler.
    std::string Lines(const SampledChannel& channel) {
        std::string lines;
        const std::vector<std::string> pins = ColumnPins(channel);
        for (std::size_t column = 0; column < pins.size(); ++column) {
            const bool is_fingerprint = column == channel.pins.size();
            const std::string name = is_fingerprint ? "cycle" : channel.pins[column].name;
            lines.append("net ").append(SignalOf(pins[column], name)).append(" ");
            lines.append(pins[column]).append(" => ");
            lines.append(SamplerPin(channel.channel, column)).append("\n");
        }
        return lines;
    }

 private:
    /// The signal that a pin is on already, by others or by a line before; else one of our own.
    const std::string& SignalOf(const std::string& pin, const std::string& name) {
        const HalPin* const found = m_hal.Find(pin);
        const bool is_others =
            found != nullptr && !found->signal.empty() && !found->signal.starts_with(kOwnSignals);
        return m_signals
            .try_emplace(pin, is_others ? found->signal : std::string(kOwnSignals) + name)
            .first->second;
    }

    const HalListing& m_hal;
    std::map<std::string, std::string> m_signals;
};

/// The line that starts the program. It is not waited for: a scope that cannot start must not keep
/// the machine from starting.
std::string StartLine(const std::vector<SampledChannel>& channels, const WiringText& text) {
    std::string line = "loadusr " + text.program;
    if (channels.front().channel > 0) {
        line += " --channel " + std::to_string(channels.front().channel);
    }
    if (!text.own_pins.empty()) {
        line += " --pins " + text.own_pins;
    }
    return line + "\n";
}

}  // namespace

std::vector<std::string> ColumnPins(const SampledChannel& channel) {
    std::vector<std::string> pins;
    for (const ChosenPin& chosen : channel.pins) {
        pins.push_back(chosen.pin);
    }
    if (channel.has_fingerprint) {
        pins.emplace_back(kFingerprintPin);
    }
    return pins;
}

std::optional<std::vector<SampledChannel>> ShareOut(const std::vector<ChosenPin>& pins,
                                                    std::size_t first, std::string* error) {
    const bool is_shared = pins.size() > kMostSamplerPins;
    const std::size_t most = is_shared ? kMostSamplerPins - 1 : kMostSamplerPins;
    const std::size_t count = (pins.size() + most - 1) / most;
    if (count == 0 || first + count > kMostSamplers) {
        *error = "too many pins: " + std::to_string(pins.size()) + ", there is room for " +
                 std::to_string((kMostSamplers - std::min(first, kMostSamplers)) *
                                (kMostSamplerPins - 1));
        return std::nullopt;
    }
    std::vector<SampledChannel> channels(count);
    for (std::size_t i = 0; i < pins.size(); ++i) {
        channels[i / most].pins.push_back(pins[i]);
    }
    for (std::size_t i = 0; i < count; ++i) {
        channels[i].channel = first + i;
        channels[i].has_fingerprint = is_shared;
    }
    return channels;
}

std::string WhyNotSampled(const std::vector<ChosenPin>& pins, const HalListing& hal) {
    for (const ChosenPin& chosen : pins) {
        const HalPin* const found = hal.Find(chosen.pin);
        if (found == nullptr) {
            return "the controller has no pin " + chosen.pin;
        }
        if (!LetterOf(found->type)) {
            return "the pin " + chosen.pin + " is of type " + found->type +
                   "; float, s32, u32 and bit can be sampled";
        }
    }
    return {};
}

std::string WhyNotWired(const std::vector<SampledChannel>& channels, const HalListing& hal) {
    const std::string remedy = "; include what wavo_linuxcnc --setup prints, and start it anew";
    for (const SampledChannel& channel : channels) {
        const std::vector<std::string> pins = ColumnPins(channel);
        const std::size_t columns = hal.SamplerColumns(channel.channel);
        if (columns == 0) {
            return "the controller has no " + SamplerName(channel) + remedy;
        }
        if (columns != pins.size()) {
            return SamplerName(channel) + " has " + std::to_string(columns) +
                   " columns in place of " + std::to_string(pins.size()) + remedy;
        }
        for (std::size_t column = 0; column < pins.size(); ++column) {
            const HalPin* const pin = hal.Find(pins[column]);
            const HalPin* const place = hal.Find(SamplerPin(channel.channel, column));
            if (pin == nullptr) {
                return "the controller has no pin " + pins[column];
            }
            if (pin->type != place->type) {
                return "the pin " + pins[column] + " is of type " + pin->type + ", the column " +
                       SamplerPin(channel.channel, column) + " of " + place->type + remedy;
            }
            if (pin->signal.empty() || pin->signal != place->signal) {
                return SamplerPin(channel.channel, column) + " is not on the signal of " +
                       pins[column] + remedy;
            }
        }
    }
    return {};
}

std::size_t FirstChannel(const HalListing& hal) {
    for (std::size_t channel = 0;; ++channel) {
        const std::size_t columns = hal.SamplerColumns(channel);
        bool is_own = columns == 0;
        for (std::size_t column = 0; column < columns; ++column) {
            is_own = is_own || hal.IsOnSignal(SamplerPin(channel, column), kOwnSignals);
        }
        if (is_own) {
            return channel;
        }
    }
}

std::optional<std::string> MakeWiring(const std::vector<SampledChannel>& channels,
                                      const HalListing& hal, const WiringText& text,
                                      std::string* error) {
    std::string lines(kWiringMark);
    lines.append(" for ").append(text.machine).append("\n");
    lines.append(
        "# Belongs behind the other HALFILE lines of the INI file. Make it anew when the machine\n"
        "# changes; what is written here by hand gets lost then.\n\n");
    lines.append(LoadLines(channels, hal)).append("\n");
    const bool is_shared = channels.size() > 1;
    if (is_shared) {
        lines.append("net ").append(kEnableSignal);
        for (const SampledChannel& channel : channels) {
            lines.append(" ").append(SamplerName(channel)).append(".enable");
        }
        lines.append("\nsets ").append(kEnableSignal).append(" 0\n");
    }
    Nets nets(hal);
    for (const SampledChannel& channel : channels) {
        lines.append(nets.Lines(channel));
    }
    lines.append("\n");
    const std::string thread = hal.ServoThread().value_or("servo-thread");
    for (const SampledChannel& channel : channels) {
        lines.append("addf ").append(SamplerName(channel)).append(" ").append(thread).append("\n");
    }
    if (is_shared) {
        lines.append("sets ").append(kEnableSignal).append(" 1\n");
    }
    const std::string start = StartLine(channels, text);
    if (start.size() > kLongestHalLine) {
        *error =
            "the list of pins is too long for a line of a HAL file: put it into a file, NAME=PIN "
            "in "
            "each line, and name that with --pins @FILE";
        return std::nullopt;
    }
    return lines.append("\n").append(start);
}

}  // namespace wavo::master
