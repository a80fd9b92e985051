// The parts of recordings: texts, times, names, levels.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "file_surgery.h"
#include "memory_data_files.h"
#include "others_file.h"
#include "platform/folders.h"
#include "recording/checksum.h"
#include "recording/json_text.h"
#include "recording/layout.h"
#include "recording/recording_names.h"
#include "recording/utc_text.h"
#include "sample_recording.h"
#include "temporary_folder.h"

namespace wavo::recording {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Checksum, IsTheUsualOneAndCombines) {
    EXPECT_EQ(Crc32(BytesOf("123456789")), 0xCBF43926U);
    EXPECT_EQ(Crc32(BytesOf("56789"), Crc32(BytesOf("1234"))), 0xCBF43926U);
    EXPECT_EQ(CombineCrc32(Crc32(BytesOf("1234")), Crc32(BytesOf("56789")), 5), 0xCBF43926U);
    EXPECT_EQ(CombineCrc32(Crc32(BytesOf("123456789")), Crc32(Bytes()), 0), 0xCBF43926U);
    // Longer than the offsets of some systems: in two steps as in one.
    const std::uint64_t far = std::uint64_t{5} << 30U;
    const std::uint32_t first = CombineCrc32(0x12345678, 0, far / 2);
    EXPECT_EQ(CombineCrc32(0x12345678, 0, far), CombineCrc32(first, 0, far / 2));
}

TEST(Names, NeighboursAreFoundByTheirNumbers) {
    const testing::TemporaryFolder folder;
    for (const char* name : {"night.mcap", "night-2.mcap", "night-5.mcap", "night-05.mcap",
                             "nightly.mcap", "night-6.csv", "2025-08.mcap", "2025-9.mcap"}) {
        std::ofstream(folder.File(name)) << "x";
    }
    const auto around = [&folder](const char* name) {
        return NeighboursOf(platform::NativePath(folder.File(name)));
    };
    const auto path = [&folder](const char* name) {
        return platform::NativePath(folder.File(name));
    };
    EXPECT_EQ(around("night.mcap"), (Neighbours{{}, path("night-2.mcap")}));
    EXPECT_EQ(around("night-2.mcap"), (Neighbours{path("night.mcap"), path("night-5.mcap")}));
    EXPECT_EQ(around("night-5.mcap"), (Neighbours{path("night-2.mcap"), {}}));
    EXPECT_EQ(around("night-3.mcap"), (Neighbours{path("night-2.mcap"), path("night-5.mcap")}))
        << "one that was removed";
    EXPECT_EQ(around("night-05.mcap"), Neighbours{}) << "a name of its own";
    EXPECT_EQ(around("nightly.mcap"), Neighbours{});
    EXPECT_EQ(around("2025-08.mcap"), Neighbours{});
    EXPECT_EQ(around("night-6.csv"), Neighbours{});
    EXPECT_EQ(NeighboursOf(".mcap"), Neighbours{});
    EXPECT_EQ(NeighboursOf(""), Neighbours{});
}

TEST(Json, TextsKeepTheirCharacters) {
    for (const std::string text : {"", "plain", "a\"b\\c/d", "tab\t line\n \x01 \x7F",
                                   "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\xA7"}) {
        std::string json;
        AppendJsonText(json, text);
        const auto value = ReadJson(json);
        ASSERT_TRUE(value) << json;
        EXPECT_EQ(*value->Text(), text);
    }
    EXPECT_EQ(*ReadJson(R"("\u00e4\ud83d\udd27\/\b")")->Text(), "\xC3\xA4\xF0\x9F\x94\xA7/\b");
    EXPECT_EQ(AsUtf8("a\xFF\xC3"), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    for (const std::string bad : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80",
                                  "\xE2\x82", "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xF8"}) {
        EXPECT_FALSE(IsUtf8(bad));
    }
}

