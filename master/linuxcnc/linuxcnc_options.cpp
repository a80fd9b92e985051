#include "master/linuxcnc/linuxcnc_options.h"

#include <string_view>
#include <vector>

#include "master/linuxcnc/chosen_pins.h"

namespace wavo::master {

namespace {

std::string SetSetup(std::string_view value, LinuxcncOptions* options) {
    options->setup = value;
    return value.empty() ? "no file name" : "";
}

std::string SetIni(std::string_view value, LinuxcncOptions* options) {
    options->ini = value;
    return value.empty() ? "no file name" : "";
}

std::string SetPins(std::string_view value, LinuxcncOptions* options) {
    options->pins = value;
    std::string_view list = value;
    if (list.starts_with('+')) {
        list.remove_prefix(1);
    }
    if (list.starts_with('@')) {
        return list.size() > 1 ? "" : "no file name";
    }
    std::vector<ChosenPin> pins;
    return ParsePins(list, &pins);
}

constexpr ValueOption<LinuxcncOptions> kLinuxcncValueOptions[] = {
    {"--setup", SetSetup}, {"--ini", SetIni}, {"--pins", SetPins}};

constexpr Switch<LinuxcncOptions> kLinuxcncSwitches[] = {{"--write", &LinuxcncOptions::write}};

}  // namespace

OptionsOutcome ParseLinuxcncOptions(std::span<const std::string> arguments,
                                    LinuxcncOptions* options, std::string* error) {
    std::vector<std::string_view> given;
    const OptionsOutcome outcome = ReadArguments<LinuxcncOptions>(
        arguments, kLinuxcncValueOptions, kLinuxcncSwitches, options, &given, error);
    if (outcome != OptionsOutcome::kRun) {
        return outcome;
    }
    if (options->write && options->setup.empty()) {
        *error = "--write needs --setup";
    } else if (!options->setup.empty() && !options->ini.empty()) {
        *error = "--setup and --ini exclude each other";
    }
    return error->empty() ? outcome : OptionsOutcome::kError;
}

std::string LinuxcncHelp() {
    return R"(Usage: wavo_linuxcnc --setup MACHINE.ini [--write] [--pins LIST]
       wavo_linuxcnc [--ini MACHINE.ini] [--pins LIST]

Publishes values of the LinuxCNC controller that runs on this computer, one line in every servo cycle,
to every viewer that connects.

Before the first time
  --setup MACHINE.ini  with the controller running: prints the lines that the machine's HAL needs. The
                       last of them starts this program together with the controller
  --write              writes them to the file wavo.hal beside MACHINE.ini in place of printing them,
                       and says what to add to MACHINE.ini; no file of yours is changed

Which values
  --pins LIST          pins of the controller and names for them, NAME=PIN,...: any pins of the types
                       float, s32, u32 and bit, at most 160. "+LIST" adds them to the usual ones,
                       "@FILE" takes them from a file with NAME=PIN in each line. Give the same list
                       with --setup and without
                       (default: position, commanded position and following error of each joint as
                       X, X_cmd, X_err; S, the speed of the spindle; vel, the velocity of the path)
  --ini MACHINE.ini    where names, cycle time and limits come from (default: the file that LinuxCNC
                       names in INI_FILE_NAME to what it starts)

  --help               this text
  --version            the version

Ends when the controller ends it (SIGTERM), with SIGINT, and when the controller is gone; viewers are
told in every case. Exit status: 0; 1 when it cannot read or publish; 2 for wrong arguments; 3 when the
controller has gone without a word.
)";
}

}  // namespace wavo::master
