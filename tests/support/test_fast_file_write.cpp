// Writing whole files: modes, order of steps, and what a failure of each step leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "failing_malloc.h"
#include "fast_file_fixture.h"
#include "faulty_files.h"
#include "matches_pattern.h"
#include "support/fast_file.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using diagnostics::Service;
using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FailingMalloc;
using testing::FastFileWrite;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using testing::MatchesPattern;

TEST_F(FastFileWrite, ModeZeroMakesANewFileAndFailsOnAnExistingOne) {
    EXPECT_EQ(Write("abc", kWriteNew), 3U);
    EXPECT_EQ(Write("xyz", kWriteNew), kWriteFailed);
    EXPECT_EQ(Content(), "abc");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("openwritefile(): CreateFile(" + m_path +
                                ", ...) failed: " + std::to_string(testing::kFileExists),
                            "MFastFile_WriteAtOnce(): openwritefile(" + m_path + ", 0) failed"));
}

TEST_F(FastFileWrite, ModeOneAppendsAndModeTwoOverwrites) {
    EXPECT_EQ(Write("abc", kWriteAppend), 3U);
    EXPECT_EQ(Write("de", kWriteAppend | kWriteFlush), 2U);
    EXPECT_EQ(Content(), "abcde");
    EXPECT_EQ(Write("x", kWriteOverwrite), 1U);
    EXPECT_EQ(Content(), "x");
    EXPECT_EQ(Write("", kWriteOverwrite), 0U);
    EXPECT_EQ(Content(), "");
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(FastFileWrite, UnknownModesAreRefusedWithTheBaseMode) {
    EXPECT_EQ(openwritefile(m_path, 7), platform::kInvalidFile);
    EXPECT_EQ(openwritefile(m_path, kWriteReplace), platform::kInvalidFile);
    EXPECT_EQ(Write("abc", 7), kWriteFailed);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("openwritefile(): unknown mode 3 for " + m_path,
                            "openwritefile(): unknown mode 10 for " + m_path,
                            "openwritefile(): unknown mode 3 for " + m_path,
                            "MFastFile_WriteAtOnce(): openwritefile(" + m_path + ", 3) failed"));
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(FastFileWrite, AFolderIsNoTarget) {
    ASSERT_TRUE(fs::create_directory(m_path));
    EXPECT_EQ(Write("abc", kWriteOverwrite), kWriteFailed);
    EXPECT_EQ(Write("abc", kWriteReplace), kWriteFailed);
    EXPECT_TRUE(fs::is_directory(m_path));
    EXPECT_THAT(Names(), ElementsAre("target.ini")) << "no temporary file is left";
}

TEST_F(FastFileWrite, TheFlagWritesThroughAndFlushesAfterTheWrite) {
    FaultyFiles files;
    EXPECT_EQ(Write("abc", kWriteOverwrite), 3U);
    EXPECT_FALSE(files.write_through());
    EXPECT_THAT(files.calls(), ElementsAre("open", "write 3", "close"));
    EXPECT_EQ(Write("abcd", kWriteOverwrite | kWriteFlush), 4U);
    EXPECT_TRUE(files.write_through());
    EXPECT_THAT(files.calls(),
                ElementsAre("open", "write 3", "close", "open", "write 4", "flush", "close"));
}

TEST_F(FastFileWrite, ReplacingGoesThroughATemporaryFileBesideTheTarget) {
    Make("old");
    FaultyFiles files;
    EXPECT_EQ(Write("new content", kWriteReplace), 11U);
    EXPECT_EQ(Content(), "new content");
    EXPECT_THAT(files.calls(),
                ElementsAre("name ffw", "open", "write 11", "flush", "close", "rename"));
    EXPECT_TRUE(files.write_through()) << "the flag is forced on";
    EXPECT_EQ(fs::path(files.written_path()).parent_path(), m_folder.path());
    EXPECT_THAT(fs::path(files.written_path()).filename().string(),
                MatchesPattern("ffw[0-9A-F][0-9A-F][0-9A-F][0-9A-F][.]tmp"));
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
}

TEST_F(FastFileWrite, APathWithoutAFolderIsReplacedInTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    FaultyFiles files;
    EXPECT_EQ(MFastFile_WriteAtOnce("target.ini", "abc", 3, kWriteReplace), 3U);
    fs::current_path(before);
    EXPECT_THAT(files.written_path(), MatchesPattern("ffw....[.]tmp"));
    EXPECT_EQ(Content(), "abc");
}

TEST_F(FastFileWrite, WithoutMemoryForTheNameNothingHappens) {
    Make("old");
    const FailingMalloc no_memory(m_path.size() + 12, m_path.size() + 13);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_EQ(no_memory.failed(), 1);
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("MFastFile_WriteAtOnce(): malloc() failed"));
}

TEST_F(FastFileWrite, WithoutATemporaryNameNothingHappens) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kName, EACCES);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MFastFile_WriteAtOnce(): GetTempFileName() failed:13"));
}

