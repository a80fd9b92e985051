// Doubles that tests try everywhere.
#pragma once

#include <limits>

namespace wavo {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kMax = std::numeric_limits<double>::max();

}  // namespace wavo
