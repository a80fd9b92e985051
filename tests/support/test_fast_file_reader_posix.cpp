// Opening files among folders, pipes and devices, and who inherits them, on POSIX systems.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "platform/last_error.h"
#include "support/fast_file.h"
#include "temporary_folder.h"
#include "unprivileged.h"

namespace wavo {
namespace {

class OpeningFiles : public ::testing::Test {
 protected:
    std::string Make(const std::string& content) {
        std::string path = m_folder.File("lines.txt");
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    testing::TemporaryFolder m_folder;
};

TEST_F(OpeningFiles, FoldersPipesAndDevicesDoNotOpen) {
    platform::FileHandle file = 0;
    EXPECT_FALSE(openfile(m_folder.path(), 0, file));
    EXPECT_EQ(file, platform::kInvalidFile);
    EXPECT_EQ(platform::LastError(), EISDIR);
    const std::string pipe = m_folder.File("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(openfile(pipe, 0, file)) << "and it does not wait for a writer";
    EXPECT_FALSE(openfile("/dev/zero", 0, file));
    EXPECT_FALSE(openfile(std::string("/etc/passwd\0.ini", 16), 0, file));
}

TEST_F(OpeningFiles, ANameIsFreeOnlyWhereThatIsCertain) {
    platform::FileOperations& files = platform::SystemFiles();
    const std::string path = Make("");
    EXPECT_TRUE(files.Exists(path));
    EXPECT_FALSE(files.Exists(m_folder.File("none")));
    EXPECT_FALSE(files.Exists(m_folder.File("no folder/none")));
    EXPECT_FALSE(files.Exists(path + "/none"));
    EXPECT_FALSE(files.Exists({}));
    ASSERT_EQ(::symlink("round", m_folder.File("round").c_str()), 0);
    EXPECT_TRUE(files.Exists(m_folder.File("round")));
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0600), 0);
    const auto seen = testing::RunUnprivileged(
        [&] { return std::string(files.Exists(m_folder.File("none")) ? "not certain" : "free"); });
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    if (!seen.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_EQ(*seen, "not certain");
}

TEST_F(OpeningFiles, AFileForReadingIsInheritedAndOneForWritingIsNot) {
    platform::FileHandle reading = 0;
    ASSERT_TRUE(openfile(Make("x"), 0, reading));
    EXPECT_EQ(::fcntl(static_cast<int>(reading), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_TRUE(platform::Files().Close(reading));
    const platform::FileHandle writing = openwritefile(m_folder.File("new"), kWriteNew);
    ASSERT_NE(writing, platform::kInvalidFile);
    EXPECT_NE(::fcntl(static_cast<int>(writing), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_TRUE(platform::Files().Close(writing));
}

}  // namespace
}  // namespace wavo
