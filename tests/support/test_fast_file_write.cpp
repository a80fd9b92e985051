// Writing whole files: modes, order of steps, and what a failure of each step leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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
#include "faulty_files.h"
#include "support/fast_file.h"
#include "temporary_folder.h"
#include "unprivileged.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using diagnostics::Service;
using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FailingMalloc;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::UnorderedElementsAre;

class FastFileWrite : public ::testing::Test {
 protected:
    FastFileWrite() : m_path(m_folder.File("target.ini")) {}

    std::size_t Write(const std::string& data, int mode) const {
        return MFastFile_WriteAtOnce(m_path, data.data(), data.size(), mode);
    }
    void Make(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    std::string Content() const { return m_folder.Read("target.ini"); }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    testing::TemporaryFolder m_folder;
    const std::string m_path;
    const CollectReports m_traces{Service::kErrorTrace};
};

TEST_F(FastFileWrite, ModeZeroMakesANewFileAndFailsOnAnExistingOne) {
    EXPECT_EQ(Write("abc", kWriteNew), 3U);
    EXPECT_EQ(Write("xyz", kWriteNew), kWriteFailed);
    EXPECT_EQ(Content(), "abc");
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("openwritefile(): CreateFile(" + m_path + ", ...) failed: 17",
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
                MatchesRegex("ffw[0-9A-F][0-9A-F][0-9A-F][0-9A-F][.]tmp"));
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
}

TEST_F(FastFileWrite, APathWithoutAFolderIsReplacedInTheCurrentFolder) {
    const fs::path before = fs::current_path();
    fs::current_path(m_folder.path());
    FaultyFiles files;
    EXPECT_EQ(MFastFile_WriteAtOnce("target.ini", "abc", 3, kWriteReplace), 3U);
    fs::current_path(before);
    EXPECT_THAT(files.written_path(), MatchesRegex("ffw....[.]tmp"));
    EXPECT_EQ(Content(), "abc");
}

TEST_F(FastFileWrite, OnlyTheSystemsSeparatorEndsTheFolder) {
    // Elsewhere a backslash parts folders; here it is a letter as any other.
    const std::string path = m_folder.File("a\\b.ini");
    EXPECT_EQ(MFastFile_WriteAtOnce(path, "abc", 3, kWriteReplace), 3U);
    EXPECT_THAT(Names(), ElementsAre("a\\b.ini"));
}

TEST_F(FastFileWrite, AReplacedFileKeepsItsPermissions) {
    Make("old");
    for (const mode_t mode : {0640U, 0600U, 0664U, 0755U}) {
        ASSERT_EQ(::chmod(m_path.c_str(), mode), 0);
        EXPECT_EQ(Write("new", kWriteReplace), 3U);
        struct stat info {};
        ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, mode);
    }
}

TEST_F(FastFileWrite, AFileThatIsMadeByReplacingHasThePermissionsOfAnyNewOne) {
    const mode_t mask = ::umask(027);
    EXPECT_EQ(Write("new", kWriteReplace), 3U);
    ::umask(mask);
    struct stat info {};
    ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640U);
}

TEST_F(FastFileWrite, AReplacedFileKeepsItsOwner) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can give files away";
    }
    Make("old");
    ASSERT_EQ(::chown(m_path.c_str(), 65534, 65534), 0);
    EXPECT_EQ(Write("new", kWriteReplace), 3U);
    struct stat info {};
    ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 65534U);
    EXPECT_EQ(info.st_gid, 65534U);
}

TEST_F(FastFileWrite, ALinkStaysALinkAndItsFileIsReplaced) {
    ASSERT_TRUE(fs::create_directory(m_folder.File("real")));
    std::ofstream(m_folder.File("real/file.ini")) << "old";
    fs::create_symlink("real/file.ini", m_folder.File("second"));
    fs::create_symlink("second", m_path);
    FaultyFiles files;
    EXPECT_EQ(Write("new", kWriteReplace), 3U);
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_EQ(m_folder.Read("real/file.ini"), "new");
    EXPECT_EQ(fs::path(files.written_path()).parent_path(), m_folder.File("real"));
    EXPECT_THAT(Names(), UnorderedElementsAre("real", "second", "target.ini"));
}

