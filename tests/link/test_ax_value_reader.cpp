#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "link/ax_value_reader.h"
#include "support/diagnostics.h"
#include "test_fifo_segment.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FifoSegment;
using ::testing::IsEmpty;

constexpr std::size_t kLineLength = 2 * sizeof(double);

class Reader : public ::testing::Test {
 protected:
    Reader() : m_segment((testing::ResetFakeSharedMemory(), "MValues_4711"), 8, 2) {}
    ~Reader() override { _MTrace_SetLevel("default", 1); }

    FifoSegment m_segment;
    AxValueReader m_reader;
    std::vector<double> m_buffer = std::vector<double>(16, -1.0);
    CollectReports m_faults{Service::kErrorTrace};
};

TEST_F(Reader, ReadsAllWaitingLinesOneAfterAnother) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    m_segment.Write(5.0);
    EXPECT_EQ(m_reader.LinesWaiting(), 2U);
    EXPECT_TRUE(m_reader.Read(m_buffer.data(), kLineLength, 2, 128));
    EXPECT_THAT(std::vector(m_buffer.begin(), m_buffer.begin() + 5),
                ElementsAre(1.0, 2.0, 5.0, 6.0, -1.0));
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
}

TEST_F(Reader, TakesOnlyItsOwnLengthOfALongerSlot) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    m_segment.Write(5.0);
    EXPECT_TRUE(m_reader.Read(m_buffer.data(), sizeof(double), 2, 128));
    EXPECT_THAT(std::vector(m_buffer.begin(), m_buffer.begin() + 3), ElementsAre(1.0, 5.0, -1.0));
}

TEST_F(Reader, TracesTheLinesReadAtLevelFour) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    const CollectReports traces(Service::kTrace);
    _MTrace_SetLevel("default", 4);
    EXPECT_TRUE(m_reader.Read(m_buffer.data(), kLineLength, 1, 128));
    EXPECT_THAT(traces.Texts(),
                ElementsAre("AxValueReader::ReadFromFifo(): read 1 lines from main prg."));
}

TEST_F(Reader, AnEmptyFifoEndsTheReadWhichStillSucceeds) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    const ExpectErrorLog expected({"AxValueReader::ReadFromFifo(): value fifo is empty"});
    EXPECT_TRUE(m_reader.Read(m_buffer.data(), kLineLength, 3, 128));
    EXPECT_EQ(m_reader.LinesCopied(), 1U);
    EXPECT_THAT(std::vector(m_buffer.begin(), m_buffer.begin() + 3), ElementsAre(1.0, 2.0, -1.0));
}

TEST_F(Reader, ARequestLargerThanTheBufferDrainsTheFifoAndFails) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    m_segment.Write(2.0);
    m_segment.Write(3.0);
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), kLineLength, 3, 3 * kLineLength - 1));
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
    EXPECT_EQ(m_buffer.front(), -1.0);
}

TEST_F(Reader, AnyNumberOfLinesIsDrainedThroughLittleMemory) {
    constexpr std::uint64_t kLines = 200'000;  // 3 MB, more than one piece
    FifoSegment large("MValues_4712", kLines + 1, 2);
    ASSERT_TRUE(m_reader.Open("MValues_4712"));
    large.header().write_index = kLines;
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), kLineLength, kLines, 128));
    EXPECT_EQ(m_reader.LinesThrownAway(), kLines);
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
    EXPECT_FALSE(m_reader.IsDamaged());
}

TEST_F(Reader, AnAbsurdLineCountIsNoReasonToAllocateIt) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    const ExpectErrorLog expected({"AxValueReader::ReadFromFifo(): value fifo is empty"});
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), kLineLength, ~std::uint64_t{0}, 128));
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
}

TEST_F(Reader, ReadingAClosedReaderFails) {
    const ExpectErrorLog expected({"Write(): interface is not open"});
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), kLineLength, 1, 128));
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
}

TEST_F(Reader, SlotsThatAreTooSmallForTheAxesAreRefused) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.Write(1.0);
    const ExpectErrorLog expected(
        {"AxValueReader::Read(): lines of 24 bytes do not fit into slots of 16 bytes"});
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), 24, 1, 128));
    EXPECT_TRUE(m_reader.IsDamaged()) << "no later batch would fit either";
}

