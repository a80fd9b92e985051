// Every bit of every segment turned over, and hostile values in every field: each time a verdict.
// Under the sanitizers the segments end where their memory ends, so that a stray read is found.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "hostile_values.h"
#include "info_verdict.h"
#include "link/ax_value_reader.h"
#include "link/capabilities.h"
#include "link/master_info.h"
#include "link/wire_format.h"
#include "test_fifo_segment.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::CollectReports;
using testing::ExpectAnyErrorLog;
using testing::FakeMasterChannel;
using testing::Field;
using testing::FifoSegment;
using testing::ForEachHostileField;
using testing::ForEachTurnedBit;
using testing::InfoVerdict;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::VerdictOf;

// ---- the info block ----

class HostileInfo : public ::testing::Test {
 protected:
    HostileInfo() {
        testing::ResetFakeSharedMemory();
        m_block = new (testing::AddFakeSegment("MachineTools_InfoData", sizeof(MasterInfoBlock)))
            MasterInfoBlock{};
        m_block->master_window = FakeMasterChannel::kMaster;
        m_block->cycle_time = 0.004;
        m_block->axis_count = 3;
        m_block->fifo_lines = 500;
        std::memcpy(m_block->axis_names, "X1\0Y1\0C", 8);
    }

    /// What the block deserves.
    [[nodiscard]] InfoVerdict Deserved() const {
        if (m_block->master_window != FakeMasterChannel::kMaster) {
            return InfoVerdict::kAbsent;
        }
        const std::string area(m_block->axis_names, sizeof m_block->axis_names);
        const auto ends = static_cast<std::uint64_t>(std::count(area.begin(), area.end(), '\0'));
        const bool sound = std::isfinite(m_block->cycle_time) && m_block->cycle_time > 0.0 &&
                           m_block->axis_count <= ends;
        return sound ? InfoVerdict::kPresent : InfoVerdict::kRefused;
    }

    void Check() {
        const ExpectAnyErrorLog announced;
        const CollectReports entries(Service::kErrorLog);
        const Expected<std::optional<MasterInfo>> found = ReadMasterInfo(m_channel);
        const InfoVerdict status = VerdictOf(found);
        EXPECT_EQ(status, Deserved());
        EXPECT_THAT(entries.Texts(), SizeIs(status == InfoVerdict::kRefused ? 1 : 0));
        ++m_verdicts[static_cast<std::size_t>(status)];
        if (status == InfoVerdict::kPresent) {
            const MasterInfo& info = **found;
            EXPECT_EQ(info.axis_names.size(), m_block->axis_count);
            EXPECT_EQ(info.fifo_lines, m_block->fifo_lines);
            EXPECT_EQ(info.cycle_time, m_block->cycle_time);
        }
    }

    FakeMasterChannel m_channel;
    MasterInfoBlock* m_block;
    int m_verdicts[3] = {};
};

TEST_F(HostileInfo, GetsAVerdictWhateverBitIsTurned) {
    const int checks = ForEachTurnedBit(m_block, sizeof *m_block, [this](std::size_t) { Check(); });
    EXPECT_GE(checks, 8 * 2040);
    EXPECT_EQ(m_verdicts[0] + m_verdicts[1] + m_verdicts[2], checks);
    EXPECT_GE(m_verdicts[static_cast<std::size_t>(InfoVerdict::kAbsent)], 64);
    EXPECT_GT(m_verdicts[static_cast<std::size_t>(InfoVerdict::kRefused)], 0);
}

TEST_F(HostileInfo, GetsAVerdictWhateverAFieldHolds) {
    ForEachHostileField(m_block,
                        {{"master_window", 0, 8},
                         {"cycle_time", 8, 8},
                         {"master_word", 16, 8},
                         {"axis_count", 24, 8},
                         {"fifo_lines", 32, 8},
                         {"first name", 40, 8},
                         {"last bytes", 2032, 8}},
                        [this](const std::string&) { Check(); });
    EXPECT_GT(m_verdicts[static_cast<std::size_t>(InfoVerdict::kRefused)], 10);
    EXPECT_GT(m_verdicts[static_cast<std::size_t>(InfoVerdict::kPresent)], 30);
}

