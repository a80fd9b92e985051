#include "measure/spectrum.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <span>

#include "measure/frequency_response.h"
#include "measure/spectrum_work.h"

namespace wavo::measure {
namespace {

constexpr double kPi = std::numbers::pi;

std::vector<double> Tone(std::size_t n, double lines, double amplitude, double phase = 0.3) {
    std::vector<double> values(n);
    for (std::size_t i = 0; i < n; ++i) {
        values[i] =
            amplitude *
            std::sin(2.0 * kPi * lines * static_cast<double>(i) / static_cast<double>(n) + phase);
    }
    return values;
}

TEST(Fft, AnyLengthEqualsTheSumItStandsFor) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    Fft fft;
    for (const std::size_t n : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 15U, 30U, 97U, 100U, 128U, 486U}) {
        SCOPED_TRACE(n);
        std::vector<double> values(n);
        for (double& value : values) {
            value = uniform(random);
        }
        std::vector<Complex> lines;
        fft.Forward(values, &lines);
        ASSERT_EQ(lines.size(), n / 2 + 1);
        for (std::size_t k = 0; k < lines.size(); ++k) {
            std::complex<long double> sum;
            for (std::size_t i = 0; i < n; ++i) {
                const long double phase = -2.0L * std::numbers::pi_v<long double> *
                                          static_cast<long double>(k * i % n) /
                                          static_cast<long double>(n);
                sum += static_cast<long double>(values[i]) * std::polar(1.0L, phase);
            }
            EXPECT_NEAR(lines[k].real(), static_cast<double>(sum.real()), 1e-12);
            EXPECT_NEAR(lines[k].imag(), static_cast<double>(sum.imag()), 1e-12);
        }
        std::vector<double> back;
        fft.Inverse(lines, n, &back);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_NEAR(back[i], values[i], 1e-13);
        }
    }
}

TEST(SteppedFft, EqualsTheTransformAtOnce) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    Fft at_once;
    SteppedFft stepped;
    for (const std::size_t n : {1U, 2U, 8U, 1000U, 4096U, 4098U, 6561U, 8192U, 10000U, 19683U}) {
        SCOPED_TRACE(n);
        std::vector<double> values(n);
        for (double& value : values) {
            value = uniform(random);
        }
        std::vector<Complex> expected;
        at_once.Forward(values, &expected);
        stepped.Begin(values);
        std::size_t steps = 0;
        while (stepped.Step()) {
            ++steps;
        }
        EXPECT_EQ(steps > 1, n > 4096);
        std::vector<Complex> lines(expected.size());
        const std::size_t half = lines.size() / 2;
        stepped.Lines(0, std::span(lines).first(half));
        stepped.Lines(half, std::span(lines).subspan(half));
        for (std::size_t k = 0; k < lines.size(); ++k) {
            EXPECT_NEAR(std::abs(lines[k] - expected[k]), 0.0, 1e-10);
        }
    }
}

TEST(SpectrumInSteps, OfMoreValuesThanMemoryReadsThemPartByPart) {
    constexpr Cycle kFirst = 1000;
    constexpr Cycle kSize = 3'000'000;
    constexpr Cycle kGap = 500'000;  // a place without a value
    const auto value_at = [](Cycle cycle) {
        return cycle == kFirst + kGap ? std::numeric_limits<double>::quiet_NaN()
                                      : std::sin(2.0 * kPi * 0.01 * static_cast<double>(cycle));
    };
    std::size_t most_asked = 0;
    int known = 0;
    SpectrumWork work;
    work.Begin(kFirst, kFirst + kSize, 0.001, {},
               {[&](Cycle first, std::span<double> room) {
                    most_asked = std::max(most_asked, room.size());
                    for (std::size_t i = 0; i < room.size(); ++i) {
                        room[i] = value_at(first + static_cast<Cycle>(i));
                    }
                    return true;
                },
                [&known](Cycle first, Cycle end) {
                    ++known;
                    return end <= kFirst + kGap || first > kFirst + kGap;
                }});
    double share = 0.0;
    while (work.Step()) {
        EXPECT_GE(work.Share(), share);
        share = work.Share();
    }
    const auto spectrum = work.Take();
    ASSERT_TRUE(spectrum);
    EXPECT_LE(most_asked, 8192U);
    EXPECT_GT(known, 2);
    EXPECT_EQ(spectrum->length, kLongestTransform / 2);
    EXPECT_EQ(spectrum->stretches, 2U);
    EXPECT_EQ(spectrum->used.first, static_cast<std::size_t>(kGap) + 1);
    EXPECT_EQ(spectrum->averages, 8U);
    EXPECT_NEAR(PeaksOf(*spectrum, 1)[0].frequency, 10.0, 1e-6);
    EXPECT_NEAR(PeaksOf(*spectrum, 1)[0].amplitude, 1.0, 1e-4);
}