TEST_F(FastFileWrite, ALinkThatLeadsNowhereYetMakesItsFile) {
    fs::create_symlink(m_folder.File("later.ini"), m_path);
    EXPECT_EQ(Write("new", kWriteReplace), 3U);
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_EQ(m_folder.Read("later.ini"), "new");
}

TEST_F(FastFileWrite, LinksThatGoRoundInACircleAreRefused) {
    fs::create_symlink("other", m_path);
    fs::create_symlink("target.ini", m_folder.File("other"));
    EXPECT_EQ(Write("new", kWriteReplace), kWriteFailed);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("MFastFile_WriteAtOnce(): GetTempFileName() failed:" +
                                              std::to_string(ELOOP)));
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
    files.Fail(Call::kClose, EDQUOT);
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
    EXPECT_THAT(m_traces.Texts(), ElementsAre("file_rename(): MoveFileEx(" + temporary + "," +
                                                  m_path + ") failed: 13",
                                              "MFastFile_WriteAtOnce(): file_rename(" + temporary +
                                                  "," + m_path + ") failed: Permission denied"));
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
                                                  ") failed: Invalid cross-device link"));
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

TEST_F(FastFileWrite, AFullDeviceIsReported) {
    if (::access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "no /dev/full on this system";
    }
    EXPECT_EQ(MFastFile_WriteAtOnce("/dev/full", "abc", 3, kWriteOverwrite), kWriteFailed);
    EXPECT_THAT(m_traces.Texts(), ElementsAre("write64(): WriteFile() failed: 28",
                                              "MFastFile_WriteAtOnce(): write64() failed"));
}

TEST_F(FastFileWrite, AFolderThatMayNotBeWrittenIsReported) {
    Make("old");
    ASSERT_EQ(::chmod(m_path.c_str(), 0666), 0);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    const auto texts = testing::RunUnprivileged([&] {
        const std::size_t written = Write("new", kWriteReplace);
        std::string all = written == kWriteFailed ? "" : "written\n";
        for (const std::string& text : m_traces.Texts()) {
            all += text + "\n";
        }
        return all;
    });
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    if (!texts.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_EQ(*texts, "MFastFile_WriteAtOnce(): GetTempFileName() failed:13\n");
    EXPECT_EQ(Content(), "old");
}

TEST_F(FastFileWrite, AReadOnlyFileIsNotReplaced) {
    Make("old");
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod(m_path.c_str(), 0444), 0);
    const auto result = testing::RunUnprivileged([&] {
        const bool is_refused = Write("new", kWriteReplace) == kWriteFailed;
        return std::string(is_refused ? "refused, " : "written, ") +
               m_traces.Texts().front().substr(0, 12);
    });
    if (!result.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_THAT(*result, MatchesRegex("refused, (file_rename\\(|openwritefil)"));
    EXPECT_EQ(Content(), "old");
    EXPECT_THAT(Names(), ElementsAre("target.ini"));
}

TEST_F(FastFileWrite, TemporaryNamesThatAreTakenArePassedOver) {
    for (int number = 0; number < 0x10000; ++number) {
        if (number != 0x1234) {
            std::array<char, 16> name{};
            std::snprintf(name.data(), name.size(), "ffw%04X.tmp", number);
            ASSERT_EQ(::symlink("taken", m_folder.File(name.data()).c_str()), 0);
        }
    }
    FaultyFiles files;
    EXPECT_EQ(Write("new", kWriteReplace), 3U);
    EXPECT_EQ(files.written_path(), m_folder.File("ffw1234.tmp"));
    std::ofstream(m_folder.File("ffw1234.tmp")) << "";
    EXPECT_EQ(Write("more", kWriteReplace), kWriteFailed) << "no name is left";
    EXPECT_EQ(Content(), "new");
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
    EXPECT_THAT(m_traces.Texts(), ElementsAre("MFastFile_WriteLinesAtOnce(): malloc(10000) failed: "
                                              "Cannot allocate memory"));
}

}  // namespace
}  // namespace wavo
