// Which pins of a controller are shown, under which names and with which limits.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "master/capability_module.h"
#include "master/linuxcnc/machine_ini.h"

namespace wavo::master {

struct ChosenPin {
    std::string name;  ///< of the axis
    std::string pin;

    friend bool operator==(const ChosenPin&, const ChosenPin&) = default;
};

/// Names that can be given: letters, digits and "_", "-", ".", at most so many.
inline constexpr std::size_t kLongestPinName = 36;

/// What a machinist wants to see, from the INI file: actual and commanded position and following
/// error of each joint (X, X_cmd, X_err; J0 ... where joints are no axes, then the commanded
/// positions of the axes too), speed of the spindles (S), velocity along the path (vel).
/// Empty on failure; `*error` tells that the file has no joints.
std::vector<ChosenPin> DefaultPins(const MachineIni& ini, std::string* error);

/// Reads NAME=PIN,... into `*pins`. Returns what is wrong with the text, or nothing.
std::string ParsePins(std::string_view text, std::vector<ChosenPin>* pins);

/// The same as text.
std::string PinsText(const std::vector<ChosenPin>& pins);

/// What the INI file tells about the values of a pin, where it does; and 0 to 1 for pins of one
/// bit.
std::optional<AxisCapabilities> LimitsOfPin(const MachineIni& ini, const std::string& pin,
                                            bool is_bit);

/// Seconds from one servo cycle to the next, from the INI file.
double CycleTimeOf(const MachineIni& ini);

}  // namespace wavo::master
