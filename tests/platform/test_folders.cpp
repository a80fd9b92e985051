#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "window_fixture.h"

namespace wavo::platform {

using testing::ScopedVariable;
using testing::TemporaryFolder;

namespace {

mode_t PermissionsOf(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST(Folders, DataFolderIsTheMakersUnderTheUsersDataHomeAndIsCreated) {
    const TemporaryFolder base;
    const ScopedVariable home("XDG_DATA_HOME", (base.path() + "/a/b").c_str());
    EXPECT_EQ(DataFolder(), base.path() + "/a/b/Velk");
    EXPECT_TRUE(std::filesystem::is_directory(base.path() + "/a/b/Velk"));
    EXPECT_EQ(PermissionsOf(base.path() + "/a/b/Velk"), 0700U);
    EXPECT_EQ(DataFolder(), base.path() + "/a/b/Velk") << "a second time, when it exists";
}

TEST(Folders, StateFolderIsTheMakersUnderTheUsersStateHomeAndIsCreated) {
    const TemporaryFolder base;
    const ScopedVariable home("XDG_STATE_HOME", (base.path() + "/state/").c_str());
    EXPECT_EQ(StateFolder(), base.path() + "/state/Velk");
    EXPECT_TRUE(std::filesystem::is_directory(base.path() + "/state/Velk"));
}

TEST(Folders, LieInTheHomeFolderWhenNothingElseIsSaid) {
    const TemporaryFolder base;
    const ScopedVariable home("HOME", base.path().c_str());
    const ScopedVariable data("XDG_DATA_HOME", nullptr);
    const ScopedVariable state("XDG_STATE_HOME", nullptr);
    const ScopedVariable cache("XDG_CACHE_HOME", nullptr);
    EXPECT_EQ(DataFolder(), base.path() + "/.local/share/Velk");
    EXPECT_EQ(StateFolder(), base.path() + "/.local/state/Velk");
    EXPECT_EQ(CacheFolder(), base.path() + "/.cache/Velk");
    EXPECT_EQ(PermissionsOf(base.path() + "/.cache/Velk"), 0700U);
}

TEST(Folders, ARelativePathCountsAsNotSet) {
    const TemporaryFolder base;
    const ScopedVariable home("HOME", base.path().c_str());
    const ScopedVariable data("XDG_DATA_HOME", "relative/path");
    EXPECT_EQ(DataFolder(), base.path() + "/.local/share/Velk");
}

TEST(Folders, AreEmptyWithAReasonWhenTheyCannotBeCreated) {
    const TemporaryFolder base;
    std::ofstream(base.path() + "/file") << "in the way";
    const ScopedVariable home("XDG_DATA_HOME", (base.path() + "/file").c_str());
    EXPECT_EQ(DataFolder(), "");
    EXPECT_EQ(LastError(), ENOTDIR);
}

TEST(Folders, AFileInThePlaceOfTheFolderIsAFailure) {
    const TemporaryFolder base;
    std::ofstream(base.path() + "/Velk") << "in the way";
    const ScopedVariable home("XDG_DATA_HOME", base.path().c_str());
    EXPECT_EQ(DataFolder(), "");
    EXPECT_EQ(LastError(), ENOTDIR);
}

TEST(Folders, TheSeparatorIsASlash) {
    EXPECT_EQ(PathSeparator(), "/");
}

}  // namespace

}  // namespace wavo::platform
