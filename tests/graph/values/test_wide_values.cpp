// What is computed with wide instructions is what portable code computes. Where the processor has
// none, both ways are the same.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "graph/values/derivative_run.h"
#include "graph/values/min_max_pyramid.h"
#include "source/derivation.h"
#include "special_values.h"

namespace wavo {
namespace {

/// Ordinary numbers, and `odd` percent of all kinds of others.
std::vector<double> AnySamples(std::mt19937& random, std::size_t count, unsigned odd) {
    const std::vector<double> odd_ones{kNaN,
                                       -kNaN,
                                       kInf,
                                       -kInf,
                                       0.0,
                                       -0.0,
                                       kMax,
                                       -kMax,
                                       std::numeric_limits<double>::denorm_min(),
                                       -std::numeric_limits<double>::denorm_min(),
                                       std::numeric_limits<double>::min()};
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::vector<double> samples(count);
    for (double& sample : samples) {
        sample = random() % 100 < odd ? odd_ones[random() % odd_ones.size()]
                                      : value(random) * std::ldexp(1.0, int(random() % 40) - 20);
    }
    return samples;
}

struct Row {
    explicit Row(std::size_t columns) : first(columns), minimum(columns), maximum(columns) {}
    [[nodiscard]] RowExtremes Room() { return {first.data(), minimum.data(), maximum.data()}; }