TEST(SpectrumInSteps, SaysWhenTheValuesHaveGone) {
    SpectrumWork work;
    bool are_there = true;
    work.Begin(0, 5000, 0.001, {},
               {[&](Cycle, std::span<double> room) {
                    std::ranges::fill(room, 1.0);
                    return are_there;
                },
                {}});
    are_there = false;
    while (work.Step()) {
    }
    EXPECT_EQ(work.Take().reason, "the values have gone");
    EXPECT_FALSE(work.Step());
    EXPECT_EQ(SpectrumOf(Tone(5000, 100.0, 1.0), 0.001)->length, 5000U);
}

TEST(Peaks, ThatAreClearAreNoNoiseNoLeakageAndNoTrend) {
    std::mt19937_64 random(6);
    std::normal_distribution<double> noise(0.0, 0.01);
    for (const Window window : {Window::kHann, Window::kRectangular, Window::kFlatTop}) {
        SCOPED_TRACE(NameOf(window));
        auto values = Tone(8000, 1000.3, 1.0);
        const auto second = Tone(8000, 2500.7, 0.1);
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] += second[i] + noise(random) + static_cast<double>(i);
        }
        const auto peaks = ClearPeaksOf(*SpectrumOf(values, 0.001, {.window = window}), 8);
        ASSERT_EQ(peaks.size(), 2U);
        EXPECT_NEAR(peaks[0].frequency, 125.0375, 0.1);
        EXPECT_NEAR(peaks[1].frequency, 312.5875, 0.1);
    }
    EXPECT_EQ(ClearPeaksOf(*SpectrumOf(std::vector<double>(1000, 2.0), 0.001), 8).size(), 0U);
}

TEST(Fft, GoodLengthsHaveNoPrimeFactorAbove5) {
    for (const std::size_t n : {2U, 7U, 11U, 49U, 131071U, 1000003U}) {
        for (std::size_t length : {GoodLengthUpTo(n), GoodLengthFrom(n)}) {
            for (const std::size_t factor : {2U, 3U, 5U}) {
                while (length % factor == 0) {
                    length /= factor;
                }
            }
            EXPECT_EQ(length, 1U) << n;
        }
        EXPECT_LE(GoodLengthUpTo(n), n);
        EXPECT_GE(GoodLengthFrom(n), n);
    }
    EXPECT_EQ(GoodLengthUpTo(1024), 1024U);
    EXPECT_EQ(GoodLengthUpTo(0), 0U);
    EXPECT_EQ(GoodLengthUpTo(7), 6U);
    EXPECT_EQ(GoodLengthFrom(7), 8U);
}

TEST(Windows, HaveTheirGainsAndBandwidths) {
    const auto rectangular = FiguresOf(Window::kRectangular, 1000);
    EXPECT_DOUBLE_EQ(rectangular.coherent_gain, 1.0);
    EXPECT_DOUBLE_EQ(rectangular.noise_bandwidth, 1.0);
    const auto hann = FiguresOf(Window::kHann, 1000);
    EXPECT_NEAR(hann.coherent_gain, 0.5, 1e-12);
    EXPECT_NEAR(hann.noise_bandwidth, 1.5, 1e-12);
    const auto flat = FiguresOf(Window::kFlatTop, 1000);
    EXPECT_NEAR(flat.coherent_gain, 0.21557895, 1e-9);
    EXPECT_NEAR(flat.noise_bandwidth, 3.770246, 1e-6);
}

TEST(Windows, AreThoseOfTheirFormulas) {
    for (const std::size_t n : {8U, 100U, 1001U}) {
        const auto hann = WindowOf(Window::kHann, n);
        const auto flat = WindowOf(Window::kFlatTop, n);
        for (std::size_t j = 0; j < n; ++j) {
            const double phase = 2.0 * kPi * static_cast<double>(j) / static_cast<double>(n);
            EXPECT_NEAR(hann[j], 0.5 - 0.5 * std::cos(phase), 1e-14);
            EXPECT_NEAR(flat[j],
                        0.21557895 - 0.41663158 * std::cos(phase) +
                            0.277263158 * std::cos(2 * phase) - 0.083578947 * std::cos(3 * phase) +
                            0.006947368 * std::cos(4 * phase),
                        1e-13);
        }
    }
}