TEST(Json, WhatIsNoneIsRefused) {
    for (const char* bad :
         {"", "{", "[", "\"", "\"\\", "\"\\u12", "\"\\ud800\"", "\"\\ud800\\u0041\"", "nul", "1 2",
          "[1,]", "{\"a\"}", "{\"a\":}", "-", "1e", "\"\n\"", "\"\xFF\"", "{a:1}", "+1"}) {
        EXPECT_FALSE(ReadJson(bad)) << bad;
    }
    EXPECT_FALSE(ReadJson(std::string(1000, '[') + std::string(1000, ']')));
    EXPECT_TRUE(ReadJson(" { \"a\" : [ 1 , -2.5e3 , true , false , null ] } "));
    EXPECT_EQ(ReadJson("18446744073709551615")->Unsigned(), 18446744073709551615U);
    EXPECT_EQ(ReadJson("-1")->Unsigned(), std::nullopt);
    EXPECT_EQ(ReadJson("1.5")->Unsigned(), std::nullopt);
}

TEST(Json, NumbersKeepTheirBits) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 1000; ++i) {
        const auto number = std::bit_cast<double>(random());
        std::string json;
        AppendJsonNumber(json, number);
        if (std::isfinite(number)) {
            EXPECT_TRUE(testing::SameBits(*ReadJson(json)->Double(), number)) << json;
        } else {
            EXPECT_EQ(json, "null");
        }
    }
}

