// Statistics of the samples between two cursors.
//
// Moments are taken block by block about values of the block itself and merged (Chan, Golub and
// LeVeque), so that an offset of 1e8 leaves a signal of 1e-6 as it is; one read of the samples.
#pragma once

#include <cstdint>
#include <span>

#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

/// Sums over finite values and their cycles. Means are kept as offsets from the first value and the
/// first cycle.
struct Moments {
    std::int64_t count = 0;       ///< finite values
    std::int64_t not_finite = 0;  ///< NaN and infinities
    double shift = 0.0;           ///< first finite value
    Cycle cycle_shift = 0;        ///< its cycle
    double mean = 0.0;            ///< mean - shift
    double cycle_mean = 0.0;      ///< mean of the cycles - cycle_shift
    double m2 = 0.0;              ///< sum of squared deviations from the mean
    double ctx = 0.0;             ///< sum of deviation times deviation of the cycle
    double ctt = 0.0;             ///< sum of squared deviations of the cycles
    double minimum = 0.0;
    double maximum = 0.0;
    Cycle minimum_cycle = 0;  ///< of the first of equal ones
    Cycle maximum_cycle = 0;

    void Add(Cycle cycle, double value);
    /// REQUIRES: the other's cycles lie behind.
    void Merge(const Moments& other);
};

/// Moments of values that follow each other cycle by cycle.
Moments MomentsOf(std::span<const double> values, Cycle first_cycle);

struct Statistics {
    std::int64_t count = 0;       ///< values that took part
    std::int64_t not_finite = 0;  ///< NaN and infinities, left out
    std::int64_t missing = 0;     ///< cycles without a line between the ends
    Figure mean;
    Figure rms;
    Figure deviation;     ///< standard deviation, divisor n - 1
    Figure slope;         ///< of the least-squares line, per s
    Figure peak_to_peak;  ///< maximum - minimum
    Figure minimum;
    Figure maximum;
    Cycle minimum_cycle = 0;  ///< counts where there is a minimum
    Cycle maximum_cycle = 0;
};

enum class Divisor { kSample, kPopulation };  ///< n - 1 or n, for the standard deviation

/// What moments say. `cycle_time` in s.
Statistics StatisticsOf(const Moments& moments, double cycle_time,
                        Divisor divisor = Divisor::kSample);

/// Times at both ends of a stretch count as within it up to so many seconds beyond.
inline constexpr double kTimeTolerance = 1e-6;

/// Statistics of all samples from time `a` to time `b`, s, both ends included, in either order.
Statistics StatisticsBetween(const Series& series, double a, double b,
                             Divisor divisor = Divisor::kSample);

}  // namespace wavo::measure
