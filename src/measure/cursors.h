// What two cursors read off a curve, and where they jump to.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "measure/figure.h"
#include "measure/series.h"
#include "measure/statistics.h"

namespace wavo::measure {

/// The times of both cursors and what lies between them.
struct CursorTimes {
    double a = 0.0;           ///< s
    double b = 0.0;           ///< s
    double difference = 0.0;  ///< b - a, s
    Figure frequency;         ///< 1 / |b - a|, Hz
};

CursorTimes TimesOf(double a, double b);

/// The sample next to a time; the earlier one of two that are as near. Not told beyond the data,
/// for a cycle that is missing and for a value that is.
Figure SampleAt(const Series& series, double time);

/// The value at a time, on the line between the two samples around it; between samples of which one
/// is missing it is not told.
Figure InterpolatedAt(const Series& series, double time);

/// One curve between the cursors.
struct CurveReading {
    Figure a;           ///< value at cursor A
    Figure b;           ///< value at cursor B
    Figure difference;  ///< b - a
    Figure per_second;  ///< difference over the time from A to B
    Statistics between;
};

CurveReading ReadCurve(const Series& series, double a, double b);

enum class Search { kForward, kBackward };

/// The next peak from a place on, the place itself not included: a sample behind which the values
/// fall by more than `prominence` after they rose by more than it. Of equal samples the one in the
/// middle. A missing value ends a rise.
std::optional<std::size_t> NextPeak(std::span<const double> values, std::size_t from, Search search,
                                    double prominence = 0.0);

/// The same for valleys.
std::optional<std::size_t> NextValley(std::span<const double> values, std::size_t from,
                                      Search search, double prominence = 0.0);

/// Where the values next pass through zero, as a place between samples (on the line between them);
/// of samples that are zero the one in the middle, where the signs before and behind differ. `from`
/// is such a place too and is not included.
std::optional<double> NextZeroCrossing(std::span<const double> values, double from, Search search);

/// Decimals that values carry: the smallest number of decimals, at most `most`, with which each of
/// them is written without loss (within 2 units of its last binary digit). 0 when there are none.
int DecimalsOf(std::span<const double> values, int most = 9);

}  // namespace wavo::measure
