// The command that makes the wiring.
#pragma once

#include "master/linuxcnc/linuxcnc_options.h"

namespace wavo::master {

/// Prints or writes the lines that the machine's HAL needs. Returns the exit status.
int SetUp(const LinuxcncOptions& options);

}  // namespace wavo::master
