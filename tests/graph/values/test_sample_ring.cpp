#include "graph/values/sample_ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "graph/values/sample_buffer.h"

namespace wavo {
namespace {

std::vector<double> Contents(const SampleRing& ring) {
    std::vector<double> out;
    CopyOut(ring, out, 0, ring.Size());
    return out;
}

std::vector<double> Numbers(std::size_t first, std::size_t count) {
    std::vector<double> numbers(count);
    for (std::size_t i = 0; i < count; ++i) {
        numbers[i] = static_cast<double>(first + i);
    }
    return numbers;
}

TEST(SampleRingTest, StartsEmptyWithoutMemory) {
    const SampleRing ring;
    EXPECT_EQ(ring.Size(), 0U);
    EXPECT_EQ(ring.Slots().size(), 0U);
    EXPECT_EQ(ring.Appended(), 0U);
    EXPECT_TRUE(Contents(ring).empty());
    EXPECT_FALSE(ring.RunOpen());
}

TEST(SampleRingTest, AnImmenseExpectedSizeAllocatesNothingInAdvance) {
    SampleRing ring;
    ring.SetExpectedSize(100000000000U);
    EXPECT_EQ(ring.Slots().size(), 0U);
    ASSERT_TRUE(ring.PushBack(1.0));
    EXPECT_LE(ring.Slots().size(), 4096U);
}

TEST(SampleRingTest, AllocationGrowsGeometricallyUpToTheExpectedSize) {
    SampleRing ring;
    ring.SetExpectedSize(5000);
    std::vector<std::size_t> sizes;
    for (std::size_t i = 0; i < 5000; ++i) {
        ASSERT_TRUE(ring.PushBack(static_cast<double>(i)));
        if (sizes.empty() || sizes.back() != ring.Slots().size()) {
            sizes.push_back(ring.Slots().size());
        }
    }
    EXPECT_EQ(sizes, (std::vector<std::size_t>{1024, 2048, 4096, 5000}));
    EXPECT_EQ(Contents(ring), Numbers(0, 5000));
}

TEST(SampleRingTest, GrowsOnPastTheExpectedSizeWhenAskedTo) {
    SampleRing ring;
    ring.SetExpectedSize(3);
    for (std::size_t i = 0; i < 4000; ++i) {
        ASSERT_TRUE(ring.PushBack(static_cast<double>(i)));
    }
    EXPECT_EQ(Contents(ring), Numbers(0, 4000));
}

TEST(SampleRingTest, ReplacingNeverMovesTheAllocation) {
    SampleRing ring;
    ring.SetExpectedSize(7);
    for (std::size_t i = 0; i < 7; ++i) {
        ASSERT_TRUE(ring.PushBack(static_cast<double>(i)));
    }
    const double* place = ring.Range(0, 1).first.data();
    for (std::size_t i = 7; i < 100; ++i) {
        const std::size_t second_slot = ring.SlotOf(1);
        ring.Replace(static_cast<double>(i));
        ASSERT_EQ(ring.SlotOf(0), second_slot);
        ASSERT_EQ(ring.Slots().size(), 7U);
        ASSERT_EQ(ring.FirstSequence(), i - 6);
        ASSERT_EQ(Contents(ring), Numbers(i - 6, 7));
    }
    // Slot 0 is where it was.
    while (ring.SlotOf(0) != 0) {
        ring.Replace(0.0);
    }
    EXPECT_EQ(ring.Range(0, 1).first.data(), place);
}

TEST(SampleRingTest, ConsecutivePositionsStandInConsecutiveSlotsButForOneWrap) {
    SampleRing ring;
    ring.SetExpectedSize(10);
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(ring.PushBack(i));
    }
    for (int turn = 0; turn < 25; ++turn) {
        int wraps = 0;
        for (std::size_t p = 1; p < ring.Size(); ++p) {
            if (ring.SlotOf(p) == 0) {
                EXPECT_EQ(ring.SlotOf(p - 1), ring.Slots().size() - 1);
                ++wraps;
            } else {
                EXPECT_EQ(ring.SlotOf(p), ring.SlotOf(p - 1) + 1);
            }
        }
        EXPECT_LE(wraps, 1);
        ring.Replace(turn);
    }
}

TEST(SampleRingTest, RangesAreCutToWhatIsHeld) {
    SampleRing ring;
    ring.SetExpectedSize(5);
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(ring.PushBack(i));
    }
    ring.Replace(5);
    ring.Replace(6);
    struct Row {
        std::size_t position, count;
        std::vector<double> samples;
    };
    const std::size_t huge = SIZE_MAX;
    const Row rows[] = {
        {0, 5, {2, 3, 4, 5, 6}},
        {0, 3, {2, 3, 4}},
        {0, 4, {2, 3, 4, 5}},
        {3, 2, {5, 6}},
        {4, 1, {6}},
        {4, 9, {6}},
        {1, huge, {3, 4, 5, 6}},
        {5, 1, {}},
        {huge, huge, {}},
        {0, 0, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.position << ", " << row.count);
        std::vector<double> out = {9.0, 9.0};
        CopyOut(ring, out, row.position, row.count);
        EXPECT_EQ(out, row.samples);
    }
}

