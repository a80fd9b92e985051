// Units of results per unit of what they are computed in: millimetres, seconds, radians.
#pragma once

#include <numbers>

namespace wavo::measure {

inline constexpr double kMicrometres = 1000.0;   // per mm
inline constexpr double kMilliseconds = 1000.0;  // per s
inline constexpr double kPerMillion = 1e6;       // um/m per mm/mm
inline constexpr double kDegrees = 180.0 / std::numbers::pi;
inline constexpr double kFullTurn = 2.0 * std::numbers::pi;

}  // namespace wavo::measure
