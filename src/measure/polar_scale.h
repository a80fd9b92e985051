// Radial errors in a polar picture: how much they are magnified.
#pragma once

namespace wavo::measure {

/// The nominal circle stands at 0.65 of half the picture; four grid circles lie on either side.
struct PolarScale {
    static constexpr double kNominal = 0.65;  ///< share of the half size
    static constexpr double kBand = 0.3;  ///< the same, from the nominal to the last grid circle
    static constexpr int kCircles = 4;    ///< grid circles on either side

    double step = 1.0;  ///< radial error from one grid circle to the next, um

    /// Radius in the picture of an error, um, in the unit of `half_size`.
    [[nodiscard]] double Radius(double error, double half_size) const {
        return half_size * (kNominal + error / step * kBand / kCircles);
    }
    /// How many times larger an error is drawn than it is, where the half size is so many um.
    [[nodiscard]] double Magnification(double half_size) const {
        return kBand * half_size / (kCircles * step);
    }
};

/// The smallest step of 1, 2 or 5 times a power of ten, and of at least `smallest`, that shows
/// errors up to `largest`, um.
PolarScale PolarScaleFor(double largest, double smallest = 0.001);

/// The next coarser or finer step.
double NextPolarStep(double step, bool coarser);

}  // namespace wavo::measure