TEST_F(HostileInfo, ThatShrinksWhileItIsCopiedIsRefused) {
    testing::SetFakeState("MachineTools_InfoData", platform::SegmentState::kResized);
    const testing::ExpectErrorLog expected(
        {"ReadMasterInfo(): MachineTools_InfoData refused: the segment has changed its size"});
    EXPECT_EQ(VerdictOf(ReadMasterInfo(m_channel)), InfoVerdict::kRefused);
}

// ---- the value FIFO ----

constexpr std::uint64_t kFifoLines = 8;
constexpr std::uint64_t kLineDoubles = 2;
constexpr std::size_t kLineBytes = kLineDoubles * sizeof(double);
constexpr std::uint64_t kWritten = 3;  // slots

const std::vector<Field>& FifoFields() {
    static const std::vector<Field> fields = {
        {"master_word", 0, 8}, {"write_index", 8, 8}, {"reader_mark", 16, 8}, {"read_index", 24, 8},
        {"line_size", 32, 8},  {"line_count", 40, 8}, {"master_words", 48, 8}};
    return fields;
}

class HostileFifo : public ::testing::Test {
 protected:
    HostileFifo()
        : m_segment((testing::ResetFakeSharedMemory(), "MValues_4711"), kFifoLines, kLineDoubles) {
        for (std::uint64_t slot = 0; slot < kWritten; ++slot) {
            m_segment.Write(static_cast<double>(slot + 1));
        }
        m_good = m_segment.header();
    }

    /// Whether a reader of lines of kLineBytes bytes may follow this header.
    static bool IsPlausible(const LineFifoHeader& header) {
        return header.reader_mark == 0 && header.line_count >= 2 && header.line_size != 0 &&
               header.line_size <= kFifoLines * kLineBytes / header.line_count &&
               header.write_index < header.line_count && header.read_index < header.line_count;
    }

    /// Reads all that waits. Whatever the header says, no line comes that the ring cannot hold, and
    /// each one is what stands in its slot, from the read index on.
    void ReadAll(AxValueReader& reader) {
        const LineFifoHeader header = m_segment.header();
        const std::uint64_t waiting = reader.LinesWaiting();
        ASSERT_LT(waiting, std::max<std::uint64_t>(header.line_count, 1) + kFifoLines);
        const std::vector<double> untouched(kLineDoubles * kFifoLines, -1.0);
        std::vector<double> buffer = untouched;
        if (!reader.Read(buffer.data(), kLineBytes, waiting, buffer.size() * sizeof(double))) {
            ++m_failed;
            return;
        }
        ++m_read;
        EXPECT_FALSE(reader.IsDamaged());
        ASSERT_LE(waiting, kFifoLines);
        for (std::uint64_t i = 0; i < waiting; ++i) {
            const std::uint64_t slot = (header.read_index + i) % header.line_count;
            EXPECT_EQ(
                std::memcmp(&buffer[i * kLineDoubles], Slot(slot, header.line_size), kLineBytes), 0)
                << "line " << i << " of slot " << slot;
            if (header.line_size == kLineBytes) {  // a line that was written, or an empty slot
                const double first = slot < kWritten ? static_cast<double>(slot + 1) : 0.0;
                EXPECT_EQ(buffer[i * kLineDoubles], first);
                EXPECT_EQ(buffer[i * kLineDoubles + 1], slot < kWritten ? first + 1.0 : 0.0);
                m_written_lines += slot < kWritten ? 1 : 0;
                m_empty_lines += slot < kWritten ? 0 : 1;
            }
        }
        EXPECT_EQ(std::memcmp(&buffer[waiting * kLineDoubles], untouched.data(),
                              (kFifoLines - waiting) * kLineBytes),
                  0)
            << "beside the lines";
    }

    /// What stands in a slot of slots of `size` bytes.
    const std::byte* Slot(std::uint64_t slot, std::uint64_t size) {
        return reinterpret_cast<const std::byte*>(&m_segment.header() + 1) + slot * size;
    }

    FifoSegment m_segment;
    LineFifoHeader m_good{};
    int m_read = 0;
    int m_failed = 0;
    int m_written_lines = 0;  ///< read, and were written before
    int m_empty_lines = 0;    ///< read from slots that nobody wrote
};

