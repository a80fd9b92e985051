#include "master/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "comma_locale.h"
#include "gzipped.h"
#include "platform/process.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using testing::Gzipped;

using Names = std::vector<std::string>;

std::vector<double> LineOf(const Recording& recording, std::uint64_t number) {
    std::vector<double> line(recording.AxisNames().size());
    recording.Line(number, line);
    return line;
}

std::string ErrorOf(const std::string& text, const Names& axes = {}) {
    std::string error;
    EXPECT_EQ(Recording::Parse(text, axes, &error), nullptr);
    return error;
}

std::unique_ptr<Recording> Parsed(const std::string& text, const Names& axes = {}) {
    std::string error;
    auto recording = Recording::Parse(text, axes, &error);
    EXPECT_TRUE(recording) << error;
    return recording;
}

TEST(Recording, ColumnsAreTakenInTheOrderAsked) {
    const auto recording = Parsed("a,b,c\n1,2,3\n4,5,6\n", {"c", "a"});
    EXPECT_THAT(recording->AxisNames(), ElementsAre("c", "a"));
    EXPECT_EQ(recording->LinesPerRound(), 2U);
    EXPECT_THAT(LineOf(*recording, 0), ElementsAre(3.0, 1.0));
    EXPECT_THAT(LineOf(*recording, 1), ElementsAre(6.0, 4.0));
}

