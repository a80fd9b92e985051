// Writing whole files where permissions, links and devices are those of POSIX.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "fast_file_fixture.h"
#include "faulty_files.h"
#include "unprivileged.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using testing::FastFileWrite;
using testing::FaultyFiles;
using ::testing::MatchesRegex;
using ::testing::UnorderedElementsAre;

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

}  // namespace
}  // namespace wavo