TEST_F(HostileFifo, IsOpenedOnlyWhenItsHeaderIsPlausible) {
    int opened = 0;
    int refused = 0;
    const auto check = [&] {
        const ExpectAnyErrorLog announced;
        const LineFifoHeader before = m_segment.header();
        AxValueReader reader;
        const bool is_open = reader.Open("MValues_4711");
        EXPECT_EQ(is_open, IsPlausible(before));
        ++(is_open ? opened : refused);
        if (is_open) {
            ReadAll(reader);
        }
        reader.Close();
        m_segment.header() = before;
    };
    const int checks = ForEachTurnedBit(&m_segment.header(), sizeof(LineFifoHeader),
                                        [&](std::size_t) { check(); });
    EXPECT_GE(checks, 512);
    EXPECT_EQ(opened + refused, checks);
    EXPECT_GT(opened, 3 * 64);
    EXPECT_GT(m_written_lines, 3 * 64);
    EXPECT_GT(m_empty_lines, 0);
    EXPECT_GT(refused, 4 * 48);
    ForEachHostileField(&m_segment.header(), FifoFields(), [&](const std::string&) { check(); });
}

TEST_F(HostileFifo, ThatChangesUnderItsReaderIsReadOnOrDamagedAndNeverBelieved) {
    const auto check = [&] {
        const ExpectAnyErrorLog announced;
        const LineFifoHeader changed = m_segment.header();
        m_segment.header() = m_good;
        AxValueReader reader;
        ASSERT_TRUE(reader.Open("MValues_4711"));
        LineFifoHeader now = changed;
        now.reader_mark = m_segment.header().reader_mark ^ changed.reader_mark;
        m_segment.header() = now;
        ReadAll(reader);
        const bool sound = changed.reader_mark == 0 && now.line_size == m_good.line_size &&
                           now.line_count == m_good.line_count && now.write_index < kFifoLines &&
                           now.read_index == m_good.read_index;
        EXPECT_EQ(reader.IsDamaged(), !sound);
        if (!sound) {  // it stays so, even when the header looks right again
            m_segment.header() = m_good;
            std::vector<double> line(kLineDoubles);
            EXPECT_FALSE(reader.Read(line.data(), kLineBytes, 1, kLineBytes));
        }
        reader.Close();
        m_segment.header() = changed;
    };
    const int checks = ForEachTurnedBit(&m_segment.header(), sizeof(LineFifoHeader),
                                        [&](std::size_t) { check(); });
    EXPECT_GE(checks, 512);
    EXPECT_EQ(m_read + m_failed, checks);
    EXPECT_GT(m_failed, 3 * 64);
    EXPECT_GT(m_written_lines, 3 * 64);
    EXPECT_GT(m_empty_lines, 0);
    ForEachHostileField(&m_segment.header(), FifoFields(), [&](const std::string&) { check(); });
}

TEST_F(HostileFifo, ThatIsResizedOrReplacedIsDamagedUntilItIsOpenedAnew) {
    struct Row {
        platform::SegmentState state;
        int questions;  ///< that are answered with "whole" before
        const char* text;
    };
    for (const Row& row :
         {Row{platform::SegmentState::kResized, 0,
              "AxValueReader::Read(): value fifo MValues_4711 has changed its size"},
          Row{platform::SegmentState::kResized, 1,
              "AxValueReader::Read(): value fifo MValues_4711 has changed its size"},
          Row{platform::SegmentState::kRemoved, 0,
              "AxValueReader::Read(): value fifo MValues_4711 was removed or replaced"}}) {
        FifoSegment segment("MValues_4711", kFifoLines, kLineDoubles);
        segment.Write(1.0);
        AxValueReader reader;
        ASSERT_TRUE(reader.Open("MValues_4711"));
        testing::SetFakeState("MValues_4711", row.state, row.questions);
        std::vector<double> line(kLineDoubles, -1.0);
        {
            const testing::ExpectErrorLog expected({row.text});
            EXPECT_FALSE(reader.Read(line.data(), kLineBytes, 1, kLineBytes));
        }
        EXPECT_TRUE(reader.IsDamaged());
        EXPECT_EQ(reader.LinesThrownAway(), static_cast<std::uint64_t>(row.questions));
        EXPECT_FALSE(reader.Read(line.data(), kLineBytes, 1, kLineBytes));
        FifoSegment fresh("MValues_4711", kFifoLines, kLineDoubles);
        fresh.Write(5.0);
        ASSERT_TRUE(reader.Open("MValues_4711"));
        EXPECT_FALSE(reader.IsDamaged());
        EXPECT_TRUE(reader.Read(line.data(), kLineBytes, 1, kLineBytes));
        EXPECT_EQ(line[0], 5.0);
    }
}

