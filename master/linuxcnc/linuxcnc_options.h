// Command line of wavo_linuxcnc.
#pragma once

#include <span>
#include <string>

#include "master/options.h"

namespace wavo::master {

struct LinuxcncOptions {
    std::string setup;   ///< INI file of the machine to make the wiring for; empty: publish
    bool write = false;  ///< of the setup: into a file in place of standard output
    std::string ini;     ///< INI file of the machine that runs; empty: that of the environment
    std::string pins;    ///< which pins, as they were given; empty: the usual ones
};

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
OptionsOutcome ParseLinuxcncOptions(std::span<const std::string> arguments,
                                    LinuxcncOptions* options, std::string* error);

/// The text of --help.
std::string LinuxcncHelp();

}  // namespace wavo::master
