// The capability module: what a master tells one viewer about its axes' limits.
#pragma once

#include <string>
#include <vector>

#include "link/axis_capabilities.h"
#include "platform/message_window.h"
#include "platform/shared_memory.h"

namespace wavo::master {

/// The limits of one axis.
struct AxisLimits {
    std::string axis;
    AxisCapabilities values;

    friend bool operator==(const AxisLimits&, const AxisLimits&) = default;
};

/// Longest axis name that a module can carry, in bytes.
inline constexpr std::size_t kLongestLimitedAxisName = 255;

/// Name of the module of the viewer with this window: its lower 32 bits as a signed number.
std::string CapabilityModuleName(platform::WindowHandle viewer);

/// Creates the viewer's module with one record per entry, in their order. A viewer that opens it
/// sees no records or all of them. Gives an empty segment on failure; platform::LastError() tells
/// why. The module's name goes with the segment.
/// REQUIRES: no name is longer than kLongestLimitedAxisName; nobody else holds the module.
platform::SharedSegment CreateCapabilityModule(platform::WindowHandle viewer,
                                               const std::vector<AxisLimits>& limits);

}  // namespace wavo::master
