// What is read off a buffer: at a line, between lines, the next peak.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "session/curve_reader.h"
#include "session/line_values.h"

namespace wavo {
namespace {

using measure::Search;

constexpr double kCycle = 0.001;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A buffer of up to `capacity` samples, with the lines of a master, and its reader.
class Stream {
 public:
    explicit Stream(std::size_t capacity, std::int32_t derivation = 0)
        : value("X", kCycle, static_cast<double>(capacity) * kCycle, derivation) {}

    void Take(const std::vector<double>& samples) {
        value.ExpectLine(line);
        value.SetValues(samples.data(), samples.size(), 1);
        value.EmptyNewValues();
        line += static_cast<std::int64_t>(samples.size());
    }

    GraphValue value;
    std::int64_t line = 0;
    CurveReader reader{std::make_unique<BufferValues>(value), kCycle, value.DerivationOrder()};
};

TEST(CurveReading, OfNoSamplesTellsWhy) {
    Stream stream(100);
    const auto reading = stream.reader.Between(3, 5);
    EXPECT_FALSE(reading.a);
    EXPECT_EQ(reading.a.reason, "beyond the data");
    EXPECT_EQ(reading.difference.reason, "beyond the data");
    EXPECT_EQ(reading.between.mean.reason, "no values");
    EXPECT_EQ(stream.reader.Between(std::nullopt, 5).a.reason, "the cursor is not on the data");
    EXPECT_EQ(stream.reader.Next(Landmark::kPeak, 0, Search::kForward, 0.0).line, std::nullopt);
    EXPECT_EQ(stream.reader.Decimals(), 0);
}

TEST(CurveReading, OfOneSampleHasNoSpread) {
    Stream stream(100);
    stream.Take({2.5});
    const auto reading = stream.reader.Between(0, 0);
    EXPECT_EQ(*reading.a, 2.5);
    EXPECT_EQ(*reading.difference, 0.0);
    EXPECT_EQ(reading.per_second.reason, "both cursors stand at one time");
    EXPECT_EQ(reading.between.count, 1);
    EXPECT_EQ(*reading.between.mean, 2.5);
    EXPECT_EQ(reading.between.deviation.reason, "one value only");
}

TEST(CurveReading, LeavesOutWhatIsNotFiniteAndSaysWhatIsMissing) {
    Stream stream(100);
    stream.Take({1.0, kNaN, 3.0});
    stream.line += 2;  // that the stream missed
    stream.Take({kInfinity, 5.0});
    const auto reading = stream.reader.Between(1, 6);
    EXPECT_EQ(reading.a.reason, "no value there");
    EXPECT_EQ(*reading.b, 5.0);
    EXPECT_EQ(reading.between.count, 2);
    EXPECT_EQ(reading.between.not_finite, 4);
    EXPECT_EQ(*reading.between.minimum, 3.0);
    EXPECT_EQ(reading.between.minimum_cycle, 2);
    EXPECT_EQ(stream.reader.ValueAt(3).reason, "no value there");
    EXPECT_EQ(*stream.reader.ValueAt(5), kInfinity);
}

TEST(CurveReading, OfABandBeyondTheDataIsThatOfTheDataInIt) {
    Stream stream(4);
    stream.Take({1.0, 2.0, 3.0, 4.0});
    stream.Take({5.0, 6.0});  // the first two are dropped
    const auto reading = stream.reader.Between(100, -100);
    EXPECT_EQ(reading.a.reason, "beyond the data");
    EXPECT_EQ(reading.between.count, 4);
    EXPECT_EQ(*reading.between.minimum, 3.0);
    EXPECT_EQ(stream.reader.Between(50, 60).between.count, 0);
}

TEST(CurveReading, OfASmallSignalFarFromZeroIsThatOfTheSignal) {
    Stream stream(20000);
    std::vector<double> samples(20000);
    long double mean = 0.0L;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = 1e8 + 1e-6 * std::sin(static_cast<double>(i) * 0.0314);
        mean += static_cast<long double>(samples[i]) - 1e8L;
    }
    mean /= static_cast<long double>(samples.size());
    long double m2 = 0.0L;
    for (const double sample : samples) {
        const long double deviation = static_cast<long double>(sample) - 1e8L - mean;
        m2 += deviation * deviation;
    }
    stream.Take(samples);
    const auto reading = stream.reader.Between(0, 19999);
    EXPECT_NEAR(*reading.between.deviation,
                static_cast<double>(std::sqrt(m2 / static_cast<long double>(19999))), 1e-12);
    EXPECT_EQ(stream.reader.Decimals(), 8);
}

TEST(CurveReading, GoesOnWithTheStream) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    Stream stream(10000);
    std::vector<double> all;
    for (int batch = 0; batch < 300; ++batch) {
        std::vector<double> samples(1 + random() % 200);
        for (double& sample : samples) {
            sample = uniform(random);
        }
        if (batch == 150) {
            stream.value.Reset();
            all.assign(static_cast<std::size_t>(stream.line), kNaN);
        }
        all.insert(all.end(), samples.begin(), samples.end());
        stream.Take(samples);
        const LineRange lines = stream.reader.Lines();
        ASSERT_EQ(lines.end, stream.line);
        const auto reading = stream.reader.Between(lines.begin, lines.end - 1);
        const measure::Series series{
            std::span(all).subspan(static_cast<std::size_t>(lines.begin)), kCycle, lines.begin, {}};
        const auto expected = measure::ReadCurve(series, static_cast<double>(lines.begin) * kCycle,
                                                 static_cast<double>(lines.end - 1) * kCycle);
        ASSERT_EQ(reading.between.count, expected.between.count);
        if (reading.between.count < 2) {
            continue;
        }
        EXPECT_EQ(*reading.a, *expected.a);
        EXPECT_EQ(*reading.b, *expected.b);
        EXPECT_NEAR(*reading.per_second, *expected.per_second, 1e-6);
        EXPECT_NEAR(*reading.between.deviation, *expected.between.deviation, 1e-12);
        EXPECT_EQ(reading.between.maximum_cycle, expected.between.maximum_cycle);
    }
}

