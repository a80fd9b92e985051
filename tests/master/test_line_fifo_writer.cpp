#include "master/line_fifo_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "link/wire_format.h"
#include "platform/process.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using wavo::testing::MappedSegment;
using wavo::testing::SegmentExists;

class LineFifoWriterTest : public ::testing::Test {
 protected:
    /// A name that no other process takes.
    const std::string m_name = "wavo_test_fifo_" + std::to_string(platform::ProcessId());
};

TEST_F(LineFifoWriterTest, HeaderTellsDimensionsAndIsOtherwiseZero) {
    const auto fifo = LineFifoWriter::Create(m_name, 3, 5);
    ASSERT_TRUE(fifo);
    const MappedSegment segment(m_name);
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment.Get<std::uint64_t>(0), 0U);
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 0U);
    EXPECT_EQ(segment.Get<std::uint64_t>(16), 0U);
    EXPECT_EQ(segment.Get<std::uint64_t>(24), 0U);
    EXPECT_EQ(segment.Get<std::uint64_t>(32), 24U);
    EXPECT_EQ(segment.Get<std::uint64_t>(40), 5U);
    EXPECT_GE(segment.size(), 64U + 5 * 24);
}

TEST_F(LineFifoWriterTest, LinesStandInTheirSlotsAndTheIndexWraps) {
    auto fifo = LineFifoWriter::Create(m_name, 2, 3);
    MappedSegment segment(m_name);
    const std::array<double, 2> first{1.5, -2.5};
    const std::array<double, 2> second{3.0, 4.0};
    EXPECT_TRUE(fifo.Push(first));
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 1U);
    EXPECT_TRUE(fifo.Push(second));
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 2U);
    EXPECT_EQ(segment.Get<double>(64), 1.5);
    EXPECT_EQ(segment.Get<double>(72), -2.5);
    EXPECT_EQ(segment.Get<double>(80), 3.0);
    EXPECT_EQ(segment.Get<double>(88), 4.0);
    segment.Set<std::uint64_t>(24, 1);
    EXPECT_TRUE(fifo.Push(first));
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 0U);
    EXPECT_EQ(segment.Get<double>(96), 1.5);
    EXPECT_EQ(fifo.Waiting(), 2U);
}

TEST_F(LineFifoWriterTest, OneLineLessThanItsSlotsCanWait) {
    auto fifo = LineFifoWriter::Create(m_name, 1, 4);
    const std::array<double, 1> line{7.0};
    EXPECT_EQ(fifo.Room(), 3U);
    EXPECT_TRUE(fifo.Push(line));
    EXPECT_TRUE(fifo.Push(line));
    EXPECT_TRUE(fifo.Push(line));
    EXPECT_EQ(fifo.Room(), 0U);
    EXPECT_EQ(fifo.Waiting(), 3U);
    const MappedSegment segment(m_name);
    EXPECT_FALSE(fifo.Push(line));
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 3U);
}

TEST_F(LineFifoWriterTest, ReadIndexOutOfRangeCountsAsFull) {
    auto fifo = LineFifoWriter::Create(m_name, 1, 4);
    MappedSegment segment(m_name);
    segment.Set<std::uint64_t>(24, 4);
    const std::array<double, 1> line{7.0};
    EXPECT_FALSE(fifo.Push(line));
    segment.Set<std::uint64_t>(24, std::numeric_limits<std::uint64_t>::max());
    EXPECT_FALSE(fifo.Push(line));
    fifo.Clear();
    EXPECT_EQ(fifo.Room(), 0U);
    segment.Set<std::uint64_t>(24, 0);
    EXPECT_TRUE(fifo.Push(line));
}

TEST_F(LineFifoWriterTest, WhatOthersWriteIntoTheHeaderDoesNotLeadTheWriterAstray) {
    auto fifo = LineFifoWriter::Create(m_name, 1, 4);
    MappedSegment segment(m_name);
    segment.Set<std::uint64_t>(8, 1'000'000'000);
    segment.Set<std::uint64_t>(32, 1'000'000'000);
    segment.Set<std::uint64_t>(40, 1'000'000'000);
    const std::array<double, 1> line{7.0};
    EXPECT_TRUE(fifo.Push(line));
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 1U);
    EXPECT_EQ(segment.Get<double>(64), 7.0);
}

TEST_F(LineFifoWriterTest, ClearDropsWhatWaits) {
    auto fifo = LineFifoWriter::Create(m_name, 1, 4);
    MappedSegment segment(m_name);
    const std::array<double, 1> line{7.0};
    fifo.Push(line);
    fifo.Push(line);
    segment.Set<std::uint64_t>(24, 1);
    fifo.Clear();
    EXPECT_EQ(fifo.Waiting(), 0U);
    EXPECT_EQ(segment.Get<std::uint64_t>(8), 1U);
    EXPECT_EQ(segment.Get<std::uint64_t>(24), 1U);
}

TEST_F(LineFifoWriterTest, TellsWhetherAReaderIsAttached) {
    const auto fifo = LineFifoWriter::Create(m_name, 1, 4);
    MappedSegment segment(m_name);
    EXPECT_FALSE(fifo.ReaderAttached());
    segment.Set<std::uint64_t>(16, 0x7f0000000040);
    EXPECT_TRUE(fifo.ReaderAttached());
}

TEST_F(LineFifoWriterTest, NameGoesWithTheObject) {
    {
        auto fifo = LineFifoWriter::Create(m_name, 1, 4);
        const std::array<double, 1> line{7.0};
        fifo.Push(line);
        EXPECT_TRUE(SegmentExists(m_name));
    }
    EXPECT_FALSE(SegmentExists(m_name));
}

TEST_F(LineFifoWriterTest, WithoutAxesLinesStillHaveSlots) {
    auto fifo = LineFifoWriter::Create(m_name, 0, 4);
    ASSERT_TRUE(fifo);
    EXPECT_TRUE(fifo.Push({}));
    EXPECT_EQ(fifo.Waiting(), 1U);
}

TEST(LineFifoWriter, NoFifoHoldsNothing) {
    LineFifoWriter fifo;
    const std::array<double, 1> line{7.0};
    EXPECT_FALSE(fifo);
    EXPECT_FALSE(fifo.Push(line));
    EXPECT_EQ(fifo.Waiting(), 0U);
    EXPECT_EQ(fifo.Room(), 0U);
    EXPECT_FALSE(fifo.ReaderAttached());
    fifo.Clear();
}

TEST(LineFifoWriter, SizesThatOverflowAreNone) {
    constexpr auto kHuge = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(LineFifoWriter::SegmentSize(3, 5), 64U + 3 * 8 * 5);
    EXPECT_EQ(LineFifoWriter::SegmentSize(1, kHuge), 0U);
    EXPECT_EQ(LineFifoWriter::SegmentSize(1, kHuge / 8), 0U);
    EXPECT_EQ(LineFifoWriter::SegmentSize(std::numeric_limits<std::size_t>::max(), 2), 0U);
    EXPECT_FALSE(LineFifoWriter::Create("wavo_test_too_large", 1, kHuge / 8));
}

}  // namespace
}  // namespace wavo::master
