// Logs that another process writes too, and disks without room, on POSIX systems.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/log_file.h"
#include "temporary_folder.h"

namespace wavo::diagnostics {

using testing::TemporaryFolder;

namespace {

TEST(LogFilePosix, AFloodFromTwoProcessesStaysWithinTheLimitAndKeepsLinesWhole) {
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

TEST(LogFilePosix, AFolderThatIsFullOrGoneTroublesNobody) {
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

}  // namespace
}  // namespace wavo::diagnostics
