// What the INI file and the running controller tell about the machine, as both commands of
// wavo_linuxcnc need it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "master/linuxcnc/chosen_pins.h"
#include "master/linuxcnc/hal_listing.h"
#include "master/linuxcnc/machine_ini.h"
#include "master/linuxcnc/wiring.h"

namespace wavo::master {

/// The text of a file; nothing when it cannot be read.
std::optional<std::string> ReadTextFile(const std::string& path);

struct Machine {
    MachineIni ini;
    std::vector<ChosenPin> pins;
    HalListing hal;

    /// Reads the INI file, settles which pins are shown (`pins`: the value of --pins) and asks the
    /// controller for its pins. Nothing on failure; `*error` tells why.
    static std::optional<Machine> Find(const std::string& ini_path, const std::string& pins,
                                       std::string* error);

    /// The samplers that have the pins as their columns; nothing when there are none yet, `*error`
    /// then says what stands in their place.
    [[nodiscard]] std::optional<std::vector<SampledChannel>> WiredChannels(
        std::string* error) const;

    /// Seconds from one cycle to the next: that of the INI file, unless the controller's own
    /// differs.
    [[nodiscard]] double CycleTime() const;

    /// Limits of those pins about which something is known.
    [[nodiscard]] std::vector<AxisLimits> Limits() const;
};

}  // namespace wavo::master