TEST_F(FastFileWrite, ATemporaryFileThatDoesNotOpenIsRemoved) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kOpenForWriting, EMFILE);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("openwritefile(): CreateFile(" +
                                                  files.written_path() + ", ...) failed: 24",
                                              "MFastFile_WriteAtOnce(): openwritefile(" +
                                                  files.written_path() + ", 2) failed"));
}

TEST_F(FastFileWrite, AFailedWriteIsNotFlushedButRenamed) {
    Make("old");
    FaultyFiles files;
    files.LimitSpace(4, ENOSPC);
    EXPECT_EQ(Write("new content", kWriteReplace), kWriteFailed);
    EXPECT_THAT(files.calls(), ElementsAre("name ffw", "open", "write 11", "close", "rename"));
    EXPECT_EQ(Content(), "new ") << "what could be written took the target's place";
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
    EXPECT_THAT(m_traces.Texts(), ElementsAre("write64(): WriteFile() failed: 28",
                                              "MFastFile_WriteAtOnce(): write64() failed"));
}

TEST_F(FastFileWrite, AFailedWriteInPlaceIsReportedTheSame) {
    Make("old content");
    FaultyFiles files;
    files.LimitSpace(4, ENOSPC);
    EXPECT_EQ(Write("new content", kWriteOverwrite | kWriteFlush), kWriteFailed);
    EXPECT_THAT(files.calls(), ElementsAre("open", "write 11", "close"));
    EXPECT_EQ(Content(), "new ");
    EXPECT_THAT(m_traces.Texts(), ElementsAre("write64(): WriteFile() failed: 28",
                                              "MFastFile_WriteAtOnce(): write64() failed"));
}

TEST_F(FastFileWrite, AFailedFlushIsReportedAndRenamed) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kFlush, EIO);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_THAT(files.calls(),
                ElementsAre("name ffw", "open", "write 3", "flush", "close", "rename"));
    EXPECT_EQ(Content(), "new");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MFastFile_WriteAtOnce(): FlushFileBuffers() failed: 5"));
}

TEST_F(FastFileWrite, AFailedCloseIsReportedAndRenamed) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kClose, 122);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_EQ(Content(), "new");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MFastFile_WriteAtOnce(): CloseHandle() failed: 122"));
}

TEST_F(FastFileWrite, AFailedRenameIsReportedTwiceAndLeavesTheTarget) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kRename, EACCES);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
    const std::string& temporary = files.written_path();
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre("file_rename(): MoveFileEx(" + temporary + "," + m_path + ") failed: 13",
                    "MFastFile_WriteAtOnce(): file_rename(" + temporary + "," + m_path +
                        ") failed: " + platform::ErrorText(EACCES)));
}

TEST_F(FastFileWrite, EveryStepThatFailsIsReported) {
    Make("old");
    FaultyFiles files;
    files.Fail(Call::kWrite, EIO);
    files.Fail(Call::kClose, EBADF);
    files.Fail(Call::kRename, EXDEV);
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    const std::string paths = files.written_path() + "," + m_path;
    EXPECT_THAT(m_traces.Texts(), ElementsAre("write64(): WriteFile() failed: 5",
                                              "MFastFile_WriteAtOnce(): write64() failed",
                                              "MFastFile_WriteAtOnce(): CloseHandle() failed: 9",
                                              "file_rename(): MoveFileEx(" + paths + ") failed: 18",
                                              "MFastFile_WriteAtOnce(): file_rename(" + paths +
                                                  ") failed: " + platform::ErrorText(EXDEV)));
    EXPECT_EQ(Content(), "old");
}

TEST_F(FastFileWrite, ShortWritesGoOnUntilNothingRemains) {
    FaultyFiles files;
    files.LimitWrites(4);
    EXPECT_EQ(Write("0123456789", kWriteOverwrite), 10U);
    EXPECT_EQ(Content(), "0123456789");
    EXPECT_THAT(files.calls(), ElementsAre("open", "write 10", "write 6", "write 2", "close"));
}

TEST_F(FastFileWrite, AWriteThatTakesNothingFailsInsteadOfGoingOnForEver) {
    FaultyFiles files;
    files.LimitWrites(0);
    EXPECT_EQ(Write("0123456789", kWriteOverwrite), kWriteFailed);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("write64(): WriteFile() failed: 0",
                                              "MFastFile_WriteAtOnce(): write64() failed"));
}

/// Takes everything and keeps only the sizes.
class HugeFiles final : public platform::FileOperations {
 public:
    platform::FileHandle OpenForReading(const std::string&) override { return 1; }
    platform::FileHandle OpenForWriting(const std::string&, platform::Creation, bool) override {
        return 1;
    }
    std::uint64_t Size(platform::FileHandle) override { return 0; }
    bool Read(platform::FileHandle, void*, std::size_t, std::size_t&) override { return false; }
    bool Write(platform::FileHandle, const void* data, std::size_t size,
               std::size_t& count) override {
        m_offsets.push_back(static_cast<const char*>(data) - static_cast<const char*>(nullptr));
        m_sizes.push_back(size);
        count = size;
        return true;
    }
    bool Flush(platform::FileHandle) override { return true; }
    bool Close(platform::FileHandle) override { return true; }
    bool CreateTemporaryFile(const std::string&, const std::string&, const std::string&,
                             char*) override {
        return false;
    }
    bool Rename(const std::string&, const std::string&) override { return true; }
    bool Remove(const std::string&) override { return true; }
    bool Exists(const std::string&) override { return false; }
    std::string FollowLinks(const std::string& path) override { return path; }

