#include "support/log_file.h"

#include <gtest/gtest.h>

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

TEST(LogFile, ALongLineIsWrittenWhole) {
    const TemporaryFolder folder;
    const std::string line(100000, 'x');
    AppendToLog(folder.File("log"), line, 1000000);
    EXPECT_EQ(folder.Read("log"), line);
}

}  // namespace

}  // namespace wavo::diagnostics
