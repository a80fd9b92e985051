#include "master/linuxcnc/chosen_pins.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <utility>

#include "master/options.h"

namespace wavo::master {

namespace {

constexpr std::string_view kAxisLetters = "XYZABCUVW";
constexpr std::string_view kIdentityKinematics = "trivkins";
constexpr double kUsualServoPeriod = 1e6;  // ns
/// What the controller takes for no limit is far beyond.
constexpr double kNoLimit = 1e9;
constexpr std::size_t kMostJoints = 16;
constexpr std::size_t kMostSpindles = 8;

std::string Upper(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return std::toupper(letter); });
    return text;
}

/// The letters of axes in a text, in its order.
std::string AxisLettersIn(const std::string& text) {
    std::string letters = Upper(text);
    std::erase_if(letters,
                  [](char letter) { return kAxisLetters.find(letter) == std::string_view::npos; });
    return letters;
}

std::size_t CountIn(const MachineIni& ini, const std::string& section, const std::string& key,
                    double usual, std::size_t most) {
    const double count = ini.Number(section, key).value_or(usual);
    return count > 0.0 ? std::min(static_cast<std::size_t>(count), most) : 0;
}

/// The axis of each joint; empty when joints are no axes.
std::string LettersOfJoints(const MachineIni& ini) {
    const std::string kinematics = ini.Find("KINS", "KINEMATICS").value_or("trivkins");
    if (!kinematics.starts_with(kIdentityKinematics)) {
        return {};
    }
    constexpr std::string_view kKey = "COORDINATES=";
    const std::string upper = Upper(kinematics);
    const auto place = upper.find(kKey);
    if (place == std::string::npos) {
        return std::string(kAxisLetters);
    }
    const auto begin = place + kKey.size();
    return AxisLettersIn(upper.substr(begin, upper.find_first_of(" \t", begin) - begin));
}

/// Names of the joints: those of their axes, numbered from the second joint of an axis on.
std::vector<std::string> NamesOfJoints(const MachineIni& ini, std::size_t joints) {
    const std::string letters = LettersOfJoints(ini);
    std::vector<std::string> names;
    for (std::size_t joint = 0; joint < joints; ++joint) {
        if (joint >= letters.size()) {
            names.push_back("J" + std::to_string(joint));
            continue;
        }
        const auto same = std::count(
            letters.begin(), letters.begin() + static_cast<std::ptrdiff_t>(joint), letters[joint]);
        names.push_back(letters[joint] + (same > 0 ? std::to_string(same + 1) : ""));
    }
    return names;
}

/// The words of a pin's name between its points.
std::vector<std::string> PartsOf(const std::string& pin) {
    return Split(pin, '.');
}

bool IsOneOf(const std::string& word, std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, word) != words.end();
}

std::optional<double> Limit(const MachineIni& ini, const std::vector<std::string>& sections,
                            const std::string& key) {
    for (const std::string& section : sections) {
        const auto number = ini.Number(section, key);
        if (number && std::abs(*number) < kNoLimit) {
            return number;
        }
    }
    return std::nullopt;
}

/// From -size to size.
std::optional<AxisCapabilities> Symmetric(std::optional<double> size) {
    if (!size || *size == 0.0) {
        return std::nullopt;
    }
    AxisCapabilities limits;
    limits.upper_limit = std::abs(*size);
    limits.lower_limit = -limits.upper_limit;
    return limits;
}

/// Limits of a quantity of a joint or an axis; `sections` tell about it, the first that does.
std::optional<AxisCapabilities> LimitsOfMotion(const MachineIni& ini,
                                               const std::vector<std::string>& sections,
                                               const std::string& quantity) {
    const auto velocity = Limit(ini, sections, "MAX_VELOCITY");
    const auto acceleration = Limit(ini, sections, "MAX_ACCELERATION");
    if (IsOneOf(quantity, {"pos-cmd", "pos-fb", "motor-pos-cmd", "motor-pos-fb"})) {
        const auto lower = Limit(ini, sections, "MIN_LIMIT");
        const auto upper = Limit(ini, sections, "MAX_LIMIT");
        if (!lower || !upper || *lower >= *upper) {
            return std::nullopt;
        }
        AxisCapabilities limits;
        limits.lower_limit = *lower;
        limits.upper_limit = *upper;
        limits.velocity_limit = std::abs(velocity.value_or(0.0));
        limits.acceleration_limit = std::abs(acceleration.value_or(0.0));
        return limits;
    }
    if (quantity == "f-error") {
        return Symmetric(Limit(ini, sections, "FERROR"));
    }
    if (quantity == "vel-cmd") {
        return Symmetric(velocity);
    }
    return quantity == "acc-cmd" ? Symmetric(acceleration) : std::nullopt;
}

/// Largest velocity along the path, per second.
std::optional<double> PathVelocity(const MachineIni& ini) {
    if (const auto told = Limit(ini, {"TRAJ", "DISPLAY"}, "MAX_LINEAR_VELOCITY")) {
        return told;
    }
    std::optional<double> largest;
    for (const char letter : AxisLettersIn(ini.Find("TRAJ", "COORDINATES").value_or(""))) {
        const auto velocity = Limit(ini, {std::string("AXIS_") + letter}, "MAX_VELOCITY");
        largest = std::max(largest, velocity);
    }
    return largest;
}

