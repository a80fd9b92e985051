#include "support/log_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

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

// As viewers do that share their logs: each opens the file for each line.
TEST(LogFile, OfSeveralWritersNoLineIsLost) {
    constexpr int kLines = 300;
    const TemporaryFolder folder;
    const std::string path = folder.File("log");
    std::vector<std::thread> writers;
    for (const char name : {'a', 'b', 'c'}) {
        writers.emplace_back([&path, name] {
            for (int i = 0; i < kLines; ++i) {
                EXPECT_TRUE(AppendToLog(path, std::string(50, name) + "\n", 1U << 20U));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    std::map<std::string, int> lines;
    std::istringstream text(folder.Read("log"));
    for (std::string line; std::getline(text, line);) {
        ++lines[line];
    }
    for (const char name : {'a', 'b', 'c'}) {
        EXPECT_EQ(lines[std::string(50, name)], kLines);
    }
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

TEST(LogFile, TellsWhetherALineWasWritten) {
    const TemporaryFolder folder;
    EXPECT_TRUE(AppendToLog(folder.File("log"), "one\n", 100));
    EXPECT_TRUE(AppendToLog(folder.File("log"), "two\n", 4));
    EXPECT_FALSE(AppendToLog(folder.File("no folder/log"), "three\n", 100));
    EXPECT_FALSE(AppendToLog(folder.path(), "three\n", 100));
}

TEST(LogFile, BehindAHalfLineTheNextOneBeginsOnANewLine) {
    const TemporaryFolder folder;
    std::ofstream(folder.File("log"), std::ios::binary) << "one\ntw";
    EXPECT_TRUE(AppendToLog(folder.File("log"), "three\n", 100));
    EXPECT_TRUE(AppendToLog(folder.File("log"), "four\n", 100));
    EXPECT_EQ(folder.Read("log"), "one\ntw\nthree\nfour\n");
}

TEST(LogFile, TheEndOfAHalfLineCountsForTheLimit) {
    const TemporaryFolder folder;
    for (const std::size_t limit : {9U, 8U}) {
        std::ofstream(folder.File("log"), std::ios::binary) << "half";
        EXPECT_TRUE(AppendToLog(folder.File("log"), "567\n", limit));
        EXPECT_EQ(folder.Read("log"), limit == 9 ? "half\n567\n" : "567\n");
    }
    EXPECT_EQ(folder.Read("log.1"), "half");
}

TEST(LogFile, ALongLineIsWrittenWhole) {
    const TemporaryFolder folder;
    const std::string line(100000, 'x');
    AppendToLog(folder.File("log"), line, 1000000);
    EXPECT_EQ(folder.Read("log"), line);
}

}  // namespace

}  // namespace wavo::diagnostics
