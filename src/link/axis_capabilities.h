// What is known of an axis: its limits, by name.
#pragma once

#include <optional>
#include <string>

namespace wavo {

/// Values of one axis. Velocity and acceleration are 0 when the master does not tell them.
struct AxisCapabilities {
    double upper_limit = 0.0;         ///< position units
    double lower_limit = 0.0;         ///< position units
    double velocity_limit = 0.0;      ///< position units per second
    double acceleration_limit = 0.0;  ///< position units per second squared
    double resolution = 0.001;

    friend bool operator==(const AxisCapabilities&, const AxisCapabilities&) = default;
};

/// Where limits of axes can be asked for.
class AxisLimitsSource {
 public:
    virtual ~AxisLimitsSource() = default;
    /// The values of the axis, or nothing when the axis is not known.
    virtual std::optional<AxisCapabilities> FindAxis(const std::string& name) = 0;
};

}  // namespace wavo
