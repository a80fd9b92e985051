#include "graph/values/min_max_pyramid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "graph/values/sample_buffer.h"
#include "special_values.h"

namespace wavo {
namespace {

/// A ring of at most `limit` samples with its pyramid.
struct Watched {
    explicit Watched(std::size_t most) : limit(most) { ring.SetExpectedSize(most); }

    void Push(const std::vector<double>& samples) {
        ASSERT_TRUE(ring.Push(samples, limit));
        pyramid.Update(ring);
    }

    /// Looks at each sample of a stretch.
    [[nodiscard]] MinMax Expected(std::size_t position, std::size_t count, bool finite) const {
        MinMax range;
        for (std::size_t i = position; i < position + count; ++i) {
            const double sample = ring[i];
            if (std::isnan(sample) || (finite && std::isinf(sample))) {
                continue;
            }
            range.minimum = std::min(range.minimum, sample);
            range.maximum = std::max(range.maximum, sample);
        }
        return range;
    }

    void ExpectRight(std::size_t position, std::size_t count) const {
        const MinMax expected = Expected(position, count, false);
        const MinMax found = pyramid.Of(ring, ring.FirstSequence() + position, count);
        ASSERT_EQ(found.minimum, expected.minimum) << position << " + " << count;
        ASSERT_EQ(found.maximum, expected.maximum) << position << " + " << count;
        const MinMax finite = pyramid.FiniteOf(ring, ring.FirstSequence() + position, count);
        ASSERT_EQ(finite.minimum, Expected(position, count, true).minimum);
        ASSERT_EQ(finite.maximum, Expected(position, count, true).maximum);
        bool nan = false;
        for (std::size_t i = position; i < position + count; ++i) {
            nan = nan || std::isnan(ring[i]);
        }
        ASSERT_EQ(pyramid.HasNaN(ring, ring.FirstSequence() + position, count), nan)
            << position << " + " << count;
    }

