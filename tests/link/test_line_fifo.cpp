#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

#include "expect_errors.h"
#include "link/line_fifo.h"
#include "test_fifo_segment.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FifoSegment;
using ::testing::IsEmpty;

constexpr std::uint64_t kLines = 4;
constexpr std::uint64_t kDoubles = 2;
constexpr std::uint64_t kSize = sizeof(LineFifoHeader) + kLines * kDoubles * sizeof(double);

class LineFifoTest : public ::testing::Test {
 protected:
    std::array<double, kDoubles> ReadLine() {
        std::array<double, kDoubles> line{};
        EXPECT_EQ(MMemLineFifo_Read(m_fifo, line.data(), sizeof line, 1), 1U);
        return line;
    }
    bool Link() { return MMemLineFifo_Link(&m_segment.header(), kSize, m_fifo); }

    FifoSegment m_segment{"MValues_1", kLines, kDoubles};
    LineFifo m_fifo;
    CollectReports m_faults{Service::kErrorTrace};
};

TEST_F(LineFifoTest, LinkingLeavesTheAddressOfTheDataAsMark) {
    ASSERT_TRUE(Link());
    EXPECT_EQ(m_segment.header().reader_mark,
              reinterpret_cast<std::uintptr_t>(&m_segment.header()) + 64);
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(LineFifoTest, ASecondReaderIsRefusedUntilTheFirstHasGivenTheFifoBack) {
    ASSERT_TRUE(Link());
    LineFifo second;
    EXPECT_FALSE(MMemLineFifo_Link(&m_segment.header(), kSize, second));
    EXPECT_THAT(m_faults.Texts(),
                ElementsAre("MMemLineFifo_Link(): Fifo not initialized or already has an exlusive "
                            "reader"));
    MMemLineFifo_Release(m_fifo);
    EXPECT_EQ(m_segment.header().reader_mark, 0U);
    EXPECT_TRUE(MMemLineFifo_Link(&m_segment.header(), kSize, second));
}

TEST_F(LineFifoTest, ReleaseLeavesTheMarkOfAnotherReaderAlone) {
    ASSERT_TRUE(Link());
    m_segment.header().reader_mark = 0x1234;
    MMemLineFifo_Release(m_fifo);
    EXPECT_EQ(m_segment.header().reader_mark, 0x1234U);
}

TEST_F(LineFifoTest, ALineIsTakenInOrderAndItsSlotGivenBack) {
    ASSERT_TRUE(Link());
    m_segment.Write(10.0);
    m_segment.Write(20.0);
    EXPECT_EQ(MMemLineFifo_Waiting(m_fifo), 2U);
    EXPECT_THAT(ReadLine(), ElementsAre(10.0, 11.0));
    EXPECT_EQ(m_segment.header().read_index, 1U);
    EXPECT_THAT(ReadLine(), ElementsAre(20.0, 21.0));
    EXPECT_EQ(MMemLineFifo_Waiting(m_fifo), 0U);
    std::array<double, kDoubles> line{};
    EXPECT_EQ(MMemLineFifo_Read(m_fifo, line.data(), sizeof line, 1), 0U);
}

TEST_F(LineFifoTest, LinesAreTakenOneAfterAnotherUntilNoneWaits) {
    ASSERT_TRUE(Link());
    m_segment.Write(10.0);
    m_segment.Write(20.0);
    std::array<double, 3 * kDoubles> lines{};
    EXPECT_EQ(MMemLineFifo_Read(m_fifo, lines.data(), kDoubles * sizeof(double), 3), 2U);
    EXPECT_THAT(lines, ElementsAre(10.0, 11.0, 20.0, 21.0, 0.0, 0.0));
}

TEST(LineFifoCopy, EveryLengthIsCopiedWholeAndNoByteMore) {
    constexpr std::size_t kLongest = 300;
    for (std::size_t length = 1; length <= kLongest; ++length) {
        std::vector<std::byte> memory(sizeof(LineFifoHeader) + 2 * kLongest);
        auto* const header = new (memory.data()) LineFifoHeader{};
        header->line_count = 2;
        header->line_size = kLongest;
        for (std::size_t i = 0; i < kLongest; ++i) {
            memory[sizeof(LineFifoHeader) + i] = static_cast<std::byte>(i % 251 + 1);
        }
        LineFifo fifo;
        ASSERT_TRUE(MMemLineFifo_Link(memory.data(), memory.size(), fifo));
        header->write_index = 1;
        std::vector<std::byte> line(kLongest + 1);
        ASSERT_EQ(MMemLineFifo_Read(fifo, line.data(), length, 1), 1U);
        ASSERT_EQ(std::memcmp(line.data(), memory.data() + sizeof(LineFifoHeader), length), 0);
        ASSERT_EQ(line[length], std::byte{0}) << length;
    }
}

TEST_F(LineFifoTest, TheReadIndexWrapsAfterTheLastSlot) {
    m_segment.header().read_index = m_segment.header().write_index = kLines - 1;
    ASSERT_TRUE(Link());
    m_segment.Write(1.0);
    EXPECT_THAT(ReadLine(), ElementsAre(1.0, 2.0));
    EXPECT_EQ(m_segment.header().read_index, 0U);
}

TEST_F(LineFifoTest, AWriteIndexBelowTheReadIndexCountsTheWrappedLines) {
    m_segment.header().read_index = m_segment.header().write_index = 3;
    ASSERT_TRUE(Link());
    m_segment.Write(1.0);
    m_segment.Write(2.0);
    m_segment.Write(3.0);
    EXPECT_EQ(m_segment.header().write_index, 2U);
    EXPECT_EQ(MMemLineFifo_Waiting(m_fifo), 3U);
    EXPECT_THAT(ReadLine(), ElementsAre(1.0, 2.0));
    EXPECT_THAT(ReadLine(), ElementsAre(2.0, 3.0));
    EXPECT_THAT(ReadLine(), ElementsAre(3.0, 4.0));
}

TEST_F(LineFifoTest, WithoutTheMarkTheFifoCountsAsEmpty) {
    ASSERT_TRUE(Link());
    m_segment.Write(1.0);
    m_segment.header().reader_mark = 0;
    std::array<double, kDoubles> line{};
    EXPECT_EQ(MMemLineFifo_Read(m_fifo, line.data(), sizeof line, 1), 0U);
}

TEST_F(LineFifoTest, AMisalignedSegmentIsRefusedAndItsMarkTakenBack) {
    auto* const odd = testing::AddFakeSegment("Odd", kSize, 4);
    LineFifoHeader header{};
    header.line_count = kLines;
    header.line_size = kDoubles * sizeof(double);
    std::memcpy(odd, &header, sizeof header);
    EXPECT_FALSE(MMemLineFifo_Link(odd, kSize, m_fifo));
    char text[120];
    std::snprintf(text, sizeof text,
                  "MMemLineFifo_Link(): Start address of data (%p) is not aligned to 8",
                  static_cast<void*>(odd + 64));
    EXPECT_THAT(m_faults.Texts(), ElementsAre(text));
    std::memcpy(&header, odd, sizeof header);
    EXPECT_EQ(header.reader_mark, 0U);
}

struct BadHeader {
    const char* what;
    void (*spoil)(LineFifoHeader&);
    const char* text;
};

class HostileHeader : public LineFifoTest, public ::testing::WithParamInterface<BadHeader> {};

TEST_P(HostileHeader, IsRefusedInWordsAndNotMarked) {
    GetParam().spoil(m_segment.header());
    EXPECT_FALSE(Link());
    EXPECT_THAT(m_faults.Texts(), ElementsAre(GetParam().text));
    EXPECT_EQ(m_segment.header().reader_mark, 0U);
}

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

INSTANTIATE_TEST_SUITE_P(
    Fields, HostileHeader,
    ::testing::Values(
        BadHeader{"no lines", [](LineFifoHeader& h) { h.line_count = 0; },
                  "MMemLineFifo_Link(): Number of lines (0) is below 2"},
        BadHeader{"one line", [](LineFifoHeader& h) { h.line_count = 1; },
                  "MMemLineFifo_Link(): Number of lines (1) is below 2"},
        BadHeader{"one line too many", [](LineFifoHeader& h) { h.line_count = kLines + 1; },
                  "MMemLineFifo_Link(): 5 lines of 16 bytes do not fit into a segment of 128 "
                  "bytes"},
        BadHeader{"product overflows",
                  [](LineFifoHeader& h) { h.line_count = h.line_size = 1ULL << 32; },
                  "MMemLineFifo_Link(): 4294967296 lines of 4294967296 bytes do not fit into a "
                  "segment of 128 bytes"},
        BadHeader{"largest line size", [](LineFifoHeader& h) { h.line_size = kMax; },
                  "MMemLineFifo_Link(): 4 lines of 18446744073709551615 bytes do not fit into a "
                  "segment of 128 bytes"},
        BadHeader{"line size 0", [](LineFifoHeader& h) { h.line_size = 0; },
                  "MMemLineFifo_Link(): 4 lines of 0 bytes do not fit into a segment of 128 bytes"},
        BadHeader{"write index", [](LineFifoHeader& h) { h.write_index = kLines; },
                  "MMemLineFifo_Link(): Write index 4 or read index 0 is not below the number of "
                  "lines (4)"},
        BadHeader{"read index", [](LineFifoHeader& h) { h.read_index = kMax; },
                  "MMemLineFifo_Link(): Write index 0 or read index 18446744073709551615 is not "
                  "below the number of lines (4)"}));

TEST_F(LineFifoTest, ASegmentWithoutRoomForAHeaderIsRefusedUnread) {
    EXPECT_FALSE(MMemLineFifo_Link(&m_segment.header(), 63, m_fifo));
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MMemLineFifo_Link(): Segment of 63 bytes is too "
                                              "small"));
}

