// Derivatives of a stream of samples that come a cycle time apart, with the arithmetic that all
// streams of this program have, to the last bit.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace wavo {

/// What the difference of samples is divided by: the cycle time to the power of the order.
inline double DerivationDivisor(double cycle_time, std::int32_t order) {
    return std::pow(cycle_time, order);
}

/// The derivative of order `samples.size() - 1` at the last of some successive samples; the sample
/// itself for order 0. REQUIRES: `samples` is not empty; `divisor` is DerivationDivisor.
inline double Derive(std::span<const double> samples, double divisor) {
    std::size_t i = samples.size() - 1;
    if (i == 0) {
        return samples[0];
    }
    // All differences but the newest are subtracted from it. This is not the higher difference of
    // mathematics (for order 3 it gives h3 - 2 h2 + h0), and is what the streams mean.
    double sum = -(0.0 - (samples[i] - samples[i - 1]));
    for (--i; i >= 1; --i) {
        sum -= samples[i] - samples[i - 1];
    }
    return sum / divisor;
}

}  // namespace wavo
