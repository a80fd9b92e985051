// Saving stores: to files that stay whole whatever fails and whoever else saves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "expect_errors.h"
#include "failing_malloc.h"
#include "faulty_files.h"
#include "support/mini_data.h"
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

constexpr unsigned kSafe = MIniData::kSaveFlush | MIniData::kSaveSafe;

class MiniDataFiles : public ::testing::Test {
 protected:
    MiniDataFiles() : m_path(m_folder.File("store.ini")) {}

    void Make(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    std::string Content() const { return m_folder.Read("store.ini"); }
    std::size_t FileCount() const {
        const fs::directory_iterator files(m_folder.path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    testing::TemporaryFolder m_folder;
    const std::string m_path;
    const CollectReports m_traces{Service::kErrorTrace};
};

TEST_F(MiniDataFiles, ANewStoreIsSavedWithItsFile) {
    MIniData store(kSafe);
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.SetLongEntry("A", "x", 1));
    ASSERT_TRUE(store.Save());
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
    EXPECT_FALSE(store.IsNew());
    EXPECT_TRUE(store.IsLoaded());
    EXPECT_FALSE(store.HasNoFileContent());
    EXPECT_EQ(FileCount(), 1U);
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
}

TEST_F(MiniDataFiles, AHandMadeFileKeepsEverythingThatWasNotSet) {
    Make(
        "; made by hand\n\t\n[OTHER]   ; unknown\nkey with blanks = kept as it is  \n"
        "# more\n[A]\nunknown=1\n x = 2\n  \n*end");
    MIniData store(kSafe);
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.SetLongEntry("A", "x", 5));
    ASSERT_TRUE(store.SetLongEntry("A", "y", 6));
    ASSERT_TRUE(store.Save());
    EXPECT_EQ(Content(),
              "; made by hand\r\n\t\r\n[OTHER]   ; unknown\r\nkey with blanks = kept as it is  \r\n"
              "# more\r\n[A]\r\nunknown=1\r\n x = 5\r\n  \r\n*end\r\ny=6\r\n");
}

TEST_F(MiniDataFiles, AnUnchangedStoreIsWrittenByteForByte) {
    const std::string content = ";c\r\n[A]\r\nx = 1\r\n";
    Make(content);
    MIniData store;
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.Save());
    EXPECT_EQ(Content(), content);
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.SetLongEntry("A", "y", 1));
    ASSERT_TRUE(store.Save());
    const std::string once = Content();
    ASSERT_TRUE(store.Save());
    EXPECT_EQ(Content(), once);
}

TEST_F(MiniDataFiles, TheOptionsChooseHowItIsSaved) {
    FaultyFiles files;
    MIniData plain;
    ASSERT_TRUE(plain.Open(m_path));
    ASSERT_TRUE(plain.Save());
    EXPECT_THAT(files.calls(), ElementsAre("open", "close"));
    EXPECT_FALSE(files.write_through());
    MIniData flushed(MIniData::kSaveFlush | MIniData::kReplaceSections);
    ASSERT_TRUE(flushed.Open(m_path));
    ASSERT_TRUE(flushed.Save());
    EXPECT_TRUE(files.write_through());
    MIniData safe(MIniData::kSaveSafe);
    ASSERT_TRUE(safe.Open(m_path));
    ASSERT_TRUE(safe.Save());
    EXPECT_EQ(files.calls().back(), "rename");
}

TEST_F(MiniDataFiles, AFailedSaveIsReportedUpToTheStore) {
    Make("[A]\r\nx=1\r\n");
    MIniData store(kSafe);
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.SetLongEntry("A", "x", 2));
    FaultyFiles files;
    files.Fail(Call::kRename, EACCES);
    EXPECT_FALSE(store.Save());
    const std::string paths = files.written_path() + "," + m_path;
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre("file_rename(): MoveFileEx(" + paths + ") failed: 13",
                    "MFastFile_WriteAtOnce(): file_rename(" + paths + ") failed: Permission denied",
                    "MFastFile_WriteLinesAtOnce(): MFastFile_WriteAtOnce(\"" + m_path +
                        "\",..,10,14) failed",
                    "MIniData::Save(): MFastFile_WriteLinesAtOnce(\"" + m_path.substr(0, 40) +
                        "\") failed"));
    EXPECT_EQ(store.LastErrorText(), "MFastFile_WriteLinesAtOnce() failed: Permission denied");
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
    EXPECT_TRUE(store.IsNew()) << "still to be saved";
    EXPECT_TRUE(store.Save()) << "and it can be";
    EXPECT_EQ(Content(), "[A]\r\nx=2\r\n");
    EXPECT_EQ(FileCount(), 1U);
}

TEST_F(MiniDataFiles, AFullDiskIsReported) {
    Make("[A]\r\nx=1\r\n");
    MIniData store(kSafe);
    ASSERT_TRUE(store.Open(m_path));
    FaultyFiles files;
    files.Fail(Call::kName, ENOSPC);
    EXPECT_FALSE(store.Save()) << "no room for another file";
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
    files.LimitSpace(5, ENOSPC);
    EXPECT_FALSE(store.Save());
    EXPECT_EQ(store.LastErrorText(),
              "MFastFile_WriteLinesAtOnce() failed: No space left on device");
    EXPECT_EQ(m_traces.Texts()[3], "write64(): WriteFile() failed: 28");
}

TEST_F(MiniDataFiles, AStoreInAFolderThatMayNotBeWrittenIsNotSaved) {
    Make("[A]\r\nx=1\r\n");
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    const auto text = testing::RunUnprivileged([&] {
        MIniData store(kSafe);
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

TEST_F(MiniDataFiles, AStoreThatCannotBeReadIsSavedEmptyOnlyWhenAsked) {
    Make("rubbish");
    MIniData store(kSafe);
    EXPECT_FALSE(store.Open(m_path));
    EXPECT_EQ(Content(), "rubbish");
    store.Clear();
    ASSERT_TRUE(store.SetLongEntry("A", "x", 1));
    ASSERT_TRUE(store.Save());
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
}

TEST_F(MiniDataFiles, WithoutMemoryForTheContentNothingIsSaved) {
    Make("[A]\r\nx=1\r\n");
    MIniData store;
    ASSERT_TRUE(store.Open(m_path));
    ASSERT_TRUE(store.SetStringEntry("A", "x", std::string(5000, 'v')));
    {
        const FailingMalloc no_memory(5000, 6000);
        EXPECT_FALSE(store.Save());
        EXPECT_EQ(no_memory.failed(), 1);
    }
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MIniData::Save(): out of memory (Cannot allocate memory)"));
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
    EXPECT_TRUE(store.Save());
}

/// Saves a file of many lines that all hold `mark`, over and over.
int SaveOver(const std::string& path, char mark, int times) {
    for (int i = 0; i < times; ++i) {
        MIniData store(kSafe);
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
