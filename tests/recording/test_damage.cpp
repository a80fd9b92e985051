// Recordings that were cut off, changed or made up: nothing that is given is wrong, nothing that is
// whole is missing, and nothing crashes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "file_surgery.h"
#include "memory_data_files.h"
#include "recording/layout.h"
#include "recording/recording_verify.h"
#include "sample_recording.h"
#include "slowness.h"
#include "support/temporary_folder.h"

namespace wavo::recording {
namespace {

using mcap::Opcode;
using ::testing::AnyOf;
using testing::Append;
using testing::CompareLines;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MakeHead;
using testing::MakeLines;
using testing::MemoryDataFiles;
using testing::PlainLines;
using testing::RecordPlace;
using testing::RecordsOf;
using testing::RequireNoFault;
using testing::SameBits;
using testing::WithoutEnd;

constexpr char kPath[] = "a.mcap";
constexpr std::size_t kAxes = 2;
constexpr double kCycle = 0.03;

class DamagedRecording : public ::testing::Test {
 protected:
    DamagedRecording() : m_lines(kCycle) {
        auto writer = RecordingWriter::Create(kPath, MakeHead(kAxes, kCycle),
                                              GraphFile{"graph.ini", "[GENERAL]\n"});
        EXPECT_TRUE(writer);
        Add(**writer, 0, 80);  // three chunks: 33, 33 and 14 lines
        RequireNoFault((*writer)->Keep());
        (*writer)->AddEvent({kEventOverrun, 100, 20, "lost"});
        Add(**writer, 100, 20);
        RequireNoFault((*writer)->Finish());
        m_file = m_files.Content(kPath);
        m_records = RecordsOf(m_file);
    }

    void Add(RecordingWriter& writer, std::uint64_t first, std::size_t count) {
        const auto lines = MakeLines(kAxes, count, static_cast<unsigned>(first));
        Append(writer, first, lines);
        m_lines.Add(first, lines);
    }

    Expected<std::unique_ptr<RecordingReader>> Open(const std::string& content) {
        m_files.Put(kPath, content);
        return RecordingReader::Open(kPath);
    }

    /// Lines that are given but were never written so, or none; and counts those that are missing.
    std::string CheckGivenLines(RecordingReader& reader, std::size_t& missing) {
        std::vector<double> line(reader.Head().axis_names.size());
        missing = m_lines.Lines().size();
        if (line.size() != kAxes) {
            return "other axes";
        }
        for (std::uint64_t number = 0; number < 140; ++number) {
            if (!reader.ReadLine(number, line)) {
                continue;
            }
            const auto written = m_lines.Lines().find(number);
            if (written == m_lines.Lines().end() || !SameBits(line[0], written->second[0]) ||
                !SameBits(line[1], written->second[1])) {
                return "line " + std::to_string(number) + " is wrong";
            }
            --missing;
        }
        for (int order = 0; order < 3; ++order) {
            reader.Extent(1, order, 3, 117, Detail::kLines);
        }
        reader.Events();
        reader.ReadGraphFile();
        return {};
    }

    /// The number of lines in the chunks that are whole in the first `size` bytes.
    std::size_t WholeLines(std::size_t size) const {
        constexpr std::size_t kLines[] = {33, 33, 14, 20};
        std::size_t lines = 0;
        std::size_t chunk = 0;
        for (const RecordPlace& record : m_records) {
            if (record.opcode == Opcode::kChunk) {
                lines += record.end <= size ? kLines[chunk] : 0;
                ++chunk;
            }
        }
        return lines;
    }