TEST(Spectrum, AmplitudeErrorsBetweenLinesAreThoseOfTheWindow) {
    const auto worst = [](Window window, double* high) {
        double low = 0.0;
        *high = -100.0;
        for (int step = 0; step <= 25; ++step) {
            const double off = step * 0.02;
            const auto spectrum = SpectrumOf(Tone(1000, 100.0 + off, 1.0), 0.001,
                                             {.window = window, .detrend = Detrend::kNone});
            const double error = ToDecibel(std::max(spectrum->values[100], spectrum->values[101]),
                                           1.0, SpectrumScale::kPeak);
            low = std::min(low, error);
            *high = std::max(*high, error);
        }
        return low;
    };
    double high = 0.0;
    EXPECT_NEAR(worst(Window::kRectangular, &high), -3.92, 0.03);  // the mirrored tone leaks
    EXPECT_NEAR(worst(Window::kHann, &high), -1.42, 0.01);
    EXPECT_NEAR(worst(Window::kFlatTop, &high), -0.0098, 0.0005);
    EXPECT_NEAR(high, 0.0023, 0.0005);
}

TEST(Spectrum, PeaksAreInterpolatedBetweenLines) {
    for (const double line : {100.0, 100.1, 100.25, 100.5, 100.73, 100.99}) {
        SCOPED_TRACE(line);
        for (const Window window : {Window::kHann, Window::kRectangular}) {
            const auto spectrum = SpectrumOf(Tone(4000, line, 2.5), 0.00025,
                                             {.window = window, .detrend = Detrend::kNone});
            const auto peaks = PeaksOf(*spectrum, 1);
            ASSERT_EQ(peaks.size(), 1U);
            EXPECT_NEAR(peaks[0].frequency, line, window == Window::kHann ? 1e-4 : 5e-3);
            EXPECT_NEAR(peaks[0].amplitude, 2.5, window == Window::kHann ? 1e-4 : 2e-2);
        }
    }
}

TEST(Spectrum, ScalesAndItsFirstAndLastLine) {
    std::vector<double> values(64);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = 3.0 + (i % 2 == 0 ? 2.0 : -2.0);
    }
    SpectrumSetup setup{.window = Window::kRectangular, .detrend = Detrend::kNone};
    const auto peak = SpectrumOf(values, 0.5, setup);
    EXPECT_NEAR(peak->values.front(), 3.0, 1e-12);
    EXPECT_NEAR(peak->values.back(), 2.0, 1e-12);
    EXPECT_DOUBLE_EQ(peak->nyquist, 1.0);
    EXPECT_DOUBLE_EQ(peak->FrequencyOf(32), 1.0);
    setup.scale = SpectrumScale::kRms;
    const auto rms = SpectrumOf(values, 0.5, setup);
    EXPECT_NEAR(rms->values.front(), 3.0, 1e-12);
    EXPECT_NEAR(rms->values.back(), std::numbers::sqrt2, 1e-12);
}

TEST(Spectrum, DensityAddsUpToTheVariance) {
    std::mt19937_64 random(8);
    std::normal_distribution<double> noise(0.0, 0.5);
    std::vector<double> values(65536);
    for (double& value : values) {
        value = noise(random);
    }
    for (const Window window : {Window::kRectangular, Window::kHann, Window::kFlatTop}) {
        const auto spectrum = SpectrumOf(
            values, 0.001, {.window = window, .scale = SpectrumScale::kDensity, .segment = 1024});
        double sum = 0.0;
        for (const double value : spectrum->values) {
            sum += value * spectrum->spacing;
        }
        EXPECT_NEAR(sum, 0.25, 0.005);
        EXPECT_EQ(spectrum->averages, 127U);
    }
}

TEST(Spectrum, TheLongestStretchWithoutAGapIsTaken) {
    auto values = Tone(3000, 300.0, 1.0);
    values[400] = std::numeric_limits<double>::quiet_NaN();
    values[2500] = std::numeric_limits<double>::infinity();
    const auto spectrum = SpectrumOf(values, 0.001, {});
    EXPECT_EQ(spectrum->length, 2048U);  // the largest good length within 2099
    EXPECT_EQ(spectrum->used, (Stretch{452, 2500}));
    EXPECT_NEAR(PeaksOf(*spectrum, 1)[0].frequency, 100.0, 0.01);
    EXPECT_FALSE(SpectrumOf(std::vector<double>(7, 1.0), 0.001));
    EXPECT_FALSE(SpectrumOf({}, 0.001));
    EXPECT_EQ(SpectrumOf(values, 0.001, {.segment = 5000}).reason,
              "too few values without a gap for a segment");
}

