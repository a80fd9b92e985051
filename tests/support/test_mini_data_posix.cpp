// Stores in files that may not be read or written, or that several processes save, on POSIX
// systems.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "mini_data_fixture.h"
#include "unprivileged.h"

namespace wavo {
namespace {

using testing::MiniDataFiles;

constexpr unsigned kSafeSave = MIniData::kSaveFlush | MIniData::kSaveSafe;

TEST_F(MiniDataFiles, AFileThatMayNotBeReadFailsToOpen) {
    std::ofstream(m_path) << "[A]\nx=1\n";
    ASSERT_EQ(::chmod(m_path.c_str(), 0), 0);
    const auto texts = testing::RunUnprivileged([&] {
        MIniData store;
        std::string all = store.Open(m_path) ? "opened" : store.LastErrorText();
        return all + "\n" + m_traces.Texts().back();
    });
    if (!texts.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_EQ(*texts,
              "MFastFileReader::Open() failed: Permission denied\n"
              "MIniData::Open(): MFastFileReader::Open() failed");
}

TEST_F(MiniDataFiles, AStoreInAFolderThatMayNotBeWrittenIsNotSaved) {
    Make("[A]\r\nx=1\r\n");
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    const auto text = testing::RunUnprivileged([&] {
        MIniData store(kSafeSave);
        const bool is_open = store.Open(m_path) && store.SetLongEntry("A", "x", 2);
        return is_open && !store.Save() ? store.LastErrorText() : std::string("saved");
    });
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    if (!text.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_EQ(*text, "MFastFile_WriteLinesAtOnce() failed: Permission denied");
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
}

/// Saves a file of many lines that all hold `mark`, over and over.
int SaveOver(const std::string& path, char mark, int times) {
    for (int i = 0; i < times; ++i) {
        MIniData store(kSafeSave);
        if (!store.Open(path)) {
            return 1;  // somebody saw half a file
        }
        store.Clear();
        for (int line = 0; line < 500; ++line) {
            store.SetStringEntry("A", "x" + std::to_string(line), std::string(20, mark));
        }
        if (!store.Save()) {
            return 2;
        }
    }
    return 0;
}

TEST_F(MiniDataFiles, TwoProcessesThatSaveOneFileLeaveOneWholeFile) {
    std::array<pid_t, 2> children{};
    for (std::size_t i = 0; i < children.size(); ++i) {
        children[i] = ::fork();
        ASSERT_GE(children[i], 0);
        if (children[i] == 0) {
            ::_exit(SaveOver(m_path, i == 0 ? 'a' : 'b', 40));
        }
    }
    int seen = 0;
    for (std::size_t running = children.size(); running > 0;) {
        MIniData store;
        ASSERT_TRUE(store.Open(m_path)) << store.LastErrorText();
        if (!store.HasNoFileContent()) {
            ++seen;
            const std::string content = store.Content();
            const bool has_a = content.find("=aaaaaaaaaaaaaaaaaaaa\r") != std::string::npos;
            const bool has_b = content.find("=bbbbbbbbbbbbbbbbbbbb\r") != std::string::npos;
            ASSERT_NE(has_a, has_b) << "all of one";
            ASSERT_EQ(store.EntryNames("A").size(), 500U);
        }
        int status = 0;
        if (::waitpid(-1, &status, WNOHANG) > 0) {
            --running;
            EXPECT_TRUE(WIFEXITED(status));
            EXPECT_EQ(WEXITSTATUS(status), 0);
        }
    }
    EXPECT_GT(seen, 0);
    EXPECT_EQ(FileCount(), 1U) << "no temporary file is left";
}

}  // namespace
}  // namespace wavo
