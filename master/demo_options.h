// Command line of demo_master.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "master/capability_module.h"
#include "master/motions.h"
#include "master/options.h"

namespace wavo::master {

/// Seconds per line where neither the options nor the source tell it.
inline constexpr double kUsualCycleTime = 0.001;

/// What goes wrong on purpose, once, after DemoOptions::fault_after lines.
enum class Fault {
    kNone,
    kOverrun,
    kNeverReady,
    kHang,
    kDie,
    kGarbageHeaders,
    kQuit,
    kCapabilities,
};

struct DemoOptions {
    std::string recording;  ///< file to play; empty: the motion
    MotionKind motion = MotionKind::kCircle;
    std::uint64_t seed = 1;         ///< of the noise
    std::vector<std::string> axes;  ///< empty: those that suit the source
    bool skip_gaps = false;         ///< of a recording
    double cycle_time = 0.0;        ///< seconds per line; 0: that of the source
    std::uint64_t rounds = 0;       ///< 0: for ever
    std::uint64_t lines = 0;        ///< end after so many lines; 0: no such end
    std::uint64_t fifo_lines = 10000;
    double announce_interval = 0.01;  ///< least seconds between two announcements to a viewer
    double speed = 1.0;               ///< lines come so many times as fast as their cycle time says
    bool full_speed = false;
    bool wait_viewer = false;
    bool stay = false;  ///< keep the link after the last line
    bool publish_limits = true;
    std::vector<AxisLimits> limits;  ///< in place of those found from the source
    Fault fault = Fault::kNone;
    std::uint64_t fault_after = 1000;
};

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
OptionsOutcome ParseDemoOptions(std::span<const std::string> arguments, DemoOptions* options,
                                std::string* error);

/// The text of --help.
std::string DemoHelp();

}  // namespace wavo::master