TEST(SampleRingTest, ARunStoresInPlaceAndAllObserversFollow) {
    SampleRing ring;
    ASSERT_TRUE(ring.PushBack(0.0));
    ring.OpenRun(SampleRing::RunKind::kGrow, 3);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_TRUE(ring.RunOpen());
        ring.Put(i);
        EXPECT_EQ(ring.Size(), static_cast<std::size_t>(i + 1));
        EXPECT_EQ(ring.Appended(), static_cast<std::uint64_t>(i + 1));
        EXPECT_EQ(ring[static_cast<std::size_t>(i)], i);
    }
    EXPECT_FALSE(ring.RunOpen());
    EXPECT_EQ(Contents(ring), Numbers(0, 4));
}

TEST(SampleRingTest, AReplacingRunEndsAtTheLastSlot) {
    SampleRing ring;
    ring.SetExpectedSize(4);
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(ring.PushBack(i));
    }
    ring.Replace(4);
    ring.OpenRun(SampleRing::RunKind::kReplace, 100);
    EXPECT_EQ(ring.RunRoom().size(), 3U);
    for (int i = 5; ring.RunOpen(); ++i) {
        ring.Put(i);
        EXPECT_EQ(ring.Size(), 4U);
        EXPECT_EQ(Contents(ring), Numbers(static_cast<std::size_t>(i - 3), 4));
    }
    ring.OpenRun(SampleRing::RunKind::kReplace, 100);
    EXPECT_EQ(ring.RunRoom().size(), 4U);
    EXPECT_EQ(Contents(ring), Numbers(4, 4));
}

TEST(SampleRingTest, ARunOfAnEmptyRingHasNoRoom) {
    SampleRing ring;
    ring.OpenRun(SampleRing::RunKind::kReplace, 5);
    EXPECT_FALSE(ring.RunOpen());
    ring.OpenRun(SampleRing::RunKind::kGrow, 5);
    EXPECT_FALSE(ring.RunOpen());
}

TEST(SampleRingTest, CopyHoldsTheSameSamplesIndependently) {
    SampleRing ring;
    ring.SetExpectedSize(4);
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(ring.PushBack(i));
    }
    ring.Replace(4);
    ring.OpenRun(SampleRing::RunKind::kReplace, 2);
    ring.Put(5);
    SampleRing copy = ring;
    EXPECT_FALSE(copy.RunOpen());
    EXPECT_EQ(Contents(copy), Numbers(2, 4));
    EXPECT_EQ(copy.Appended(), 6U);
    ring.Put(6);
    copy.Replace(77.0);
    EXPECT_EQ(Contents(ring), Numbers(3, 4));
    EXPECT_EQ(Contents(copy), (std::vector<double>{3, 4, 5, 77}));
    copy = ring;
    EXPECT_EQ(Contents(copy), Numbers(3, 4));
    const SampleRing& same = copy;
    copy = same;
    EXPECT_EQ(Contents(copy), Numbers(3, 4));
    SampleRing moved = std::move(copy);
    EXPECT_EQ(Contents(moved), Numbers(3, 4));
}

