// From a number to a count.
#pragma once

#include <cstdint>

namespace wavo {

/// Truncates toward zero; negative numbers and NaN become 0, what exceeds `limit` the limit.
inline std::uint64_t ToCount(double value, std::uint64_t limit) noexcept {
    if (!(value > 0.0)) {
        return 0;
    }
    return value < static_cast<double>(limit) ? static_cast<std::uint64_t>(value) : limit;
}

}  // namespace wavo