TEST(Spectrum, MoreThanAMillionValuesAreAveraged) {
    const std::size_t n = kLongestTransform + 1;
    const auto spectrum = SpectrumOf(Tone(n, 0.1 * static_cast<double>(n), 1.0), 0.001);
    EXPECT_EQ(spectrum->length, kLongestTransform / 2);
    EXPECT_EQ(spectrum->averages, 3U);
    EXPECT_NEAR(PeaksOf(*spectrum, 1)[0].frequency, 100.0, 1e-4);
    EXPECT_NEAR(PeaksOf(*spectrum, 1)[0].amplitude, 1.0, 1e-3);
}

TEST(Spectrum, AnOffsetOf1e8LeavesASmallTone) {
    auto values = Tone(4096, 100.0, 1e-3);
    for (double& value : values) {
        value += 1e8;
    }
    const auto peaks = PeaksOf(*SpectrumOf(values, 0.001), 1);
    EXPECT_NEAR(peaks[0].amplitude, 1e-3, 1e-8);
    EXPECT_EQ(peaks[0].line, 100U);
}

TEST(Spectrum, PeaksComeHighestFirst) {
    auto values = Tone(2000, 50.0, 1.0);
    const auto second = Tone(2000, 200.0, 3.0);
    const auto third = Tone(2000, 400.0, 2.0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] += second[i] + third[i];
    }
    const auto peaks = PeaksOf(*SpectrumOf(values, 0.001), 3);
    ASSERT_EQ(peaks.size(), 3U);
    EXPECT_EQ(peaks[0].line, 200U);
    EXPECT_EQ(peaks[1].line, 400U);
    EXPECT_EQ(peaks[2].line, 50U);
    EXPECT_TRUE(PeaksOf(*SpectrumOf(std::vector<double>(100, 5.0), 0.001), 3).empty());
}

TEST(SpectrumHistory, AveragesPowersAndHoldsTheLargest) {
    SpectrumHistory history;
    const auto small = *SpectrumOf(Tone(1000, 100.0, 1.0), 0.001);
    const auto large = *SpectrumOf(Tone(1000, 100.0, 7.0), 0.001);
    history.Add(small);
    history.Add(large);
    EXPECT_EQ(history.Count(), 2U);
    EXPECT_NEAR(history.Average().values[100], 5.0, 1e-6);
    EXPECT_NEAR(history.Maximum().values[100], 7.0, 1e-6);
    history.Add(*SpectrumOf(Tone(2000, 100.0, 1.0), 0.001));
    EXPECT_EQ(history.Count(), 1U);
}

TEST(FrequencyResponse, ADelayTurnsThePhase) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<double> in(20000);
    for (double& value : in) {
        value = uniform(random);
    }
    std::vector<double> out(in.size(), 0.0);
    for (std::size_t i = 2; i < in.size(); ++i) {
        out[i] = 0.5 * in[i - 2];
    }
    const auto response = FrequencyResponseOf(in, out, 0.001, {.segment = 1000});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->averages, 39U);
    EXPECT_DOUBLE_EQ(response->spacing, 1.0);
    EXPECT_NEAR(response->Magnitude(100), 0.5, 0.005);
    EXPECT_NEAR(response->Phase(100), -72.0, 0.5);
    EXPECT_GT(response->coherence[100], 0.99);
    EXPECT_EQ(response->trusted, 499U);
    EXPECT_LT(response->RandomError(100), 0.02);
}

TEST(FrequencyResponse, IsNotToldWithoutSegmentsOrExcitation) {
    const std::vector<double> still(10000, 5.0);
    EXPECT_EQ(FrequencyResponseOf(still, still, 0.001).reason,
              "no excitation: the commanded value does not move");
    const std::vector<double> few(60, 1.0);
    EXPECT_EQ(FrequencyResponseOf(few, few, 0.001).reason,
              "too few values: coherence needs 8 segments or more");
    EXPECT_FALSE(FrequencyResponseOf(Tone(4096, 10.0, 1.0), Tone(4096, 10.0, 1.0), 0.001,
                                     {.segment = 1024}));
    EXPECT_FALSE(FrequencyResponseOf({}, {}, 0.001));
}

}  // namespace
}  // namespace wavo::measure