    std::vector<double> first;
    std::vector<double> minimum;
    std::vector<double> maximum;
};

void ExpectSameRow(const SampleRing& ring, const MinMaxPyramid& pyramid,
                   const std::vector<std::size_t>& bounds) {
    const std::size_t columns = bounds.size() - 1;
    Row wide(columns);
    Row portable(columns);
    pyramid.OfRow(ring.Slots().data(), bounds, wide.Room(), BestInstructions());
    pyramid.OfRow(ring.Slots().data(), bounds, portable.Room(), Instructions::kPortable);
    for (std::size_t i = 0; i < columns; ++i) {
        MinMax expected;
        for (std::size_t slot = bounds[i]; slot < bounds[i + 1]; ++slot) {
            const double sample = ring.Slots().data()[slot];
            expected.minimum = sample < expected.minimum ? sample : expected.minimum;
            expected.maximum = sample > expected.maximum ? sample : expected.maximum;
        }
        // Equal, not the same: which zero it is does not matter.
        ASSERT_EQ(portable.minimum[i], expected.minimum) << bounds[i] << " to " << bounds[i + 1];
        ASSERT_EQ(portable.maximum[i], expected.maximum) << bounds[i] << " to " << bounds[i + 1];
        ASSERT_EQ(wide.minimum[i], expected.minimum) << bounds[i] << " to " << bounds[i + 1];
        ASSERT_EQ(wide.maximum[i], expected.maximum) << bounds[i] << " to " << bounds[i + 1];
        const double first = ring.Slots().data()[bounds[i]];
        ASSERT_EQ(std::bit_cast<std::uint64_t>(wide.first[i]), std::bit_cast<std::uint64_t>(first));
    }
}

TEST(WideValues, ExtremesOfRowsOfEveryLengthFromEverySlot) {
    std::mt19937 random(3);
    for (const unsigned odd : {0U, 5U, 60U}) {
        for (const std::size_t size : {1U, 7U, 100U, 273U, 5000U, 20000U}) {
            SampleRing ring;
            ring.SetExpectedSize(size);
            ASSERT_TRUE(ring.Push(AnySamples(random, size + random() % size, odd), size));
            MinMaxPyramid pyramid;
            pyramid.Update(ring);
            for (const std::size_t width :
                 {1U, 2U, 4U, 9U, 21U, 40U, 56U, 101U, 130U, 511U, 700U, 4999U}) {
                for (std::size_t begin = 0; begin < std::min<std::size_t>(size, 34); ++begin) {
                    // As columns are: of about one width, the first and the last cut off.
                    std::vector<std::size_t> bounds{begin};
                    for (std::size_t next = begin + 1 + random() % width; next < size;
                         next += width + random() % 2) {
                        bounds.push_back(next);
                    }
                    bounds.push_back(size);
                    ExpectSameRow(ring, pyramid, bounds);
                    if (HasFatalFailure()) {
                        FAIL() << size << " samples, columns of " << width;
                    }
                }
            }
        }
    }
}

TEST(WideValues, ExtremesOfRowsOfUnequalColumns) {
    std::mt19937 random(4);
    SampleRing ring;
    ring.SetExpectedSize(60000);
    ASSERT_TRUE(ring.Push(AnySamples(random, 60000, 3), 60000));
    MinMaxPyramid pyramid;
    pyramid.Update(ring);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::size_t> bounds{random() % 500};
        while (bounds.back() < 60000 && bounds.size() < 300) {
            const std::size_t longest = std::size_t{1} << random() % 13;
            bounds.push_back(std::min<std::size_t>(60000, bounds.back() + 1 + random() % longest));
        }
        ExpectSameRow(ring, pyramid, bounds);
        ASSERT_FALSE(HasFatalFailure());
    }
}

TEST(WideValues, LimitsOfRowsHoldWhatTheirSamplesAre) {
    std::mt19937 random(6);
    SampleRing ring;
    ring.SetExpectedSize(60000);
    ASSERT_TRUE(ring.Push(AnySamples(random, 90000, 1), 60000));
    MinMaxPyramid pyramid;
    pyramid.Update(ring);
    for (const std::size_t width : {20U, 47U, 48U, 56U, 300U, 600U, 800U, 5000U}) {
        std::vector<std::size_t> bounds{random() % 300};
        while (bounds.back() + width + 1 < 60000) {
            bounds.push_back(bounds.back() + width + random() % 2);
        }
        const std::size_t columns = bounds.size() - 1;
        Row exact(columns);
        pyramid.OfRow(ring.Slots().data(), bounds, exact.Room());
        Row inner(columns);
        Row outer(columns);
        std::size_t detail = pyramid.DetailOf(width);
        ASSERT_EQ(detail, width < 48 ? 0U : width < 768 ? 1U : 2U);
        if (detail == 0) {
            continue;
        }
        pyramid.LimitsOfRow(bounds, detail,
                            {inner.minimum.data(), inner.maximum.data(), outer.minimum.data(),
                             outer.maximum.data()});
        for (;; --detail) {
            for (std::size_t i = 0; i < columns; ++i) {
                ASSERT_LE(outer.minimum[i], exact.minimum[i]);
                ASSERT_GE(inner.minimum[i], exact.minimum[i]);
                ASSERT_GE(outer.maximum[i], exact.maximum[i]);
                ASSERT_LE(inner.maximum[i], exact.maximum[i]);
                ASSERT_TRUE(detail != 0 || (inner.minimum[i] == outer.minimum[i] &&
                                            inner.maximum[i] == outer.maximum[i]));
            }
            if (detail == 0) {
                break;
            }
            for (std::size_t i = 0; i < columns; ++i) {
                MinMax within{inner.minimum[i], inner.maximum[i]};
                MinMax around;
                pyramid.Narrow(ring.Slots().data(), bounds[i], bounds[i + 1], detail - 1, within,
                               around);
                inner.minimum[i] = within.minimum;
                inner.maximum[i] = within.maximum;
                outer.minimum[i] = around.minimum;
                outer.maximum[i] = around.maximum;
            }
        }
    }
}

TEST(WideValues, DerivativesToTheLastBit) {
    std::mt19937 random(5);
    for (const unsigned odd : {0U, 10U, 70U}) {
        for (const double cycle : {0.001, 0.00025, 1.0 / 3.0, 2.0, 1e-200, 1e300}) {
            for (std::size_t count = 0; count < 40; ++count) {
                const std::vector<double> samples = AnySamples(random, count + 2, odd);
                for (const std::int32_t order : {1, 2}) {
                    const double divisor = DerivationDivisor(cycle, order);
                    std::vector<double> wide(count);
                    std::vector<double> portable(count);
                    const auto derive = order == 1 ? DeriveOnce : DeriveTwice;
                    derive(samples.data() + 2, count, divisor, wide.data(), BestInstructions());
                    derive(samples.data() + 2, count, divisor, portable.data(),
                           Instructions::kPortable);
                    for (std::size_t i = 0; i < count; ++i) {
                        const auto earlier = static_cast<std::size_t>(order);
                        const double expected = Derive(
                            std::span(samples).subspan(i + 2 - earlier, earlier + 1), divisor);
                        // The sign of what is not a number is nobody's.
                        if (std::isnan(expected)) {
                            ASSERT_TRUE(std::isnan(wide[i]) && std::isnan(portable[i]));
                            continue;
                        }
                        ASSERT_EQ(std::bit_cast<std::uint64_t>(wide[i]),
                                  std::bit_cast<std::uint64_t>(expected));
                        ASSERT_EQ(std::bit_cast<std::uint64_t>(portable[i]),
                                  std::bit_cast<std::uint64_t>(expected));
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace wavo