std::optional<AxisCapabilities> LimitsOfSpindle(const MachineIni& ini, const std::string& number,
                                                bool per_second) {
    const auto fastest = [&](const std::string& turn) {
        auto speed = Limit(ini, {"SPINDLE_" + number}, "MAX_" + turn + "_VELOCITY");
        if (!speed) {
            speed = Limit(ini, {"DISPLAY"}, "MAX_SPINDLE_" + number + "_SPEED");
        }
        return speed ? speed : Limit(ini, {"DISPLAY"}, "MAX_SPINDLE_SPEED");
    };
    const auto forward = fastest("FORWARD");
    if (!forward) {
        return std::nullopt;
    }
    const double unit = per_second ? 60.0 : 1.0;
    AxisCapabilities limits;
    limits.upper_limit = std::abs(*forward) / unit;
    limits.lower_limit = -std::abs(fastest("REVERSE").value_or(*forward)) / unit;
    return limits;
}

bool CanBeName(const std::string& name) {
    return !name.empty() && name.size() <= kLongestPinName &&
           std::ranges::all_of(name, [](unsigned char letter) {
               return std::isalnum(letter) != 0 || letter == '_' || letter == '-' || letter == '.';
           });
}

/// Whether halcmd takes the word as it is.
bool CanBePin(const std::string& pin) {
    constexpr std::string_view kSpecial = "#$[]()\"'=<>";
    return !pin.empty() && std::ranges::all_of(pin, [&](unsigned char letter) {
        return std::isgraph(letter) != 0 &&
               kSpecial.find(static_cast<char>(letter)) == std::string_view::npos;
    });
}

}  // namespace

std::vector<ChosenPin> DefaultPins(const MachineIni& ini, std::string* error) {
    const std::size_t joints = CountIn(ini, "KINS", "JOINTS", 0.0, kMostJoints);
    if (joints == 0) {
        *error = "the INI file has no joints: JOINTS in section [KINS] is missing or 0";
        return {};
    }
    std::vector<ChosenPin> pins;
    const std::vector<std::string> names = NamesOfJoints(ini, joints);
    for (std::size_t joint = 0; joint < joints; ++joint) {
        const std::string prefix = "joint." + std::to_string(joint) + ".";
        pins.push_back({names[joint], prefix + "pos-fb"});
        pins.push_back({names[joint] + "_cmd", prefix + "pos-cmd"});
        pins.push_back({names[joint] + "_err", prefix + "f-error"});
    }
    if (LettersOfJoints(ini).empty()) {
        for (const char letter : AxisLettersIn(ini.Find("TRAJ", "COORDINATES").value_or("XYZ"))) {
            const std::string low(1, static_cast<char>(std::tolower(letter)));
            pins.push_back({std::string(1, letter) + "_cmd", "axis." + low + ".pos-cmd"});
        }
    }
    const std::size_t spindles = CountIn(ini, "TRAJ", "SPINDLES", 1.0, kMostSpindles);
    for (std::size_t spindle = 0; spindle < spindles; ++spindle) {
        const std::string number = std::to_string(spindle);
        pins.push_back({spindle == 0 ? "S" : "S" + number, "spindle." + number + ".speed-out"});
    }
    pins.push_back({"vel", "motion.current-vel"});
    return pins;
}

std::string ParsePins(std::string_view text, std::vector<ChosenPin>* pins) {
    for (const std::string& part : Split(text, ',')) {
        const auto equals = part.find('=');
        const ChosenPin chosen{part.substr(0, equals),
                               equals == std::string::npos ? "" : part.substr(equals + 1)};
        if (!CanBeName(chosen.name) || !CanBePin(chosen.pin)) {
            return "\"" + part + "\" is not NAME=PIN, with a name of letters, digits, _, - and .";
        }
        if (std::ranges::find(*pins, chosen.name, &ChosenPin::name) != pins->end()) {
            return "the name " + chosen.name + " is there twice";
        }
        pins->push_back(chosen);
    }
    return {};
}

std::string PinsText(const std::vector<ChosenPin>& pins) {
    std::string text;
    for (const ChosenPin& chosen : pins) {
        text.append(text.empty() ? "" : ",").append(chosen.name).append("=").append(chosen.pin);
    }
    return text;
}

std::optional<AxisCapabilities> LimitsOfPin(const MachineIni& ini, const std::string& pin,
                                            bool is_bit) {
    if (is_bit) {
        AxisCapabilities limits;
        limits.lower_limit = 0.0;
        limits.upper_limit = 1.0;
        return limits;
    }
    const std::vector<std::string> parts = PartsOf(pin);
    if (parts.size() == 2 && parts[0] == "motion" &&
        IsOneOf(parts[1], {"current-vel", "requested-vel"})) {
        auto limits = Symmetric(PathVelocity(ini));
        if (limits) {
            limits->lower_limit = 0.0;
        }
        return limits;
    }
    if (parts.size() != 3) {
        return std::nullopt;
    }
    if (parts[0] == "joint") {
        const auto joint = ParseWhole<std::size_t>(parts[1]);
        const std::string letters = LettersOfJoints(ini);
        std::vector<std::string> sections{"JOINT_" + parts[1]};
        if (joint && *joint < letters.size()) {
            sections.push_back(std::string("AXIS_") + letters[*joint]);
        }
        return LimitsOfMotion(ini, sections, parts[2]);
    }
    if (parts[0] == "axis") {
        return LimitsOfMotion(ini, {"AXIS_" + Upper(parts[1])}, parts[2]);
    }
    if (parts[0] == "spindle" && IsOneOf(parts[2], {"speed-out", "speed-out-rps", "speed-in"})) {
        return LimitsOfSpindle(ini, parts[1], parts[2] != "speed-out");
    }
    return std::nullopt;
}

double CycleTimeOf(const MachineIni& ini) {
    const double period = ini.Number("EMCMOT", "SERVO_PERIOD").value_or(kUsualServoPeriod);
    return (period > 0.0 ? period : kUsualServoPeriod) / 1e9;
}

}  // namespace wavo::master
