// Closed-loop frequency response of an axis: actual over commanded values, averaged.
//
// It needs broad excitation in the commanded values (chirp, random) and tells of the closed loop
// only.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "measure/fft.h"
#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

struct ResponseSetup {
    /// Values of a segment; 0: the longest power of two that leaves 8 segments or more.
    std::size_t segment = 0;
    double least_coherence = 0.8;  ///< below it a line is not to be trusted
};

struct FrequencyResponse {
    std::vector<Complex> response;  ///< H1 = mean of conj(U) Y over mean of |U|^2, per line
    std::vector<double> coherence;  ///< 0 to 1; 0 where there is no excitation
    double spacing = 0.0;           ///< Hz
    std::size_t length = 0;         ///< values of a segment
    std::size_t averages = 0;
    Stretch used;
    std::size_t trusted = 0;  ///< lines from 1 to below half the line rate with enough coherence

    [[nodiscard]] double Magnitude(std::size_t line) const { return std::abs(response[line]); }
    /// Degrees, -180 to 180.
    [[nodiscard]] double Phase(std::size_t line) const;
    /// Random error of the magnitude, as a share of it; infinite without coherence.
    [[nodiscard]] double RandomError(std::size_t line) const;
};

/// Of the longest stretch without a gap in either column. Not told for fewer than 8 segments, where
/// coherence says nothing, and without excitation.
Told<FrequencyResponse> FrequencyResponseOf(std::span<const double> commanded,
                                            std::span<const double> actual, double cycle_time,
                                            const ResponseSetup& setup = {});

}  // namespace wavo::measure
