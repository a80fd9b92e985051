// Logs that another process writes too, and disks without room, on POSIX systems.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/diagnostics.h"
#include "support/diagnostics_output.h"
#include "support/log_file.h"
#include "temporary_folder.h"
#include "unprivileged.h"

namespace wavo::diagnostics {

using testing::TemporaryFolder;

namespace {

TEST(LogFilePosix, CountsOfRepeatedEntriesAreWrittenAtTheEndOfTheProcess) {
    const TemporaryFolder folder;
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        SetLogFolder(folder.path());
        for (int i = 0; i < 5; ++i) {
            MERRLOG("entry");
        }
        std::exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_TRUE(WIFEXITED(status));
    const std::vector<std::string> lines = folder.Lines("wavo_error.log");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].ends_with("): entry")) << lines[0];
    EXPECT_TRUE(lines[1].ends_with("): entry ... 4 times more")) << lines[1];
}

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
    bool is_written = true;
    for (int i = 0; i < 2000; ++i) {
        is_written = AppendToLog(folder.File("log"), line, 1'000'000);
    }
    EXPECT_FALSE(is_written);
    EXPECT_LE(folder.Read("log").size(), 16384U);
    EXPECT_GT(folder.Read("log").size(), 4000U);
    std::filesystem::remove(folder.File("log"));
    EXPECT_TRUE(AppendToLog(folder.File("log"), line, 1'000'000));
    EXPECT_EQ(folder.Read("log"), line) << "it goes on as soon as there is room";
    EXPECT_EQ(::umount(folder.path().c_str()), 0);
    std::filesystem::remove(folder.path());
    EXPECT_FALSE(AppendToLog(folder.File("log"), line, 1'000'000));
    EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

// A limit of the size of files stands in for a disk without room: what does not fit is not written.
TEST(LogFilePosix, WhatHadNoRoomIsToldAndTheNextLineIsWhole) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    const std::optional<std::string> told = testing::RunUnprivileged([&folder] {
        std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit limit {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const struct rlimit before = limit;
        limit.rlim_cur = 14;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::string text;
        const auto append = [&](const char* line) {
            text += AppendToLog(folder.File("log"), line, 1000) ? "written " : "lost ";
        };
        append("11111111\n");
        append("22222222\n");
        append("33333333\n");
        ::setrlimit(RLIMIT_FSIZE, &before);
        append("44444444\n");
        return text;
    });
    ASSERT_TRUE(told.has_value());
    EXPECT_EQ(*told, "written lost lost written ");
    EXPECT_EQ(folder.Read("log"), "11111111\n22222\n44444444\n");
}

TEST(LogFilePosix, KeepsItsLimitInAFolderThatMayNotBeWritten) {
    const TemporaryFolder folder;
    ASSERT_TRUE(AppendToLog(folder.File("log"), "12345678\n", 10));
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    const auto append = [&folder](const char* line) {
        return testing::RunUnprivileged([&] {
            return std::string(AppendToLog(folder.File("log"), line, 10) ? "written" : "lost");
        });
    };
    ASSERT_EQ(::chmod(folder.File("log").c_str(), 0666), 0);
    EXPECT_EQ(append("new\n"), "written") << "in the place of the old ones";
    EXPECT_EQ(folder.Read("log"), "new\n");
    EXPECT_EQ(append("newer\n"), "written");
    ASSERT_EQ(::chmod(folder.File("log").c_str(), 0444), 0);
    EXPECT_EQ(append("newest\n"), "lost");
    EXPECT_EQ(folder.Read("log"), "new\nnewer\n");
    EXPECT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    EXPECT_FALSE(std::filesystem::exists(folder.File("log.1")));
}

}  // namespace
}  // namespace wavo::diagnostics
