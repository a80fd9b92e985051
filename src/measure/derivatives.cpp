#include "measure/derivatives.h"

#include <Eigen/Dense>
#include <cmath>
#include <limits>
#include <numbers>

namespace wavo::measure {

namespace {

constexpr double kRounding = 0.28867513459481287;  // 1 / sqrt 12: deviation of a rounded value

/// Gain of antisymmetric or symmetric coefficients at a phase per cycle, over that of the ideal.
double RelativeGain(const std::vector<double>& coefficients, int order, double phase) {
    const std::size_t middle = coefficients.size() / 2;
    const auto m = static_cast<double>(middle);
    double sum = 0.0;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const double at = (static_cast<double>(i) - m) * phase;
        sum += coefficients[i] * (order % 2 == 1 ? std::sin(at) : std::cos(at));
    }
    return std::abs(sum) / std::pow(phase, order);
}

}  // namespace

RoundingNoise RoundingNoiseOf(Difference difference) {
    switch (difference) {
        case Difference::kVelocity:
            return {kRounding * std::sqrt(2.0), 1.0};
        case Difference::kCentralVelocity:
            return {kRounding * std::sqrt(0.5), 0.5};
        case Difference::kAcceleration:
            return {kRounding * std::sqrt(6.0), 2.0};
        case Difference::kJerk:
            return {kRounding * std::sqrt(20.0), 4.0};
    }
    return {};
}

double RoundingNoiseAtSpeed(double steps, bool central) {
    const double moved = std::abs(central ? 2.0 * steps : steps);
    const double part = moved - std::floor(moved);
    return std::sqrt(part * (1.0 - part)) / (central ? 2.0 : 1.0);
}

SmoothDerivative::SmoothDerivative(int order, std::size_t m, double cycle_time)
    : m_order(order), m_m(m), m_cycle_time(cycle_time) {
    const auto size = static_cast<Eigen::Index>(2 * m + 1);
    const Eigen::Index degree = order == 3 ? 4 : 2;
    // Places as shares of m, so that their powers stay near one.
    const auto scale = static_cast<double>(m);
    Eigen::MatrixXd powers(size, degree + 1);
    for (Eigen::Index row = 0; row < size; ++row) {
        const double at = (static_cast<double>(row) - scale) / scale;
        for (Eigen::Index column = 0; column <= degree; ++column) {
            powers(row, column) = std::pow(at, static_cast<double>(column));
        }
    }
    const Eigen::MatrixXd solver =
        powers.householderQr().solve(Eigen::MatrixXd::Identity(size, size));
    const double factorial = order == 3 ? 6.0 : static_cast<double>(order);
    const Eigen::VectorXd row = solver.row(order) * factorial / std::pow(scale, order);
    m_coefficients.assign(row.data(), row.data() + row.size());
    m_noise_gain = row.norm();
}

std::vector<double> SmoothDerivative::Of(std::span<const double> values) const {
    std::vector<double> derivative(values.size(), std::numeric_limits<double>::quiet_NaN());
    const double unit = std::pow(m_cycle_time, m_order);
    for (std::size_t i = m_m; i + m_m < values.size(); ++i) {
        // About the middle value: the coefficients add up to nothing, an offset must not matter.
        double sum = 0.0;
        for (std::size_t k = 0; k < m_coefficients.size(); ++k) {
            sum += m_coefficients[k] * (values[i + k - m_m] - values[i]);
        }
        derivative[i] = sum / unit;
    }
    return derivative;
}

double SmoothDerivative::Bandwidth() const {
    const double level = std::numbers::sqrt2 / 2.0;
    // The gain falls from 1 at once; the first crossing is looked for in small steps.
    const double step = 0.01 / static_cast<double>(m_m);
    const double ideal = RelativeGain(m_coefficients, m_order, step);
    double high = step;
    while (high < std::numbers::pi && RelativeGain(m_coefficients, m_order, high) > level * ideal) {
        high += step;
    }
    double low = high - step;
    for (int i = 0; i < 50; ++i) {
        const double middle = (low + high) / 2.0;
        (RelativeGain(m_coefficients, m_order, middle) > level * ideal ? low : high) = middle;
    }
    return low / (2.0 * std::numbers::pi * m_cycle_time);
}

double SmoothDerivative::Width() const {
    return 2.0 * static_cast<double>(m_m) * m_cycle_time;
}

}  // namespace wavo::measure