TEST_F(Reader, ADamagedHeaderIsRefused) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_segment.header().write_index = 99;
    const ExpectErrorLog expected(
        {"AxValueReader::Read(): the header of value fifo MValues_4711 is damaged"});
    EXPECT_EQ(m_reader.LinesWaiting(), 0U);
    EXPECT_FALSE(m_reader.Read(m_buffer.data(), kLineLength, 1, 128));
}

TEST_F(Reader, ANullNameIsRefused) {
    EXPECT_FALSE(m_reader.Open(nullptr));
    EXPECT_THAT(m_faults.Texts(), ElementsAre("Open(): Null pointer for name"));
}

TEST_F(Reader, ASegmentThatIsNotThereIsNamedUpToFortyCharacters) {
    const std::string name(50, 'x');
    EXPECT_FALSE(m_reader.Open(name.c_str()));
    EXPECT_THAT(m_faults.Texts(),
                ElementsAre("MSharedMem_Link() failed for '" + name + "' (2)",
                            "Open(): MSharedMem_Link(" + std::string(40, 'x') + ") failed"));
    EXPECT_FALSE(m_reader.IsOpen());
}

TEST_F(Reader, AFifoThatAnotherReaderHoldsStaysUntouchedByTheRefusedOne) {
    m_segment.header().reader_mark = 0x1234;
    EXPECT_FALSE(m_reader.Open("MValues_4711"));
    EXPECT_THAT(m_faults.Texts(),
                ElementsAre("MMemLineFifo_Link(): Fifo not initialized or already has an exlusive "
                            "reader",
                            "Open(): MMemLineFifo_Link() failed"));
    EXPECT_THAT(testing::FakeCalls(), ElementsAre("open MValues_4711", "map"));
    m_reader.Close();
    EXPECT_EQ(m_segment.header().reader_mark, 0x1234U);
    EXPECT_THAT(testing::FakeCalls(), ElementsAre("open MValues_4711", "map", "unmap", "close"));
}

TEST_F(Reader, AfterAFailedOpenTheNextOneGetsTheSegmentOfTheRestartedMaster) {
    m_segment.header().reader_mark = 0x1234;
    EXPECT_FALSE(m_reader.Open("MValues_4711"));
    FifoSegment fresh("MValues_4711", 8, 2);
    EXPECT_TRUE(m_reader.Open("MValues_4711"));
    fresh.Write(7.0);
    EXPECT_EQ(m_reader.LinesWaiting(), 1U);
    EXPECT_EQ(m_segment.header().reader_mark, 0x1234U);
}

TEST_F(Reader, OpeningAnOpenReaderGivesTheFirstFifoBack) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    EXPECT_NE(m_segment.header().reader_mark, 0U);
    FifoSegment other("MValues_2", 8, 2);
    ASSERT_TRUE(m_reader.Open("MValues_2"));
    EXPECT_EQ(m_segment.header().reader_mark, 0U);
    EXPECT_NE(other.header().reader_mark, 0U);
}

TEST_F(Reader, ClosingAReaderThatNeverOpenedDoesNothing) {
    m_reader.Close();
    EXPECT_THAT(testing::FakeCalls(), IsEmpty());
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(Reader, CloseClearsTheMarkAndUnmaps) {
    ASSERT_TRUE(m_reader.Open("MValues_4711"));
    m_reader.Close();
    EXPECT_EQ(m_segment.header().reader_mark, 0U);
    EXPECT_FALSE(m_reader.IsOpen());
    EXPECT_THAT(testing::FakeCalls(), ElementsAre("open MValues_4711", "map", "unmap", "close"));
}

TEST_F(Reader, DestructionClosesInTheSameWay) {
    {
        AxValueReader reader;
        ASSERT_TRUE(reader.Open("MValues_4711"));
        EXPECT_NE(m_segment.header().reader_mark, 0U);
    }
    EXPECT_EQ(m_segment.header().reader_mark, 0U);
}

}  // namespace
}  // namespace wavo
