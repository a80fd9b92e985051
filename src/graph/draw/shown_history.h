// What a graph shows of the past in place of what its streams bring.
#pragma once

#include <cstdint>
#include <vector>

#include "source/history.h"

namespace wavo {

struct ShownHistory {
    std::vector<History*> y;  ///< per y axis; null: nothing is known of it. Not owned
    History* x = nullptr;     ///< of a graph over an axis; the same
    /// Over time the first of them stands at the left border, the last at the right one. At
    /// least 2.
    LineRange lines;
    std::int64_t origin = 0;  ///< the line at time 0

    /// Over an axis no more points than these are shown: those of the last lines.
    static constexpr std::int64_t kMostPoints = 500'000;
};

}  // namespace wavo
