#include "support/log_file.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "temporary_folder.h"

namespace wavo::diagnostics {

using testing::TemporaryFolder;

namespace {

TEST(LogFile, LinesAreAppended) {
    const TemporaryFolder folder;
    AppendToLog(folder.File("log"), "one\n", 100);
    AppendToLog(folder.File("log"), "two\n", 100);
    EXPECT_EQ(folder.Read("log"), "one\ntwo\n");
}

TEST(LogFile, FillsUpToTheLimitExactly) {
    const TemporaryFolder folder;
    AppendToLog(folder.File("log"), "1234\n", 10);
    AppendToLog(folder.File("log"), "5678\n", 10);
    EXPECT_EQ(folder.Read("log"), "1234\n5678\n");
    AppendToLog(folder.File("log"), "9\n", 10);
    EXPECT_EQ(folder.Read("log"), "9\n");
    EXPECT_EQ(folder.Read("log.1"), "1234\n5678\n");
}

TEST(LogFile, IsMovedAsideWhenItHasReachedTheLimit) {
    const TemporaryFolder folder;
    AppendToLog(folder.File("log"), "1234\n", 100);
    RotateLog(folder.File("log"), 6);
    EXPECT_EQ(folder.Read("log"), "1234\n");
    RotateLog(folder.File("log"), 5);
    EXPECT_FALSE(std::filesystem::exists(folder.File("log")));
    EXPECT_EQ(folder.Read("log.1"), "1234\n");
    RotateLog(folder.File("log"), 0);
    EXPECT_EQ(folder.Read("log.1"), "1234\n") << "nothing to move";
}

TEST(LogFile, KeepsItsLimitWhenTheOldGenerationCannotBeReplaced) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.File("log.1/full"));
    AppendToLog(folder.File("log"), "1234\n", 6);
    AppendToLog(folder.File("log"), "5678\n", 6);
    EXPECT_EQ(folder.Read("log"), "5678\n");
}

TEST(LogFile, AFileThatWasTakenAwayIsMadeAnew) {
    const TemporaryFolder folder;
    AppendToLog(folder.File("log"), "one\n", 100);
    std::filesystem::remove(folder.File("log"));
    AppendToLog(folder.File("log"), "two\n", 100);
    EXPECT_EQ(folder.Read("log"), "two\n");
}

TEST(LogFile, AFloodFromTwoProcessesStaysWithinTheLimitAndKeepsLinesWhole) {
    constexpr std::size_t kLimit = 100'000;
    constexpr int kLines = 20'000;
    const TemporaryFolder folder;
    const auto flood = [&folder](char sign) {
        const std::string line = std::string(79, sign) + "\n";
        for (int i = 0; i < kLines; ++i) {
            AppendToLog(folder.File("log"), line, kLimit);
        }
    };
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        flood('b');
        ::_exit(0);
    }
    flood('a');
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    std::size_t names = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        // Each process may have looked before the other one wrote.
        EXPECT_LE(entry.file_size(), kLimit + 80);
        ++names;
    }
    EXPECT_LE(names, 2U);
    for (const char* const name : {"log", "log.1"}) {
        for (const std::string& line : folder.Lines(name)) {
            ASSERT_TRUE(line == std::string(79, 'a') || line == std::string(79, 'b')) << line;
        }
    }
}

TEST(LogFile, AFolderThatIsFullOrGoneTroublesNobody) {
    const TemporaryFolder folder;
    if (::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=16k") != 0) {
        GTEST_SKIP() << "needs the right to mount a small disk";
    }
    const std::string line = std::string(79, 'x') + "\n";
    for (int i = 0; i < 2000; ++i) {
        AppendToLog(folder.File("log"), line, 1'000'000);
    }
    EXPECT_LE(folder.Read("log").size(), 16384U);
    EXPECT_GT(folder.Read("log").size(), 4000U);
    std::filesystem::remove(folder.File("log"));
    AppendToLog(folder.File("log"), line, 1'000'000);
    EXPECT_EQ(folder.Read("log"), line) << "it goes on as soon as there is room";
    EXPECT_EQ(::umount(folder.path().c_str()), 0);
    std::filesystem::remove(folder.path());
    AppendToLog(folder.File("log"), line, 1'000'000);
    EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

TEST(LogFile, ALongLineIsWrittenWhole) {
    const TemporaryFolder folder;
    const std::string line(100000, 'x');
    AppendToLog(folder.File("log"), line, 1000000);
    EXPECT_EQ(folder.Read("log"), line);
}

}  // namespace

}  // namespace wavo::diagnostics