TEST(Recording, BeginsAgainAfterTheLastLine) {
    const auto recording = Parsed("a\n1\n2\n3\n");
    EXPECT_THAT(LineOf(*recording, 3), ElementsAre(1.0));
    EXPECT_THAT(LineOf(*recording, 3'000'000'002), ElementsAre(3.0));
}

TEST(Recording, WithoutAChoiceTheUsualAxesAreTaken) {
    EXPECT_THAT(Parsed("X_cmd,A,line,X,Z\n1,2,3,4,5\n")->AxisNames(), ElementsAre("X", "Z", "A"));
    EXPECT_THAT(Parsed("p,q\n1,2\n")->AxisNames(), ElementsAre("p", "q"));
}

TEST(Recording, LineEndsBlankLinesBlanksAndByteOrderMarkDoNotMatter) {
    const auto recording = Parsed("\xEF\xBB\xBF\r\n a , b\r\n\r\n 1 ,\t2\r\n  \n3,4");
    EXPECT_THAT(recording->AxisNames(), ElementsAre("a", "b"));
    EXPECT_EQ(recording->LinesPerRound(), 2U);
    EXPECT_THAT(LineOf(*recording, 0), ElementsAre(1.0, 2.0));
    EXPECT_THAT(LineOf(*recording, 1), ElementsAre(3.0, 4.0));
}

TEST(Recording, NumbersAreTheNearestDoubles) {
    const auto recording = Parsed("a\n0.1\n-1e-3\n+2.5\n123456789.123456789\n5e-324\n-0\n");
    EXPECT_EQ(LineOf(*recording, 0)[0], 0.1);
    EXPECT_EQ(LineOf(*recording, 1)[0], -0.001);
    EXPECT_EQ(LineOf(*recording, 2)[0], 2.5);
    EXPECT_EQ(LineOf(*recording, 3)[0], 123456789.123456789);
    EXPECT_EQ(LineOf(*recording, 4)[0], 5e-324);
    EXPECT_TRUE(std::signbit(LineOf(*recording, 5)[0]));
}

TEST(Recording, FieldsThatAreNoNumbersAreRefused) {
    for (const char* field : {"", "x", "1x", "1 2", "nan", "inf", "1e999", "0x10", "+-1", "--1"}) {
        EXPECT_EQ(ErrorOf(std::string("a,b\n1,2\n") + field + ",3\n"),
                  std::string("line 3: \"") + field + "\" in column \"a\" is not a number");
    }
    EXPECT_EQ(ErrorOf("a\n" + std::string(50, 'x') + "\n"),
              "line 2: \"" + std::string(40, 'x') + "...\" in column \"a\" is not a number");
}

TEST(Recording, ColumnsNotChosenNeedNotBeNumbers) {
    EXPECT_EQ(Parsed("a,remark\n1,hello\n", {"a"})->LinesPerRound(), 1U);
}

TEST(Recording, RaggedRowsAreRefused) {
    EXPECT_EQ(ErrorOf("a,b\n1,2\n3\n"), "line 3: 1 fields instead of 2");
    EXPECT_EQ(ErrorOf("a,b\n1,2,\n"), "line 2: 3 fields instead of 2");
}

TEST(Recording, MissingAndDoubleColumnsAreRefused) {
    EXPECT_EQ(ErrorOf("a,b\n1,2\n", {"a", "A"}), "line 1: no column \"A\"; there are \"a\" \"b\"");
    EXPECT_EQ(ErrorOf("a,b,a\n1,2,3\n", {"a"}), "line 1: more than one column \"a\"");
    EXPECT_EQ(Parsed("a,b,a\n1,2,3\n", {"b"})->LinesPerRound(), 1U);
}

TEST(Recording, FilesWithoutLinesAreRefused) {
    EXPECT_EQ(ErrorOf(""), "the file is empty");
    EXPECT_EQ(ErrorOf("\n \r\n"), "the file is empty");
    EXPECT_EQ(ErrorOf("a,b\n"), "there are no lines after the names of the columns");
}

class RecordingFileTest : public ::testing::Test {
 protected:
    RecordingFileTest() { std::filesystem::create_directory(m_folder); }
    ~RecordingFileTest() override { std::filesystem::remove_all(m_folder); }

    std::string Write(const std::string& name, const std::string& content) {
        const auto path = m_folder / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    static std::string ReadError(const std::string& path) {
        std::string error;
        EXPECT_EQ(Recording::Read(path, {}, &error), nullptr);
        return error;
    }

    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() /
        ("wavo_recording_test_" + std::to_string(platform::ProcessId()));
};

TEST_F(RecordingFileTest, PlainAndCompressedFilesAreTheSame) {
    const std::string text = "a,b\n1,2\n3,4\n";
    for (const std::string& path : {Write("plain.csv", text), Write("packed.csv.gz", Gzipped(text)),
                                    Write("packed.csv", Gzipped(text)),
                                    Write("members.gz", Gzipped("a,b\n1,2\n") + Gzipped("3,4\n")),
                                    Write("m\xC3\xA4schine.csv", text)}) {
        std::string error;
        const auto recording = Recording::Read(path, {}, &error);
        ASSERT_TRUE(recording) << error;
        EXPECT_EQ(recording->LinesPerRound(), 2U);
        EXPECT_THAT(LineOf(*recording, 1), ElementsAre(3.0, 4.0));
    }
}

TEST_F(RecordingFileTest, DamagedArchivesAreRefused) {
    std::string packed = Gzipped("a,b\n1,2\n3,4\n");
    const std::string cut = Write("cut.gz", packed.substr(0, packed.size() - 5));
    EXPECT_EQ(ReadError(cut), cut + ": the gzip data is damaged or cut off");
    const std::string head = Write("head.gz", packed.substr(0, 2));
    EXPECT_EQ(ReadError(head), head + ": the gzip data is damaged or cut off");
    packed[packed.size() - 6] ^= 1;  // the checksum
    const std::string damaged = Write("damaged.gz", packed);
    EXPECT_EQ(ReadError(damaged), damaged + ": the gzip data is damaged or cut off");
    const std::string trailing = Write("trailing.gz", Gzipped("a\n1\n") + "more");
    EXPECT_EQ(ReadError(trailing), trailing + ": the gzip data is damaged or cut off");
}

TEST_F(RecordingFileTest, FilesThatCannotBeReadAreNamed) {
    const std::string missing = (m_folder / "missing.csv").string();
    EXPECT_EQ(ReadError(missing), missing + ": no such file");
    EXPECT_EQ(ReadError(m_folder.string()), m_folder.string() + ": cannot be read");
    const std::string empty = Write("empty.csv", "");
    EXPECT_EQ(ReadError(empty), empty + ": the file is empty");
}

TEST(Recording, OurRecordingsAreWhatTheirReadmeSays) {
    const std::string folder = WAVO_RECORDINGS;
    const struct {
        const char* name;
        std::uint64_t rows;
    } kFiles[] = {{"circle_xy_r50", 32944},
                  {"rose_small_segments", 26991},
                  {"drill_g81_g83_g82", 20373},
                  {"helix_4axis", 19554}};
    for (const auto& file : kFiles) {
        std::string error;
        const auto recording = Recording::Read(folder + "/" + file.name + ".csv.gz", {}, &error);
        ASSERT_TRUE(recording) << error;
        EXPECT_EQ(recording->LinesPerRound(), file.rows);
        EXPECT_THAT(recording->AxisNames(), ElementsAre("X", "Y", "Z", "A"));
    }
}

TEST(Recording, LocaleDoesNotMatter) {
    const wavo::testing::CommaLocale locale;
    if (!wavo::testing::CommaLocale::IsSet()) {
        GTEST_SKIP() << "there is no locale with a decimal comma here";
    }
    EXPECT_THAT(LineOf(*Parsed("a\n1.5\n"), 0), ElementsAre(1.5));
}

}  // namespace
}  // namespace wavo::master