    std::size_t limit;
    SampleRing ring;
    MinMaxPyramid pyramid;
};

std::vector<double> Noise(std::mt19937& random, std::size_t count, int odd_ones) {
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    std::uniform_int_distribution<int> kind(0, 99);
    std::vector<double> samples(count);
    for (double& sample : samples) {
        sample = value(random);
        if (kind(random) < odd_ones) {
            const int which = kind(random) % 3;
            sample = which == 0 ? kNaN : which == 1 ? kInf : -kInf;
        }
    }
    return samples;
}

TEST(MinMaxPyramid, AgreesWithLookingAtEachSampleWhileTheRingFillsAndTurns) {
    for (const std::size_t limit : {1U, 15U, 16U, 17U, 300U, 5000U, 70000U}) {
        for (const int odd_ones : {0, 2, 60}) {
            std::mt19937 random(static_cast<unsigned>(limit) + static_cast<unsigned>(odd_ones));
            Watched watched(limit);
            for (int batch = 0; batch < 40; ++batch) {
                const std::size_t count = 1 + random() % (limit / 8 + 1);
                watched.Push(Noise(random, count, odd_ones));
                const std::size_t size = watched.ring.Size();
                watched.ExpectRight(0, size);
                for (int query = 0; query < 20; ++query) {
                    const std::size_t position = random() % size;
                    watched.ExpectRight(position, random() % (size - position + 1));
                }
            }
        }
    }
}

TEST(MinMaxPyramid, TakesAllAnewWhenTheRingHasMovedItsSamples) {
    Watched watched(100);
    for (int i = 0; i < 130; ++i) {
        watched.Push({static_cast<double>(i)});
    }
    ASSERT_NE(watched.ring.SlotOf(0), 0U);
    watched.limit = 400;
    watched.ring.SetExpectedSize(400);
    for (int i = 0; i < 250; ++i) {
        watched.Push({static_cast<double>(-i)});
        watched.ExpectRight(0, watched.ring.Size());
        watched.ExpectRight(20, 60);
    }
    watched.ring.Clear();
    watched.Push({7.0, 8.0});
    watched.ExpectRight(0, 2);
    EXPECT_EQ(watched.pyramid.Of(watched.ring, 0, 2).maximum, 8.0);
}

TEST(MinMaxPyramid, ABatchOfTheWholeRingReplacesAll) {
    Watched watched(1000);
    watched.Push(std::vector<double>(1000, 5.0));
    watched.Push(std::vector<double>(1000, 3.0));
    EXPECT_EQ(watched.pyramid.Of(watched.ring, 1000, 1000).maximum, 3.0);
}

TEST(MinMaxPyramid, NothingAndNaNAloneAreEmpty) {
    Watched watched(100);
    EXPECT_FALSE(watched.pyramid.HasNaN());
    EXPECT_TRUE(watched.pyramid.Of(watched.ring, 0, 0).IsEmpty());
    watched.Push(std::vector<double>(50, kNaN));
    EXPECT_TRUE(watched.pyramid.HasNaN());
    EXPECT_TRUE(watched.pyramid.Of(watched.ring, 0, 50).IsEmpty());
    watched.Push(std::vector<double>(100, 1.0));
    EXPECT_FALSE(watched.pyramid.HasNaN());
}

TEST(MinMaxPyramid, FollowsARingThatHoldsLessThanItHasRoomFor) {
    // A stream that was allowed nothing but grew, and then was given a bound, ends like that.
    std::mt19937 random(5);
    for (const bool often : {true, false}) {
        Watched watched(3000);
        watched.Push(Noise(random, 1500, 0));
        watched.limit = 1500;
        ASSERT_GT(watched.ring.Slots().size(), 1500U);
        for (int batch = 0; batch < 300; ++batch) {
            ASSERT_TRUE(watched.ring.Push(Noise(random, 1 + random() % 90, batch % 3), 1500));
            if (often || batch % 40 == 39) {
                watched.pyramid.Update(watched.ring);
                const std::size_t position = random() % 1500;
                watched.ExpectRight(0, 1500);
                watched.ExpectRight(position, random() % (1500 - position) + 1);
            }
        }
    }
}

TEST(MinMaxPyramid, FindsTheFewOddSamplesOfALongStretch) {
    std::mt19937 random(9);
    for (int round = 0; round < 30; ++round) {
        std::vector<double> samples = Noise(random, 70000, 0);
        for (const double odd : {kNaN, kInf, -kInf}) {
            samples[random() % samples.size()] = odd;
        }
        Watched watched(60000);
        watched.Push(samples);
        watched.ExpectRight(0, 60000);
        const std::size_t position = random() % 60000;
        watched.ExpectRight(position, 60000 - position);
        watched.ExpectRight(position / 2, random() % (60000 - position / 2) + 1);
    }
}

TEST(SampleBuffer, FreesAPyramidThatNobodyHasAskedForWhileAllWasReplaced) {
    SampleBuffer buffer;
    buffer.SetExpectedSize(2000, 100);
    const auto push = [&buffer](std::size_t count) {
        ASSERT_TRUE(buffer.Push(std::vector<double>(count, 1.0), 2000));
    };
    push(2000);
    EXPECT_EQ(buffer.Pyramid().Of(buffer, 0, 2000).maximum, 1.0);
    push(2000);
    EXPECT_FALSE(buffer.HasOldPyramid()) << "some of what it took in is kept";
    push(200);
    EXPECT_TRUE(buffer.HasOldPyramid());
    buffer.FreeOldPyramid();
    EXPECT_FALSE(buffer.HasOldPyramid());
    EXPECT_EQ(buffer.Pyramid().Of(buffer, 3000, 100).maximum, 1.0) << "and makes it anew";
}

TEST(MinMaxPyramid, FiniteExtremesAreThoseOfAllFiniteOnes) {
    EXPECT_TRUE(FiniteExtremesOf({}).IsEmpty());
    EXPECT_TRUE(FiniteExtremesOf(std::vector<double>{kNaN, kInf, -kInf}).IsEmpty());
    const MinMax all = FiniteExtremesOf(std::vector<double>{3, 1, kNaN, 2, -kInf, 7, kInf, 5});
    EXPECT_EQ(all.minimum, 1.0);
    EXPECT_EQ(all.maximum, 7.0);
    const MinMax finite = FiniteExtremesOf(std::vector<double>{3, -1, kNaN, 2, 7});
    EXPECT_EQ(finite.minimum, -1.0);
    EXPECT_EQ(finite.maximum, 7.0);
}

}  // namespace
}  // namespace wavo