    MemoryDataFiles m_files;
    PlainLines m_lines;
    std::string m_file;
    std::vector<RecordPlace> m_records;
};

TEST_F(DamagedRecording, CutAtEveryByteItGivesItsWholeChunks) {
    const std::size_t first_chunk = testing::FirstOf(m_file, Opcode::kChunk);
    const std::size_t data_end = testing::FirstOf(m_file, Opcode::kDataEnd);
    for (std::size_t size = 0; size <= m_file.size(); ++size) {
        SCOPED_TRACE(size);
        auto reader = Open(m_file.substr(0, size));
        if (!reader) {
            ASSERT_LT(size, first_chunk) << reader.Why().text;
            ASSERT_THAT(reader.Why().text,
                        AnyOf("\"a.mcap\" is empty",
                              "\"a.mcap\" was cut off before it says what it holds"));
            continue;
        }
        std::size_t missing = 0;
        ASSERT_EQ(CheckGivenLines(**reader, missing), "");
        ASSERT_EQ((*reader)->LineCount(), WholeLines(size));
        ASSERT_EQ((*reader)->IsComplete(), size >= data_end + mcap::kFraming + 4);
        ASSERT_EQ((*reader)->CutOffText().empty(), (*reader)->IsComplete());
    }
}

TEST_F(DamagedRecording, WhatWasCutOffSaysWhere) {
    auto reader = Open(m_file.substr(0, m_records.back().begin - 10).substr(0, 4500));
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->CutOffText(),
              "recording was cut off at 2025-08-01 14:00:01.113 UTC, behind line 32");
}

TEST_F(DamagedRecording, AWholeFileIsVerified) {
    const auto report = VerifyRecording(kPath, nullptr);
    ASSERT_TRUE(report);
    EXPECT_THAT(report->findings, IsEmpty());
    EXPECT_TRUE(report->is_complete);
    EXPECT_EQ(report->lines, 100U);
    EXPECT_EQ(report->chunks, 4U);
    m_files.Put(kPath, WithoutEnd(m_file));
    const auto cut = VerifyRecording(kPath, nullptr);
    ASSERT_TRUE(cut);
    EXPECT_THAT(cut->findings, IsEmpty());
    EXPECT_THAT(cut->cut_off, HasSubstr("recording was cut off at"));
}

/// Flips every bit of `file` in turn and hands each result to `check`; in builds that are slow one
/// bit of each byte, another one each time.
template <typename Check>
void FlipEveryBit(std::string file, Check check) {
    constexpr unsigned kStep = testing::kSlowness > 1 ? 8 : 1;
    for (std::size_t byte = 0; byte < file.size(); ++byte) {
        for (unsigned bit = byte % kStep; bit < 8; bit += kStep) {
            file[byte] = static_cast<char>(file[byte] ^ (1 << bit));
            SCOPED_TRACE("byte " + std::to_string(byte) + " bit " + std::to_string(bit));
            check(file, byte);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
            file[byte] = static_cast<char>(file[byte] ^ (1 << bit));
        }
    }
}

TEST_F(DamagedRecording, AnyBitFlippedCostsAChunkAtMostAndIsFound) {
    FlipEveryBit(m_file, [this](const std::string& file, std::size_t byte) {
        auto reader = Open(file);
        if (!reader) {
            ASSERT_LT(byte, mcap::kMagic.size()) << reader.Why().text;
            return;
        }
        std::size_t missing = 0;
        ASSERT_EQ(CheckGivenLines(**reader, missing), "");
        ASSERT_LE(missing, 33U);
        ASSERT_TRUE(missing == 0 || !(*reader)->Notices().empty());
        const auto report = VerifyRecording(kPath, nullptr);
        ASSERT_TRUE(report);
        ASSERT_FALSE(report->findings.empty() && report->cut_off.empty());
    });
}

TEST_F(DamagedRecording, WithoutItsEndItGivesNothingWrongEither) {
    FlipEveryBit(WithoutEnd(m_file), [this](const std::string& file, std::size_t) {
        auto reader = Open(file);
        std::size_t missing = 0;
        if (reader) {
            ASSERT_EQ(CheckGivenLines(**reader, missing), "");
        }
        ASSERT_TRUE(VerifyRecording(kPath, nullptr) || !reader);
    });
}

TEST_F(DamagedRecording, HostileNumbersAnywhereDoNoHarm) {
    constexpr std::uint64_t kHostile[] = {0,
                                          1,
                                          0x7FFFFFFF,
                                          0xFFFFFFFF,
                                          std::uint64_t{1} << 63U,
                                          ~std::uint64_t{0},
                                          ~std::uint64_t{0} - 8};
    for (const std::string& whole : {m_file, WithoutEnd(m_file)}) {
        for (std::size_t at = 0; at + 8 <= whole.size(); ++at) {
            for (const std::uint64_t number : kHostile) {
                std::string file = whole;
                std::memcpy(file.data() + at, &number, sizeof number);
                auto reader = Open(file);
                if (!reader) {
                    continue;
                }
                std::vector<double> line((*reader)->Head().axis_names.size());
                for (const std::uint64_t wanted : {0U, 40U, 79U, 110U}) {
                    const bool is_given = (*reader)->ReadLine(wanted, line);
                    ASSERT_TRUE(!is_given || line.size() != kAxes ||
                                SameBits(line[1], m_lines.Lines().at(wanted)[1]))
                        << at << " " << number;
                }
            }
        }
    }
}

TEST_F(DamagedRecording, AChunkThatIsDamagedIsAGapAndTold) {
    std::string file = m_file;
    const RecordPlace second = *std::find_if(m_records.begin(), m_records.end(), [&](auto& record) {
        return record.opcode == Opcode::kChunk &&
               record.begin > testing::FirstOf(m_file, Opcode::kChunk);
    });
    file[second.content + 1000] ^= 1;
    auto reader = Open(file);
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->LineCount(), 100U) << "not read yet";
    EXPECT_THAT((*reader)->Notices(), IsEmpty());
    std::vector<double> line(kAxes);
    EXPECT_TRUE((*reader)->ReadLine(10, line));
    EXPECT_FALSE((*reader)->ReadLine(33 + 20, line));
    EXPECT_THAT((*reader)->Notices(),
                ElementsAre("lines 33 to 65 (2025-08-01 14:00:01.113 UTC) are damaged and left "
                            "out"));
    EXPECT_THAT((*reader)->Gaps(), ElementsAre(LineSpan{33, 66}, LineSpan{80, 100}));
    m_lines.Remove(33, 66);
    EXPECT_EQ(CompareLines(**reader, m_lines), "");
    for (int order = 0; order < 4; ++order) {
        for (std::uint64_t from = 0; from < 110; from += 7) {
            const auto expected = m_lines.Of(0, order, from, from + 60);
            const ColumnExtent found = (*reader)->Extent(0, order, from, from + 60, Detail::kLines);
            EXPECT_EQ(found.certain, expected.level) << order << " " << from;
            EXPECT_TRUE(SameBits(found.first, expected.first));
            EXPECT_TRUE(SameBits(found.last, expected.last));
        }
    }
    EXPECT_EQ((*reader)->Notices().size(), 1U);
}

