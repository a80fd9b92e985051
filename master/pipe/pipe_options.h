// Command line of wavo_pipe.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "master/capability_module.h"
#include "master/options.h"

namespace wavo::master {

struct PipeOptions {
    std::vector<std::string> axes;            ///< empty: the first line has the names
    std::optional<double> cycle_time;         ///< seconds; nothing: the first column is the time
    double time_unit = 1.0;                   ///< of the first column, seconds
    std::vector<AxisLimits> limits;           ///< of some axes
    std::optional<std::uint64_t> fifo_lines;  ///< nothing: room for ten seconds
    std::optional<std::uint16_t> port;        ///< nothing: the standard input
    bool wait_viewer = false;                 ///< publishes no line before a viewer is connected
};

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
OptionsOutcome ParsePipeOptions(std::span<const std::string> arguments, PipeOptions* options,
                                std::string* error);

/// The text of --help.
std::string PipeHelp();

/// Slots of the value FIFOs: those that were asked for, else room for ten seconds, within bounds.
std::uint64_t FifoLinesOf(const PipeOptions& options, double cycle_time);

}  // namespace wavo::master