TEST_F(LineFifoTest, IndicesOutOfRangeAfterLinkingReadNothing) {
    ASSERT_TRUE(Link());
    EXPECT_TRUE(MMemLineFifo_IsIntact(m_fifo));
    m_segment.header().write_index = kMax;
    EXPECT_FALSE(MMemLineFifo_IsIntact(m_fifo));
    EXPECT_EQ(MMemLineFifo_Waiting(m_fifo), 0U);
    m_segment.header().write_index = 1;
    m_segment.header().read_index = kLines;
    EXPECT_FALSE(MMemLineFifo_IsIntact(m_fifo));
    EXPECT_EQ(MMemLineFifo_Waiting(m_fifo), 0U);
    std::array<double, kDoubles> line{};
    EXPECT_EQ(MMemLineFifo_Read(m_fifo, line.data(), sizeof line, 1), 0U);
}

TEST_F(LineFifoTest, AChangedGeometryIsNoticed) {
    ASSERT_TRUE(Link());
    m_segment.header().line_size = 8;
    EXPECT_FALSE(MMemLineFifo_IsIntact(m_fifo));
    m_segment.header().line_size = kDoubles * sizeof(double);
    EXPECT_TRUE(MMemLineFifo_IsIntact(m_fifo));
    m_segment.header().line_count = 3;
    EXPECT_FALSE(MMemLineFifo_IsIntact(m_fifo));
}

}  // namespace
}  // namespace wavo