TEST_F(DamagedRecording, LevelsThatAreDamagedAreMadeAnew) {
    std::string file = WithoutEnd(m_file);
    for (const RecordPlace& record : m_records) {
        if (record.opcode == Opcode::kExtremes && record.end <= file.size()) {
            file[record.content] ^= 1;  // of the head
        }
    }
    auto without_heads = Open(file);
    ASSERT_TRUE(without_heads);
    std::string other = m_file;
    for (const RecordPlace& record : m_records) {
        if (record.opcode == Opcode::kExtremes && record.end <= file.size()) {
            other[record.end - 10] ^= 1;  // of an axis
        }
    }
    m_files.Put("b.mcap", other);
    auto without_axes = RecordingReader::Open("b.mcap");
    ASSERT_TRUE(without_axes);
    for (RecordingReader* const reader : {without_heads->get(), without_axes->get()}) {
        EXPECT_EQ(CompareLines(*reader, m_lines), "");
        for (int order = 0; order < 3; ++order) {
            for (std::uint64_t from = 0; from < 110; from += 7) {
                for (const std::size_t axis : {0U, 1U}) {
                    EXPECT_EQ(reader->Extent(axis, order, from, from + 31, Detail::kLines).certain,
                              m_lines.Of(axis, order, from, from + 31).level)
                        << order << " " << from;
                }
            }
        }
        EXPECT_EQ(reader->Events().size(), 1U);
    }
}

TEST_F(DamagedRecording, LinesThatGoBackInTimeAreLeftOut) {
    std::string file = WithoutEnd(m_file);
    int chunk = 0;
    testing::ChangeLevels(file, [&chunk](LevelsHead& head) {
        head.first_line = ++chunk == 3 ? 10 : head.first_line;
    });
    auto reader = Open(file);
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->LineCount(), 86U);
    EXPECT_THAT((*reader)->Notices(),
                ElementsAre("lines 10 to 23 (2025-08-01 14:00:00.423 UTC) go back in time and are "
                            "left out"));
    std::size_t missing = 0;
    EXPECT_EQ(CheckGivenLines(**reader, missing), "");
    EXPECT_EQ(missing, 14U);
}

TEST_F(DamagedRecording, WhatItSaysOfItselfIsFoundInItsLinesToo) {
    std::string file = m_file;
    const std::size_t metadata = testing::FirstOf(m_file, Opcode::kMetadata);
    file[metadata + 60] ^= 1;
    auto reader = Open(file);
    ASSERT_TRUE(reader);
    EXPECT_THAT((*reader)->Head().axis_names, ElementsAre("x", "y"));
    EXPECT_DOUBLE_EQ((*reader)->Head().cycle_time, kCycle);
    EXPECT_EQ((*reader)->Head().start_time, MakeHead(1).start_time);
    EXPECT_EQ(CompareLines(**reader, m_lines), "");
    EXPECT_EQ((*reader)->Notices().size(), 1U);
}