TEST_F(HostileFifo, WhoseNameGoesWhileItIsReadHasGoodLinesAllTheSame) {
    AxValueReader reader;
    ASSERT_TRUE(reader.Open("MValues_4711"));
    testing::SetFakeState("MValues_4711", platform::SegmentState::kRemoved, 1);
    std::vector<double> lines(3 * kLineDoubles);
    EXPECT_TRUE(reader.Read(lines.data(), kLineBytes, 3, 3 * kLineBytes));
    EXPECT_EQ(lines[4], 3.0);
}

// ---- the capability module ----

constexpr std::int32_t kRecords = 3;

class HostileModuleBits : public ::testing::Test {
 protected:
    HostileModuleBits() {
        testing::ResetFakeSharedMemory();
        m_memory = testing::AddFakeSegment("DataModCap4711", CapabilityRecordOffset(kRecords));
        std::memcpy(m_memory, &kRecords, sizeof kRecords);
        for (std::size_t k = 0; k < kRecords; ++k) {
            CapabilityRecord record{};
            std::memset(record.axis_name, 0, sizeof record.axis_name);
            record.axis_name[0] = static_cast<char>('X' + k);
            record.upper_limit = 100.0 + static_cast<double>(k);
            record.lower_limit = -record.upper_limit;
            std::memcpy(m_memory + CapabilityRecordOffset(k), &record, sizeof record);
        }
        m_capabilities.OnCapabilitiesChanged(FakeMasterChannel::kMaster,
                                             FakeMasterChannel::kViewer);
    }

    /// Looks up all three axes; the records that nobody touched must be found as they are, unless
    /// the count is wrong.
    void Check(std::size_t touched_byte) {
        const ExpectAnyErrorLog announced;
        std::int32_t count = 0;
        std::memcpy(&count, m_memory, sizeof count);
        const bool counted = count >= 0 && count <= kRecords;
        for (std::size_t k = 0; k < kRecords; ++k) {
            const auto found = m_capabilities.FindAxis(std::string(1, static_cast<char>('X' + k)));
            const bool touched = touched_byte >= CapabilityRecordOffset(k) &&
                                 touched_byte < CapabilityRecordOffset(k + 1);
            if (touched) {
                continue;  // any verdict will do, but not a crash
            }
            const bool there = counted && k < static_cast<std::size_t>(count);
            ASSERT_EQ(found.has_value(), there) << k;
            // A record that took another one's name stands in its place.
            if (there && touched_byte < sizeof count) {
                EXPECT_EQ(found->upper_limit, 100.0 + static_cast<double>(k));
            }
        }
    }

    std::byte* m_memory;
    FakeMasterChannel m_channel;
    SlaveGlobalCapabilities m_capabilities{m_channel};
};

TEST_F(HostileModuleBits, GetsAVerdictWhateverBitIsTurned) {
    ForEachTurnedBit(m_memory, CapabilityRecordOffset(kRecords), [this](std::size_t bit) {
        Check(bit / 8);
        m_channel.said.clear();
    });
}

TEST_F(HostileModuleBits, GetsAVerdictWhateverAFieldHolds) {
    std::vector<Field> fields = {{"count", 0, 4}};
    for (std::size_t k = 0; k < kRecords; ++k) {
        for (const std::size_t offset : {0, 248, 256, 264, 272, 280, 288}) {
            fields.push_back({"record", CapabilityRecordOffset(k) + offset, 8});
        }
    }
    for (const Field& field : fields) {
        SCOPED_TRACE(field.offset);
        ForEachHostileField(m_memory, {field}, [&](const std::string&) { Check(field.offset); });
    }
}

TEST_F(HostileModuleBits, ThatShrinksWhileItIsReadGivesNothing) {
    testing::SetFakeState("DataModCap4711", platform::SegmentState::kResized);
    const testing::ExpectErrorLog expected(
        {"SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): data module [DataModCap4711] "
         "has changed its size"});
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
}

}  // namespace
}  // namespace wavo
