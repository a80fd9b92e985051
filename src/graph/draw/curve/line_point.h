// A point of a curve: its values and where they stand on the screen.
#pragma once

#include <cstdint>

namespace wavo {

struct LinePoint {
    std::int32_t x = 0;    ///< pixel
    std::int32_t y = 0;    ///< pixel
    double y_value = 0.0;  ///< axis units
    double x_value = 0.0;  ///< axis units; seconds over time

    friend bool operator==(const LinePoint&, const LinePoint&) = default;
};

}  // namespace wavo
