// Derivatives of positions with a resolution: what their rounding makes of them, and smoothing
// ones.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace wavo::measure {

enum class Difference {
    kVelocity,         ///< 1 -1, one cycle
    kCentralVelocity,  ///< 1/2 0 -1/2
    kAcceleration,     ///< 1 -2 1
    kJerk,             ///< 1 -3 3 -1
};

/// What rounding to a resolution makes of a difference, in units of q / T^d.
struct RoundingNoise {
    double deviation = 0.0;  ///< standard deviation over many speeds
    double worst = 0.0;      ///< largest error
};

RoundingNoise RoundingNoiseOf(Difference difference);

/// Standard deviation of the one-cycle (or central) velocity at one constant speed of `steps`
/// resolutions per cycle, in units of q / T.
double RoundingNoiseAtSpeed(double steps, bool central);

/// A derivative by least squares over 2m + 1 values: polynomial of order 2, for the jerk 4. The
/// value is that of the middle: it comes m cycles late, and the m values at either end have none.
class SmoothDerivative {
 public:
    /// `order`: 1 velocity, 2 acceleration, 3 jerk. REQUIRES: m >= 1, for the jerk m >= 2.
    SmoothDerivative(int order, std::size_t m, double cycle_time);

    /// One value per value; NaN at the ends and where one of the 2m + 1 is missing.
    [[nodiscard]] std::vector<double> Of(std::span<const double> values) const;

    [[nodiscard]] const std::vector<double>& Coefficients() const { return m_coefficients; }
    /// Standard deviation of the result for noise of unit deviation, times T^order.
    [[nodiscard]] double NoiseGain() const { return m_noise_gain; }
    /// Where the result is 3 dB below the ideal derivative, Hz.
    [[nodiscard]] double Bandwidth() const;
    /// Time over which it smooths, 2 m T, s.
    [[nodiscard]] double Width() const;

 private:
    int m_order;
    std::size_t m_m;
    double m_cycle_time;
    std::vector<double> m_coefficients;  ///< from the oldest value to the newest, per T^order
    double m_noise_gain = 0.0;
};

}  // namespace wavo::measure
