#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <optional>
#include <string>

#include "expect_errors.h"
#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "info_verdict.h"
#include "link/master_info.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FakeMasterChannel;
using testing::InfoVerdict;
using ::testing::IsEmpty;

class InfoBlock : public ::testing::Test {
 protected:
    InfoBlock() { testing::ResetFakeSharedMemory(); }

    static MasterInfoBlock Block() {
        MasterInfoBlock block{};
        block.master_window = FakeMasterChannel::kMaster;
        block.cycle_time = 0.004;
        block.axis_count = 3;
        block.fifo_lines = 500;
        std::memcpy(block.axis_names, "X1\0Y1\0C", 8);
        return block;
    }

    void Publish(const MasterInfoBlock& block, std::size_t size = sizeof(MasterInfoBlock)) {
        std::byte* const memory = testing::AddFakeSegment("MachineTools_InfoData", size);
        std::memcpy(memory, &block, std::min(size, sizeof block));
    }

    /// Reads the block into m_info, or into m_why what is wrong with it.
    InfoVerdict Read() {
        const Expected<std::optional<MasterInfo>> found = ReadMasterInfo(m_channel);
        m_info = found && *found ? **found : MasterInfo();
        m_why = found ? std::string() : found.Why().text;
        return testing::VerdictOf(found);
    }

    FakeMasterChannel m_channel;
    MasterInfo m_info;
    std::string m_why;
};

TEST_F(InfoBlock, IsCopiedAndUnlinkedAtOnce) {
    Publish(Block(), 4096);
    EXPECT_EQ(Read(), InfoVerdict::kPresent);
    EXPECT_EQ(m_info.master_window, FakeMasterChannel::kMaster);
    EXPECT_EQ(m_info.cycle_time, 0.004);
    EXPECT_EQ(m_info.fifo_lines, 500U);
    EXPECT_THAT(m_info.axis_names, ElementsAre("X1", "Y1", "C"));
    EXPECT_THAT(testing::FakeCalls(),
                ElementsAre("open MachineTools_InfoData", "map", "unmap", "close"));
}

TEST_F(InfoBlock, MayBeAbsent) {
    EXPECT_EQ(Read(), InfoVerdict::kAbsent);
    EXPECT_EQ(m_info.master_window, 0U);
}

TEST_F(InfoBlock, OfADeadMasterCountsAsAbsent) {
    Publish(Block());
    m_channel.alive.clear();
    EXPECT_EQ(Read(), InfoVerdict::kAbsent);
    EXPECT_EQ(m_info.master_window, 0U);
}

TEST_F(InfoBlock, WithNoAxesAndNoLinesIsLegal) {
    MasterInfoBlock block = Block();
    block.axis_count = 0;
    block.fifo_lines = 0;
    Publish(block);
    EXPECT_EQ(Read(), InfoVerdict::kPresent);
    EXPECT_THAT(m_info.axis_names, IsEmpty());
    EXPECT_EQ(m_info.fifo_lines, 0U);
}

TEST_F(InfoBlock, MayUseAllOfItsNameArea) {
    MasterInfoBlock block = Block();
    block.axis_count = sizeof block.axis_names / 2;
    for (std::size_t i = 0; i < sizeof block.axis_names; ++i) {
        block.axis_names[i] = i % 2 == 0 ? 'a' : '\0';
    }
    const Expected<MasterInfo> info = DecodeMasterInfo(block);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->axis_names.size(), 1000U);
}

TEST_F(InfoBlock, ThatIsTooSmallIsRefused) {
    Publish(Block(), sizeof(MasterInfoBlock) - 1);
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: the segment is too small"});
    EXPECT_EQ(Read(), InfoVerdict::kRefused);
    EXPECT_EQ(m_info.master_window, 0U);
}

TEST_F(InfoBlock, ThatNamesTheViewersOwnWindowIsRefused) {
    MasterInfoBlock block = Block();
    block.master_window = testing::FakeMasterChannel::kViewer;
    m_channel.alive.insert(block.master_window);
    Publish(block);
    const ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: its window is the viewer's own"});
    EXPECT_EQ(Read(), InfoVerdict::kRefused);
    EXPECT_EQ(m_info.master_window, 0U);
}

struct BadBlock {
    void (*spoil)(MasterInfoBlock&);
    const char* fault;
};

class HostileInfoBlock : public InfoBlock, public ::testing::WithParamInterface<BadBlock> {};

TEST_P(HostileInfoBlock, IsRefusedInWords) {
    MasterInfoBlock block = Block();
    GetParam().spoil(block);
    Publish(block);
    const ExpectErrorLog expected(
        {std::string("ReadMasterInfo(): MachineTools_InfoData refused: ") + GetParam().fault});
    EXPECT_EQ(Read(), InfoVerdict::kRefused);
    EXPECT_EQ(m_why, GetParam().fault);
    EXPECT_EQ(m_info.master_window, 0U);
    EXPECT_THAT(m_info.axis_names, IsEmpty());
}

constexpr char kCycle[] = "the cycle time is not a positive number";
constexpr char kNames[] = "there are more axes than the block can name";
using Limits = std::numeric_limits<double>;

INSTANTIATE_TEST_SUITE_P(
    Fields, HostileInfoBlock,
    ::testing::Values(
        BadBlock{[](MasterInfoBlock& b) { b.cycle_time = 0.0; }, kCycle},
        BadBlock{[](MasterInfoBlock& b) { b.cycle_time = -0.001; }, kCycle},
        BadBlock{[](MasterInfoBlock& b) { b.cycle_time = Limits::quiet_NaN(); }, kCycle},
        BadBlock{[](MasterInfoBlock& b) { b.cycle_time = Limits::infinity(); }, kCycle},
        BadBlock{[](MasterInfoBlock& b) { b.cycle_time = -Limits::infinity(); }, kCycle},
        BadBlock{[](MasterInfoBlock& b) { b.axis_count = 2001; }, kNames},
        BadBlock{[](MasterInfoBlock& b) { b.axis_count = ~std::uint64_t{0}; }, kNames},
        BadBlock{[](MasterInfoBlock& b) {
                     b.axis_count = 1;
                     std::memset(b.axis_names, 'x', sizeof b.axis_names);
                 },
                 kNames},
        BadBlock{[](MasterInfoBlock& b) {
                     b.axis_count = 2;
                     std::memset(b.axis_names, 'x', sizeof b.axis_names);
                     b.axis_names[2] = '\0';
                 },
                 kNames}));

}  // namespace
}  // namespace wavo
