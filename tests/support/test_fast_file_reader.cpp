// Reading files by lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "failing_malloc.h"
#include "faulty_files.h"
#include "support/fast_file.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FailingMalloc;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FastFileReader : public ::testing::Test {
 protected:
    std::string Make(const std::string& content) {
        std::string path = m_folder.File("lines.txt");
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    std::vector<std::string> LinesOf(const std::string& content) {
        MFastFileReader reader;
        EXPECT_TRUE(reader.Open(Make(content)));
        std::vector<std::string> lines;
        while (!reader.IsEOF()) {
            std::string line;
            EXPECT_TRUE(reader.ReadLine(line));
            lines.push_back(line);
        }
        EXPECT_TRUE(reader.Close());
        // The other way to read gives the same.
        EXPECT_TRUE(reader.Open(Make(content)));
        std::vector<std::string> appended;
        while (!reader.IsEOF()) {
            TextBuffer text;
            EXPECT_TRUE(text.Append("x"));
            EXPECT_EQ(reader.AppendLine(text, 1000000), MFastFileReader::Line::kWhole);
            appended.emplace_back(text.View().substr(1));
        }
        EXPECT_EQ(lines, appended);
        return lines;
    }

    testing::TemporaryFolder m_folder;
};

TEST_F(FastFileReader, CarriageReturnLineFeedAndBothTogetherEachEndOneLine) {
    EXPECT_THAT(LinesOf("a\rb\nc\r\n"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(LinesOf("\n\r\r\n\n"), ElementsAre("", "", "", ""));
    EXPECT_THAT(LinesOf("a\n\rb"), ElementsAre("a", "", "b"));
}

TEST_F(FastFileReader, ALastLineWithoutAnEndIsReturned) {
    EXPECT_THAT(LinesOf("a\r\nlast"), ElementsAre("a", "last"));
    EXPECT_THAT(LinesOf("last"), ElementsAre("last"));
    EXPECT_THAT(LinesOf("last\r"), ElementsAre("last"));
}

TEST_F(FastFileReader, AnEmptyFileIsAtItsEndAtOnce) {
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make("")));
    EXPECT_TRUE(reader.IsEOF());
    EXPECT_TRUE(reader.IsEOF());
    std::string line = "old";
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, "");
}

TEST_F(FastFileReader, ACarriageReturnAndALineFeedSplitByTheBufferAreOneLineEnd) {
    for (const std::size_t length : {8190U, 8191U, 8192U, 16383U}) {
        const std::string first(length, 'x');
        EXPECT_THAT(LinesOf(first + "\r\nnext"), ElementsAre(first, "next")) << length;
        EXPECT_THAT(LinesOf(first + "\rnext"), ElementsAre(first, "next")) << length;
        EXPECT_THAT(LinesOf(first + "\nnext"), ElementsAre(first, "next")) << length;
        EXPECT_THAT(LinesOf(first + "\r\n"), ElementsAre(first)) << length;
        EXPECT_THAT(LinesOf(first + "\r"), ElementsAre(first)) << length;
    }
}

TEST_F(FastFileReader, LinesOfAnyBytesAndLengthsComeAsTheyStand) {
    std::mt19937 random(1);
    for (int round = 0; round < 50; ++round) {
        std::vector<std::string> expected;
        std::string content;
        for (int i = 0; i < 200; ++i) {
            std::string line;
            const std::size_t length = random() % (i % 20 == 0 ? 20000 : 60);
            for (std::size_t n = 0; n < length; ++n) {
                const char byte = static_cast<char>(random() % 256);
                line += byte == '\r' || byte == '\n' ? '\0' : byte;
            }
            content += line + (std::vector<std::string>{"\n", "\r\n"})[random() % 2];
            expected.push_back(line);
        }
        ASSERT_EQ(LinesOf(content), expected);
    }
}

TEST_F(FastFileReader, ReadsThatGiveLessThanAskedForMakeNoDifference) {
    FaultyFiles files;
    for (const std::size_t bytes : {1U, 2U, 3U, 7U}) {
        files.LimitReads(bytes);
        EXPECT_THAT(LinesOf("a\rb\nc\r\n\r\nlonger line\r\r\nend"),
                    ElementsAre("a", "b", "c", "", "longer line", "", "end"));
    }
}

TEST_F(FastFileReader, ALineBeyondTheLimitIsCutAndGoesOn) {
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make("12345678\n1234\n" + std::string(20000, 'x'))));
    TextBuffer text;
    EXPECT_EQ(reader.AppendLine(text, 4), MFastFileReader::Line::kCut);
    EXPECT_EQ(text.View(), "1234");
    EXPECT_EQ(reader.AppendLine(text, 4), MFastFileReader::Line::kWhole);
    EXPECT_EQ(text.View(), "12345678");
    EXPECT_EQ(reader.AppendLine(text, 4), MFastFileReader::Line::kWhole);
    text.SetSize(0);
    EXPECT_EQ(reader.AppendLine(text, 19999), MFastFileReader::Line::kCut);
    EXPECT_EQ(text.size(), 19999U);
    EXPECT_EQ(reader.AppendLine(text, 19999), MFastFileReader::Line::kWhole);
    EXPECT_EQ(text.size(), 20000U);
    EXPECT_TRUE(reader.IsEOF());
}

TEST_F(FastFileReader, AnEmptyLineMayBeTheFirstThingThatATextTakes) {
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make("\nabc\n")));
    TextBuffer text;
    EXPECT_EQ(reader.AppendLine(text, 1000), MFastFileReader::Line::kWhole);
    EXPECT_EQ(text.View(), "");
    EXPECT_EQ(reader.AppendLine(text, 1000), MFastFileReader::Line::kWhole);
    EXPECT_EQ(text.View(), "abc");
}