    std::vector<std::ptrdiff_t> m_offsets;
    std::vector<std::size_t> m_sizes;
};

TEST_F(FastFileWrite, MoreThanFourGigabytesGoInChunksOfTheLargestSize) {
    HugeFiles files;
    const platform::FileOperationsOverride override(files);
    const char* const data = m_path.data();  // never looked at
    std::size_t count = 0;
    EXPECT_TRUE(write64(1, data, 4294967295U, count));
    EXPECT_THAT(files.m_sizes, ElementsAre(4294967295U));
    EXPECT_TRUE(write64(1, data, 2 * std::size_t{4294967295U} + 5, count));
    EXPECT_EQ(count, 2 * std::size_t{4294967295U} + 5);
    EXPECT_THAT(files.m_sizes, ElementsAre(4294967295U, 4294967295U, 4294967295U, 5U));
    EXPECT_EQ(files.m_offsets[2] - files.m_offsets[1], 4294967295);
    EXPECT_EQ(files.m_offsets[3] - files.m_offsets[2], 4294967295);
}

class FastFileLines : public FastFileWrite {
 protected:
    std::string Converted(const std::string& text) {
        EXPECT_NE(MFastFile_WriteLinesAtOnce(m_path, text, 0), kWriteFailed);
        return Content();
    }
};

TEST_F(FastFileLines, AllLineEndsBecomeCarriageReturnAndLineFeed) {
    EXPECT_EQ(Converted("a\nb\rc\r\nd"), "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(Converted("\n\r\r\n\n\r"), "\r\n\r\n\r\n\r\n\r\n");
    EXPECT_EQ(Converted(""), "");
    EXPECT_EQ(Converted("\r"), "\r\n");
}

TEST_F(FastFileLines, LongTextsAreConvertedAsByteByByte) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        std::string expected;
        const int style = static_cast<int>(random() % 4);
        const std::size_t lines = random() % 100;
        for (std::size_t i = 0; i < lines; ++i) {
            const std::string line(random() % 3 == 0 ? 0 : random() % 70, 'x');
            const auto kind = style == 3 ? random() % 3 : static_cast<unsigned>(style);
            text += line;
            // A lone carriage return before a line feed would be one line end, not two.
            text += kind == 0 ? "\r\n" : kind == 1 ? "\n" : "\r";
            expected += line + "\r\n";
            if (kind == 2) {
                text += "y";
                expected += "y";
            }
        }
        ASSERT_EQ(Converted(text), expected) << round;
    }
}

TEST_F(FastFileLines, TheFlagsChooseTheMode) {
    FaultyFiles files;
    EXPECT_EQ(MFastFile_WriteLinesAtOnce(m_path, "a\n", 0), 3U);
    EXPECT_FALSE(files.write_through());
    EXPECT_THAT(files.calls(), ElementsAre("open", "write 3", "close"));
    EXPECT_EQ(MFastFile_WriteLinesAtOnce(m_path, "a\n", kSaveFlush), 3U);
    EXPECT_TRUE(files.write_through());
    EXPECT_EQ(files.calls().size(), 7U) << "a flush, and no temporary file";
    EXPECT_EQ(MFastFile_WriteLinesAtOnce(m_path, "a\n", kSaveSafe), 3U);
    EXPECT_EQ(files.calls().size(), 13U);
    EXPECT_EQ(files.calls().back(), "rename");
}

TEST_F(FastFileLines, AFailureNamesSizeAndMode) {
    FaultyFiles files;
    for (const unsigned flags : {0U, kSaveFlush, kSaveSafe, kSaveSafe | kSaveFlush}) {
        files.Fail(Call::kWrite, EIO);
        EXPECT_EQ(MFastFile_WriteLinesAtOnce(m_path, "a\n", flags), kWriteFailed);
    }
    const std::string start = "MFastFile_WriteLinesAtOnce(): MFastFile_WriteAtOnce(\"" + m_path;
    const std::vector<std::string> texts = m_traces.Texts();
    ASSERT_EQ(texts.size(), 12U);
    EXPECT_EQ(texts[2], start + "\",..,3,2) failed");
    EXPECT_EQ(texts[5], start + "\",..,3,6) failed");
    EXPECT_EQ(texts[8], start + "\",..,3,10) failed");
    EXPECT_EQ(texts[11], start + "\",..,3,14) failed");
}

TEST_F(FastFileLines, WithoutMemoryNothingIsWritten) {
    Make("old");
    const std::string text(5000, 'x');
    const FailingMalloc no_memory(10000, 10001);
    EXPECT_EQ(MFastFile_WriteLinesAtOnce(m_path, text, 0), kWriteFailed);
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MFastFile_WriteLinesAtOnce(): malloc(10000) failed: " +
                            platform::ErrorText(ENOMEM).substr(0, 50)));
}

}  // namespace
}  // namespace wavo