TEST(CurveReading, OfAVelocityLeavesOutWhereThereIsNone) {
    Stream stream(100, 1);
    stream.Take({5.0, 5.1, 5.2, 5.3});
    const auto reading = stream.reader.Between(0, 3);
    EXPECT_EQ(reading.a.reason, "no value there") << "no position before it";
    EXPECT_EQ(reading.between.count, 3);
    EXPECT_NEAR(*reading.between.minimum, 100.0, 1e-9);
    EXPECT_EQ(stream.reader.Decimals(), 0) << "0.1 mm in 1 ms are 100 mm/s";
    stream.Take({5.3001});
    EXPECT_EQ(stream.reader.Decimals(), 1);
}

TEST(CurveReading, FindsPeaksValleysAndCrossingsOneAfterAnother) {
    Stream stream(100000);
    std::vector<double> samples(60000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = std::sin(static_cast<double>(i) * 2.0 * std::numbers::pi / 20000.0) +
                     0.001 * std::sin(static_cast<double>(i) * 0.9);
    }
    stream.line = 500;
    stream.Take(samples);
    const auto near = [](std::int64_t line) {
        return ::testing::Optional(
            ::testing::AllOf(::testing::Ge(line - 100), ::testing::Le(line + 100)));
    };
    CurveReader& reader = stream.reader;
    EXPECT_THAT(reader.Next(Landmark::kPeak, 500, Search::kForward, 0.02).line, near(5500));
    EXPECT_THAT(reader.Next(Landmark::kPeak, 6000, Search::kForward, 0.02).line, near(25500));
    EXPECT_THAT(reader.Next(Landmark::kValley, 6000, Search::kForward, 0.02).line, near(15500));
    EXPECT_THAT(reader.Next(Landmark::kPeak, 25000, Search::kBackward, 0.02).line, near(5500));
    EXPECT_EQ(reader.Next(Landmark::kPeak, 50000, Search::kForward, 0.02).line, std::nullopt);
    EXPECT_THAT(reader.Next(Landmark::kZeroCrossing, 6000, Search::kForward).line, near(10500));
    EXPECT_EQ(reader.Next(Landmark::kPeak, 499, Search::kForward, 0.02).line, std::nullopt)
        << "beyond the data";

    Stream steps(100);
    steps.Take({-1.0, 1.0, 1.0, 0.0, -1.0, -1.0, 2.0});
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 0, Search::kForward).line, 1);
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 1, Search::kForward).line, 3);
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 3, Search::kForward).line, 6);
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 6, Search::kForward).line, std::nullopt);
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 6, Search::kBackward).line, 5);
    EXPECT_EQ(steps.reader.Next(Landmark::kZeroCrossing, 5, Search::kBackward).line, 3);
}

TEST(CurveReading, CarriesTheDecimalsOfTheValues) {
    Stream stream(100);
    stream.Take({1.0, 2.0});
    EXPECT_EQ(stream.reader.Decimals(), 0);
    stream.Take({1.25, kNaN});
    EXPECT_EQ(stream.reader.Decimals(), 2);
    stream.Take({3.0});
    EXPECT_EQ(stream.reader.Decimals(), 2);
    stream.Take({1.0 / 3.0});
    EXPECT_EQ(stream.reader.Decimals(), 9);
}

}  // namespace
}  // namespace wavo