TEST_F(FastFileReader, AMissingFileIsReportedByBothFunctions) {
    const CollectReports reports(Service::kErrorTrace);
    const std::string error = std::to_string(testing::kNoSuchFolder);
    MFastFileReader reader;
    EXPECT_FALSE(reader.Open("/nowhere/file.txt"));
    EXPECT_THAT(
        reports.Texts(),
        ElementsAre("openfile(): CreateFile(\"/nowhere/file.txt\") failed: " + error,
                    "MFastFileReader::Open(): openfile(\"/nowhere/file.txt\") failed: " + error));
    EXPECT_EQ(reader.FileName(), "");
    EXPECT_TRUE(reader.Close());
}

TEST_F(FastFileReader, AskingForTheEndWithNoOpenFileIsAnErrorLogEntry) {
    const ExpectErrorLog expected({"MFastFileReader::IsEOF(): no open file"});
    MFastFileReader reader;
    EXPECT_TRUE(reader.IsEOF());
}

TEST_F(FastFileReader, AfterCloseNothingOfTheFileIsLeft) {
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make("a\nb\n")));
    EXPECT_EQ(reader.FileName(), m_folder.File("lines.txt"));
    EXPECT_EQ(reader.FileSize(), 4U);
    std::string line;
    ASSERT_TRUE(reader.ReadLine(line));
    EXPECT_TRUE(reader.Close());
    EXPECT_EQ(reader.FileName(), "");
    EXPECT_EQ(reader.FileSize(), 0U);
    const ExpectErrorLog expected({"MFastFileReader::IsEOF(): no open file"});
    EXPECT_TRUE(reader.IsEOF());
}

TEST_F(FastFileReader, AReadThatFailsInIsEofIsAnErrorLogEntryInPlaceOfTheTraces) {
    const CollectReports traces(Service::kErrorTrace);
    const ExpectErrorLog expected({"MFastFileReader::IsEOF(): fill_buffer() failed"});
    FaultyFiles files;
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make("a\n")));
    files.Fail(Call::kRead, EIO);
    EXPECT_FALSE(reader.HasFailed());
    EXPECT_TRUE(reader.IsEOF());
    EXPECT_TRUE(reader.HasFailed());
    EXPECT_THAT(traces.Texts(), IsEmpty());
    EXPECT_FALSE(reader.IsEOF()) << "the next read works again";
}

TEST_F(FastFileReader, AReadThatFailsInALineFailsTheLine) {
    const CollectReports traces(Service::kErrorTrace);
    FaultyFiles files;
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make(std::string(9000, 'x') + "\n")));
    files.Fail(Call::kRead, EIO, 1);
    std::string line;
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_THAT(line, SizeIs(8192));
    EXPECT_THAT(traces.Texts(),
                ElementsAre("read64(): ReadFile() failed: 5",
                            "MFastFileReader::fill_buffer(): read64() failed",
                            "MFastFileReader::ReadLine(STL): fill_buffer() failed"));
}

TEST_F(FastFileReader, AReadThatFailsBehindACarriageReturnHasItsOwnText) {
    const CollectReports traces(Service::kErrorTrace);
    FaultyFiles files;
    MFastFileReader reader;
    std::string line;
    ASSERT_TRUE(reader.Open(Make("a\r\n")));
    files.LimitReads(2);
    files.Fail(Call::kRead, EIO, 1);
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_EQ(line, "a");
    EXPECT_THAT(traces.Texts(), ElementsAre("read64(): ReadFile() failed: 5",
                                            "MFastFileReader::fill_buffer(): read64() failed",
                                            "MFastFileReader::ReadLine(STL):fill_buffer() failed"));
}

TEST_F(FastFileReader, AFailedCloseIsReportedAndTheFileIsGoneAllTheSame) {
    const CollectReports traces(Service::kErrorTrace);
    FaultyFiles files;
    {
        MFastFileReader reader;
        ASSERT_TRUE(reader.Open(Make("a\n")));
        files.Fail(Call::kClose, EIO);
        EXPECT_FALSE(reader.Close());
        EXPECT_TRUE(reader.Close());
        ASSERT_TRUE(reader.Open(Make("a\n")));
        files.Fail(Call::kClose, EIO);
    }
    EXPECT_THAT(traces.Texts(), ElementsAre("MFastFileReader::Close(): CloseHandle() failed: 5",
                                            "MFastFileReader::Close(): CloseHandle() failed: 5",
                                            "MFastFileReader::~MFastFileReader(): Close() failed"));
}

TEST_F(FastFileReader, ATextThatCannotGrowIsToldApart) {
    MFastFileReader reader;
    ASSERT_TRUE(reader.Open(Make(std::string(5000, 'x'))));
    TextBuffer text;
    {
        const FailingMalloc no_memory(1000);
        EXPECT_EQ(reader.AppendLine(text, 10000), MFastFileReader::Line::kOutOfMemory);
        EXPECT_EQ(no_memory.failed(), 1);
    }
    EXPECT_EQ(reader.AppendLine(text, 10000), MFastFileReader::Line::kWhole);
    EXPECT_EQ(text.size(), 5000U) << "nothing was lost";
}

#ifndef NDEBUG
using FastFileReaderDeathTest = FastFileReader;

TEST_F(FastFileReaderDeathTest, RefillingWithNoOpenFileIsAnAssertion) {
    MFastFileReader reader;
    EXPECT_DEATH(reader.fill_buffer(), "hFile != INVALID_HANDLE_VALUE");
}
#endif

}  // namespace
}  // namespace wavo
