// What stands for a sample that a stream does not have.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

namespace wavo {

/// Stands where a stream took no sample: a NaN of its own, told from those that a master may write.
inline constexpr std::uint64_t kNoSampleBits = 0x7FF8'6E6F'7361'6D70;

inline double NoSample() {
    return std::bit_cast<double>(kNoSampleBits);
}

inline bool IsNoSample(double value) {
    return std::bit_cast<std::uint64_t>(value) == kNoSampleBits;
}

/// Stands where a sample came but gives no value: a derivative without earlier samples.
inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

}  // namespace wavo