TEST(SampleRingTest, AMovedFromRingIsEmptyAndUsable) {
    SampleRing ring;
    ASSERT_TRUE(ring.PushBack(1.0));
    SampleRing other = std::move(ring);
    ring.Clear();  // NOLINT(bugprone-use-after-move): shown to be safe
    EXPECT_EQ(ring.Size(), 0U);
    ASSERT_TRUE(ring.PushBack(2.0));
    EXPECT_EQ(Contents(ring), std::vector<double>{2.0});
    EXPECT_EQ(Contents(other), std::vector<double>{1.0});
}

// The ring against a deque: growth, drops, wraps and runs in any order.
TEST(SampleRingTest, BehavesAsADeque) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        SampleRing ring;
        std::deque<double> model;
        std::uint64_t appended = 0;
        double next = 0.0;
        for (int step = 0; step < 4000; ++step) {
            const std::uint32_t choice = random() % 100;
            if (choice < 40) {
                ASSERT_TRUE(ring.PushBack(next));
                model.push_back(next++);
                ++appended;
            } else if (choice < 55 && !model.empty()) {
                ring.Replace(next);
                model.pop_front();
                model.push_back(next++);
                ++appended;
            } else if (choice < 65 && !model.empty()) {
                ring.DropFront();
                model.pop_front();
            } else if (choice < 95) {
                const bool grows = random() % 2 == 0;
                ring.OpenRun(grows ? SampleRing::RunKind::kGrow : SampleRing::RunKind::kReplace,
                             random() % 200);
                const std::uint32_t puts = random() % 150;
                for (std::uint32_t i = 0; i < puts && ring.RunOpen(); ++i) {
                    ring.Put(next);
                    model.push_back(next++);
                    ++appended;
                    if (!grows) {
                        model.pop_front();
                    }
                }
            } else if (choice == 95) {
                ring.SetExpectedSize(random() % 3000);
            } else if (choice == 96) {
                const SampleRing copy = ring;
                ring = copy;
            } else if (choice == 97 && random() % 8 == 0) {
                ring.Clear();
                model.clear();
                appended = 0;
            }
            ASSERT_EQ(ring.Size(), model.size());
            ASSERT_EQ(ring.Appended(), appended);
            ASSERT_LE(ring.Size(), ring.Slots().size());
            if (!model.empty()) {
                ASSERT_EQ(ring[0], model.front());
                ASSERT_EQ(ring[model.size() - 1], model.back());
                const std::size_t position = random() % model.size();
                ASSERT_EQ(ring[position], model[position]);
            }
            if (step % 50 == 0) {
                ASSERT_EQ(Contents(ring), std::vector<double>(model.begin(), model.end()));
            }
        }
    }
}

/// Holds samples, and gives way by one more than it must when it is asked to. Sample n is n.
class Keeper : public SampleHolder {
 public:
    explicit Keeper(const SampleRing& ring) : m_ring(ring) {}

    void Hold(std::uint64_t from) {
        m_from = from;
        m_ring.Hold(*this, from);
    }
    void BeforeOverwrite() override {
        ++asked;
        EXPECT_EQ(m_ring.FirstKept(), m_from) << "not before it is the next one";
        EXPECT_EQ(m_ring.Sample(m_from), static_cast<double>(m_from));
        Hold(m_from + 2);
    }
    void BeforeEnd() override {
        ++ended;
        if (m_from != SampleRing::kNoSequence) {
            EXPECT_EQ(m_ring.Sample(m_from), static_cast<double>(m_from));
        }
    }

    int asked = 0;
    int ended = 0;

 private:
    const SampleRing& m_ring;
    std::uint64_t m_from = 0;
};