TEST(NotARecording, IsToldInWords) {
    MemoryDataFiles files;
    const auto text_of = [&files](std::string_view content) {
        files.Put(kPath, content);
        const auto reader = RecordingReader::Open(kPath);
        return reader ? std::string() : reader.Why().text;
    };
    EXPECT_EQ(text_of(""), "\"a.mcap\" is empty");
    EXPECT_EQ(text_of("X,Y\r\n1,2\r\n"), "\"a.mcap\" is not a recording");
    EXPECT_EQ(text_of("X"), "\"a.mcap\" is not a recording");
    EXPECT_EQ(text_of("\x89MCAP1\r\n"), "\"a.mcap\" is of another version of the container format");
    EXPECT_EQ(text_of("\x89MCAP0\r\n"), "\"a.mcap\" was cut off before it says what it holds");
    EXPECT_EQ(RecordingReader::Open("none.mcap").Why().code,
              static_cast<int>(RecordingFault::kCannotOpen));
    EXPECT_THAT(RecordingReader::Open("none.mcap").Why().text,
                HasSubstr("cannot open \"none.mcap\": "));
    // Another program's file: a channel of another kind.
    ByteWriter other;
    other.PutBytes(mcap::kMagic.data(), mcap::kMagic.size());
    {
        const mcap::RecordScope chunk(other, Opcode::kChunk);
        other.Put(std::uint64_t{0});
        other.Put(std::uint64_t{0});
        other.Put(std::uint64_t{0});
        other.Put(std::uint32_t{0});
        other.PutText("zstd");
        other.Put(std::uint64_t{0});
    }
    const Bytes bytes = other.View();
    EXPECT_EQ(text_of({reinterpret_cast<const char*>(bytes.data()), bytes.size()}),
              "\"a.mcap\" is compressed (zstd), which cannot be read");
}

TEST_F(DamagedRecording, MoreThanFourGigabytesAreReadAtTheirPlaces) {
    // The chunks stand behind an attachment of five gigabytes of nothing.
    constexpr std::uint64_t kHole = std::uint64_t{5} << 30U;
    const testing::TemporaryFolder folder;
    const std::string path = folder.File("large.mcap");
    std::string file = WithoutEnd(m_file);
    const std::size_t front = testing::FirstOf(file, Opcode::kChunk);
    testing::ChangeLevels(file, [](LevelsHead& head) { head.chunk_offset += kHole; });
    ByteWriter framing;
    framing.Put(static_cast<std::uint8_t>(Opcode::kAttachment));
    framing.Put(kHole - mcap::kFraming);
    {
        std::ofstream out(path, std::ios::binary);
        out << file.substr(0, front);
        out.write(reinterpret_cast<const char*>(framing.data()), mcap::kFraming);
    }
    std::error_code error;
    std::filesystem::resize_file(path, front + kHole, error);
    if (error) {
        GTEST_SKIP() << "no file of this size here: " << error.message();
    }
    std::ofstream(path, std::ios::binary | std::ios::app) << file.substr(front);
    const platform::DataFileOperationsOverride system(platform::SystemDataFiles());
    auto reader = RecordingReader::Open(path);
    ASSERT_TRUE(reader) << reader.Why().text;
    EXPECT_EQ(CompareLines(**reader, m_lines), "");
    EXPECT_EQ((*reader)->ReadGraphFile()->text, "[GENERAL]\n");
    EXPECT_THAT((*reader)->Notices(), IsEmpty());
}

TEST_F(DamagedRecording, FiveGigabytesOfNothingAreNoRecording) {
    const testing::TemporaryFolder folder;
    const std::string path = folder.File("nothing.mcap");
    std::ofstream(path, std::ios::binary) << WithoutEnd(m_file);
    std::error_code error;
    std::filesystem::resize_file(path, std::uint64_t{5} << 30U, error);
    if (error) {
        GTEST_SKIP() << "no file of this size here: " << error.message();
    }
    const platform::DataFileOperationsOverride system(platform::SystemDataFiles());
    auto reader = RecordingReader::Open(path);
    ASSERT_TRUE(reader) << reader.Why().text;
    EXPECT_EQ(CompareLines(**reader, m_lines), "");
    EXPECT_FALSE((*reader)->IsComplete());
}

}  // namespace
}  // namespace wavo::recording
