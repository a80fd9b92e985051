// Lines that are too many to look at one by one, cut into parts.
#pragma once

#include <cstdint>
#include <vector>

#include "source/history.h"

namespace wavo {

/// The bounds of 16 parts of about one size.
inline std::vector<std::int64_t> PartsOf(const LineRange& lines) {
    constexpr std::int64_t kParts = 16;
    std::vector<std::int64_t> bounds;
    for (std::int64_t part = 0; part < kParts; ++part) {
        bounds.push_back(lines.begin + lines.Count() / kParts * part);
    }
    bounds.push_back(lines.end);
    return bounds;
}

}  // namespace wavo