TEST(SampleRingTest, DroppedSamplesCanBeReadUntilTheirSlotsAreNeeded) {
    SampleRing ring;
    ring.SetExpectedSize(1200, 30);
    for (std::size_t i = 0; i < 5000; ++i) {
        const double sample[] = {static_cast<double>(i)};
        ASSERT_TRUE(ring.Push(sample, 1200));
        ASSERT_EQ(ring.FirstKept(), i < 1230 ? 0 : i - 1229);
        ASSERT_EQ(ring.Sample(ring.FirstKept()), static_cast<double>(ring.FirstKept()));
        ASSERT_EQ(ring.Size(), std::min<std::size_t>(i + 1, 1200));
    }
    EXPECT_EQ(ring.Slots().size(), 1230U);
    const SampleRing::Parts kept = ring.RangeOf(ring.FirstKept(), 1230);
    EXPECT_EQ(kept.first.size() + kept.second.size(), 1230U);
    EXPECT_EQ(kept.first.front(), 3770.0);
    const SampleRing copy = ring;  // has what is held
    EXPECT_EQ(copy.FirstKept(), copy.FirstSequence());
    EXPECT_EQ(copy.Sample(copy.FirstKept()), 3800.0);
}

TEST(SampleRingTest, AHolderIsAskedBeforeItsFirstSampleIsOverwritten) {
    SampleRing ring;
    ring.SetExpectedSize(1200, 30);
    ASSERT_TRUE(ring.Push(Numbers(0, 1200), 1200));
    Keeper keeper(ring);
    Keeper told_only(ring);
    told_only.Hold(SampleRing::kNoSequence);
    keeper.Hold(0);
    ASSERT_TRUE(ring.Push(Numbers(1200, 30), 1200));
    EXPECT_EQ(keeper.asked, 0);
    ASSERT_TRUE(ring.Push(Numbers(1230, 1), 1200));
    EXPECT_EQ(keeper.asked, 1);
    ring.Replace(1231.0);
    EXPECT_EQ(keeper.asked, 1);
    ring.Replace(1232.0);
    EXPECT_EQ(keeper.asked, 2);
    ASSERT_TRUE(ring.Push(Numbers(1233, 9), 1200));
    EXPECT_EQ(keeper.asked, 6);
    ring.OpenRun(SampleRing::RunKind::kReplace, 100);
    EXPECT_EQ(ring.RunRoom().size(), 2U);
    EXPECT_EQ(keeper.asked, 7);
    ring.Put(1242.0);
    keeper.Hold(13);
    EXPECT_FALSE(ring.RunOpen()) << "its next slot is that of sample 13";
    ring.Release(keeper);
    ring.OpenRun(SampleRing::RunKind::kReplace, 100);
    EXPECT_EQ(ring.RunRoom().size(), 100U);
    EXPECT_EQ(keeper.asked, 7);
    EXPECT_EQ(told_only.asked, 0);
    ring.Clear();
    EXPECT_EQ(told_only.ended, 1);
}

TEST(SampleRingTest, HoldersAreToldOfTheEndWhileTheSamplesAreThere) {
    const auto held = [](auto& ring, Keeper& keeper) {
        EXPECT_TRUE(ring.Push(Numbers(0, 10), 10));
        keeper.Hold(3);
    };
    {
        SampleRing ring;
        Keeper keeper(ring);
        held(ring, keeper);
        ring.Clear();
        EXPECT_EQ(keeper.ended, 1);
        ring.Clear();
        EXPECT_EQ(keeper.ended, 1) << "the hold has ended";
    }
    {
        SampleRing from;
        SampleRing to;
        Keeper of_from(from);
        Keeper of_to(to);
        held(from, of_from);
        held(to, of_to);
        to = std::move(from);
        EXPECT_EQ(of_from.ended, 1);
        EXPECT_EQ(of_to.ended, 1);
    }
    auto ring = std::make_unique<SampleBuffer>();
    Keeper keeper(*ring);
    held(*ring, keeper);
    const SampleBuffer copy = *ring;
    EXPECT_EQ(keeper.ended, 0);
    ring.reset();
    EXPECT_EQ(keeper.ended, 1);
}

}  // namespace
}  // namespace wavo