TEST(LineClocks, HaveATimeForEachLineAndALineForEachTime) {
    for (const double cycle : {0.001, 0.00025, 0.004, 1.0 / 3000, 1e-9, 1.5e-9, 1e-5, 7.0, 1e6}) {
        const LineClock clock(cycle, 1754056800123456789U);
        for (const std::uint64_t line :
             {0ULL, 1ULL, 2ULL, 999'999ULL, (1ULL << 31U) + 7, (1ULL << 33U) + 1}) {
            if (static_cast<double>(line) * cycle > 1e9) {
                continue;
            }
            const std::uint64_t time = clock.TimeOf(line);
            EXPECT_EQ(clock.LineNear(time), line) << cycle;
            EXPECT_EQ(clock.LineOf(static_cast<std::uint32_t>(line), time), line) << cycle;
            EXPECT_LT(time, clock.TimeOf(line + 1));
        }
    }
    const LineClock clock(0.001, 1'000'000'000);
    EXPECT_EQ(clock.TimeOf(123), 1'123'000'000U);
    EXPECT_EQ(clock.LineNear(0), 0U);
    EXPECT_EQ(clock.LineNear(1'001'400'000), 1U);
    EXPECT_EQ(clock.LineOf(5, 0), 5U);
    EXPECT_EQ(clock.LineOf(0xFFFFFFFF, clock.TimeOf(1ULL << 32U)), 0xFFFFFFFFU);
    EXPECT_EQ(clock.LineOf(1, clock.TimeOf((1ULL << 32U) - 1)), (1ULL << 32U) + 1);
}

TEST(FieldNaming, GivesNamesThatAllReadersTake) {
    EXPECT_THAT(
        FieldNames({"X", "x", "Y1", "Achse 3!", "_a__b_", "", "1", "\xC3\x84", "axis"}),
        ElementsAre("x", "x_2", "y1", "achse_3", "a_b", "axis", "axis_1", "axis_2", "axis_3"));
    EXPECT_EQ(FieldsOfSchema(LineSchema({"X", "Y"})), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(FieldsOfSchema("# a comment\nfloat64 a # b\n\nfloat64 c"),
              (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(FieldsOfSchema("float32 a\n"), std::nullopt);
    EXPECT_EQ(FieldsOfSchema("float64 A=1.0\n"), std::nullopt);
    EXPECT_EQ(FieldsOfSchema(""), std::vector<std::string>());
}

TEST(Metadata, IsReadBackAndKnowsWhenItWasChanged) {
    RecordingHead head = testing::MakeHead(5, 1.0 / 3);
    head.axis_names[1] = "\xFF\xFE";
    head.limits.resize(3);
    auto entries = ToMetadata(head);
    EXPECT_EQ(FromMetadata(entries), head);
    for (auto& [key, value] : entries) {
        auto changed = entries;
        changed[key] += "1";
        EXPECT_EQ(FromMetadata(changed), std::nullopt) << key;
    }
    entries.erase("crc32");
    EXPECT_EQ(FromMetadata(entries), head) << "others need not write one";
    entries.erase("axes_hex");
    EXPECT_EQ(FromMetadata(entries)->axis_names[1], "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(FromMetadata({}), std::nullopt);
}

TEST(Events, AreReadBackWhateverStandsInThem) {
    const Event event{"overrun", 18446744073709551615U, 7, "a\"b"};
    EXPECT_EQ(EventFromJson(ToJson(event)), event);
    EXPECT_EQ(EventFromJson("{\"kind\":\"x\",\"line\":1}"), (Event{"x", 1, 0, ""}));
    for (const char* bad : {"{}", "[]", "{\"kind\":1,\"line\":1}", "{\"kind\":\"x\"}", "x"}) {
        EXPECT_EQ(EventFromJson(bad), std::nullopt);
    }
    EXPECT_TRUE(ReadJson(EventSchema()));
}

TEST(Times, AreToldInUtc) {
    EXPECT_EQ(UtcText(0), "1970-01-01 00:00:00.000 UTC");
    EXPECT_EQ(UtcText(1709251199999999999U), "2024-02-29 23:59:59.999 UTC");
    EXPECT_EQ(MomentText(1709251199999999999U), "2024-02-29 23:59:59.999 UTC");
    EXPECT_EQ(MomentText(0), "0.000 s");
    EXPECT_EQ(MomentText(61'004'999'999U), "61.004 s");
}

TEST(LevelRecords, AreReadBackAndEveryChangedByteIsFound) {
    LevelsHead head;
    head.chunk_offset = 1234;
    head.first_line = 1ULL << 40U;
    head.lines = 130;
    head.axes = 3;
    head.block_crcs = {1, 2, 3};
    head.rest_crc = 4;
    for (int i = 0; i < 9; ++i) {
        head.whole.push_back({{-i * 1.5, i * 2.5}, i % 2 == 0});
    }
    head.whole[4].extremes = Extremes();
    ByteWriter bytes;
    PutLevelsHead(bytes, head);
    ASSERT_EQ(bytes.size(), LevelsHeadSize(3, 3));
    EXPECT_EQ(LevelsHeadSizeOf(bytes.View()), bytes.size());
    LevelsHead read;
    ASSERT_TRUE(ReadLevelsHead(bytes.View(), read));
    EXPECT_EQ(read, head);
    AxisLevels axis(9);
    axis[5] = {{1.0, 2.0}, true};
    ByteWriter axis_bytes;
    PutAxisLevels(axis_bytes, axis);
    ASSERT_EQ(axis_bytes.size(), AxisLevelsSize(3));
    AxisLevels axis_read;
    ASSERT_TRUE(ReadAxisLevels(axis_bytes.View(), 3, axis_read));
    EXPECT_EQ(axis_read, axis);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes.PutAt(i, static_cast<char>(std::to_integer<int>(bytes.data()[i]) ^ 4));
        EXPECT_FALSE(ReadLevelsHead(bytes.View(), read)) << i;
        bytes.PutAt(i, static_cast<char>(std::to_integer<int>(bytes.data()[i]) ^ 4));
    }
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(ReadLevelsHead(bytes.View().first(size), read)) << size;
    }
}

class OthersFile : public ::testing::Test, protected testing::OthersRecording {
 protected:
    std::unique_ptr<RecordingReader> Open() {
        m_files.Put("a.mcap", {reinterpret_cast<const char*>(Out().data()), Out().size()});
        auto reader = RecordingReader::Open("a.mcap");
        EXPECT_TRUE(reader) << reader.Why().text;
        return reader ? std::move(*reader) : nullptr;
    }

    testing::MemoryDataFiles m_files;
};

TEST_F(OthersFile, GapsMayStandWithinAChunk) {
    PutSchemas();
    for (const std::uint64_t number : {0U, 1U, 2U, 10U, 11U, 500U}) {
        PutLine(number, static_cast<double>(number));
    }
    EndChunk();
    PutLine(501, 501.0);
    EndChunk();
    const auto reader = Open();
    ASSERT_TRUE(reader);
    EXPECT_THAT(reader->Gaps(), ElementsAre(LineSpan{3, 10}, LineSpan{12, 500}));
    std::vector<double> values(14);
    reader->ReadValues(0, 1, 0, -1.0, values);
    EXPECT_THAT(values, ElementsAre(-1.0, 1000.0, 1000.0, -1, -1, -1, -1, -1, -1, -1, -1, 1000.0,
                                    -1.0, -1.0));
    const ColumnExtent extent = reader->Extent(0, 1, 0, 600, Detail::kLines);
    EXPECT_EQ(extent.certain.extremes, (Extremes{1000.0, 1000.0}));
    EXPECT_EQ(extent.last, 1000.0) << "line 501";
    EXPECT_THAT(reader->Notices(), IsEmpty());
}

TEST_F(OthersFile, ExtremesAreFoundChunkByChunk) {
    PutSchemas();
    for (std::uint64_t chunk = 0; chunk < 5; ++chunk) {
        for (std::uint64_t line = 0; line < 100; ++line) {
            PutLine(chunk * 100 + line, static_cast<double>(chunk * 1000 + line));
        }
        EndChunk();
    }
    const auto reader = Open();
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->SettleLevels(0), 5U);
    EXPECT_EQ(reader->SettleLevels(1), 4U);
    EXPECT_EQ(reader->SettleLevels(3), 1U);
    EXPECT_EQ(reader->SettleLevels(0), 1U);
    EXPECT_EQ(reader->SettleLevels(2), 0U);
    EXPECT_EQ(reader->SettleLevels(0), 0U);
    const std::uint64_t read = reader->BytesRead();
    const ColumnExtent extent = reader->Extent(0, 1, 0, 500, Detail::kChunks);
    EXPECT_EQ(extent.certain.extremes, (Extremes{1000.0, 901000.0}));
    EXPECT_EQ(reader->BytesRead(), read);
}

TEST_F(OthersFile, LinesWithoutNumbersHaveThatOfTheirTime) {
    PutSchemas();
    for (const std::uint64_t number : {5U, 6U, 7U, 9U}) {
        PutLine(number, static_cast<double>(number), false);
    }
    EndChunk();
    const auto reader = Open();
    ASSERT_TRUE(reader);
    EXPECT_THAT(reader->Gaps(), ElementsAre(LineSpan{8, 9}));
    std::vector<double> line(1);
    EXPECT_TRUE(reader->ReadLine(9, line));
    EXPECT_EQ(line[0], 9.0);
}

TEST_F(OthersFile, ChunksThatAreCompressedAreRefused) {
    PutSchemas();
    PutLine(1, 1.0);
    EndChunk("lz4");
    m_files.Put("a.mcap", {reinterpret_cast<const char*>(Out().data()), Out().size()});
    const auto reader = RecordingReader::Open("a.mcap");
    ASSERT_FALSE(reader);
    EXPECT_EQ(reader.Why().text, "\"a.mcap\" is compressed (lz4), which cannot be read");
    EXPECT_EQ(reader.Why().code, static_cast<int>(RecordingFault::kUnsupported));
}

TEST_F(OthersFile, AMessageOfNoChannelIsDamage) {
    PutLine(1, 1.0);
    EndChunk();
    const auto reader = Open();
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->LineCount(), 0U);
    EXPECT_EQ(reader->Notices().size(), 1U);
}

}  // namespace
}  // namespace wavo::recording
