#include "measure/derivatives.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavo::measure {
namespace {

TEST(RoundingNoise, IsThatOfTheDifferencesCoefficients) {
    EXPECT_NEAR(RoundingNoiseOf(Difference::kVelocity).deviation, 0.408, 5e-4);
    EXPECT_NEAR(RoundingNoiseOf(Difference::kCentralVelocity).deviation, 0.204, 5e-4);
    EXPECT_NEAR(RoundingNoiseOf(Difference::kAcceleration).deviation, 0.707, 5e-4);
    EXPECT_NEAR(RoundingNoiseOf(Difference::kJerk).deviation, 1.291, 5e-4);
    EXPECT_EQ(RoundingNoiseOf(Difference::kVelocity).worst, 1.0);
    EXPECT_EQ(RoundingNoiseOf(Difference::kCentralVelocity).worst, 0.5);
    EXPECT_EQ(RoundingNoiseOf(Difference::kAcceleration).worst, 2.0);
    EXPECT_EQ(RoundingNoiseOf(Difference::kJerk).worst, 4.0);
    // 1 um at 1 ms: 0.71 m/s^2 and 1290 m/s^3.
    EXPECT_NEAR(RoundingNoiseOf(Difference::kAcceleration).deviation * 1e-6 / 1e-6, 0.71, 0.005);
    EXPECT_NEAR(RoundingNoiseOf(Difference::kJerk).deviation * 1e-6 / 1e-9, 1290.0, 2.0);
}

/// Standard deviation of the differences of rounded positions, measured.
double Measured(double speed, std::size_t apart) {
    constexpr std::size_t kValues = 100000;
    double sum = 0.0;
    double squares = 0.0;
    double count = 0.0;
    for (std::size_t i = 0; i + apart < kValues; ++i) {
        const double here = std::floor(static_cast<double>(i) * speed + 0.5);
        const double there = std::floor(static_cast<double>(i + apart) * speed + 0.5);
        const double difference =
            (there - here) / static_cast<double>(apart) - speed;  // about what it ought to be
        sum += difference;
        squares += difference * difference;
        ++count;
    }
    return std::sqrt((squares - sum * sum / count) / (count - 1.0));
}

TEST(RoundingNoise, AtOneSpeedIsWhatRoundedPositionsShow) {
    const struct {
        double speed, one_cycle, central;
    } rows[] = {
        {3.1415926, 0.34863, 0.22527}, {7.25, 0.43301, 0.25}, {0.0141421356, 0.11807, 0.08289}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.speed);
        EXPECT_NEAR(RoundingNoiseAtSpeed(row.speed, false), row.one_cycle, 1e-4);
        EXPECT_NEAR(RoundingNoiseAtSpeed(row.speed, true), row.central, 1e-4);
        EXPECT_NEAR(Measured(row.speed, 1), row.one_cycle, 1e-5);
        EXPECT_NEAR(Measured(row.speed, 2), row.central, 1e-5);
    }
}

TEST(SmoothDerivative, HasItsNoiseGainAndBandwidth) {
    const struct {
        std::size_t m;
        int order;
        double gain, bandwidth;
    } rows[] = {{2, 1, 0.316228, 121},     {2, 2, 0.534522, 151},     {2, 3, 1.581139, 184},
                {5, 1, 0.0953463, 53},     {5, 2, 0.0682789, 64},     {5, 3, 0.0763381, 73},
                {10, 1, 0.0360375, 27.8},  {10, 2, 0.0133533, 33},    {10, 3, 0.00760172, 37.8},
                {25, 1, 0.00951303, 11.5}, {25, 2, 0.00144597, 13.5}, {25, 3, 0.000336051, 15.5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.m) + ", order " + std::to_string(row.order));
        const SmoothDerivative derivative(row.order, row.m, 0.001);
        EXPECT_NEAR(derivative.NoiseGain(), row.gain, row.gain * 4e-6);
        // Those figures stand on a grid of 0.25 Hz, the next line above.
        EXPECT_NEAR(derivative.Bandwidth(), row.bandwidth - 0.125, row.bandwidth < 50 ? 0.18 : 0.7);
        EXPECT_DOUBLE_EQ(derivative.Width(), 2.0 * static_cast<double>(row.m) * 0.001);
    }
}

TEST(SmoothDerivative, IsExactForItsPolynomial) {
    std::vector<double> values;
    for (int i = 0; i < 100; ++i) {
        const double t = i * 0.01;
        values.push_back(1e6 + 3.0 * t + 5.0 * t * t);
    }
    const auto velocity = SmoothDerivative(1, 5, 0.01).Of(values);
    const auto acceleration = SmoothDerivative(2, 5, 0.01).Of(values);
    const auto jerk = SmoothDerivative(3, 5, 0.01).Of(values);
    for (std::size_t i = 5; i < 95; ++i) {
        EXPECT_NEAR(velocity[i], 3.0 + 10.0 * static_cast<double>(i) * 0.01, 1e-7);
        EXPECT_NEAR(acceleration[i], 10.0, 1e-5);
        EXPECT_NEAR(jerk[i], 0.0, 1e-2);
    }
    EXPECT_TRUE(std::isnan(velocity[4]));
    EXPECT_TRUE(std::isnan(velocity[95]));
}

TEST(SmoothDerivative, AMissingValueLeavesItsNeighboursWithoutOne) {
    std::vector<double> values(40, 1.0);
    values[20] = std::numeric_limits<double>::quiet_NaN();
    const auto velocity = SmoothDerivative(1, 3, 0.001).Of(values);
    for (std::size_t i = 3; i < 37; ++i) {
        EXPECT_EQ(std::isnan(velocity[i]), i >= 17 && i <= 23) << i;
    }
    EXPECT_TRUE(SmoothDerivative(1, 3, 0.001).Of({}).empty());
}

}  // namespace
}  // namespace wavo::measure
