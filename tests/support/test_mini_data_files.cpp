// Saving stores: to files that stay whole whatever fails and whoever else saves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "expect_errors.h"
#include "failing_malloc.h"
#include "faulty_files.h"
#include "mini_data_fixture.h"
#include "platform/last_error.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FailingMalloc;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using testing::MiniDataFiles;

constexpr unsigned kSafe = MIniData::kSaveFlush | MIniData::kSaveSafe;

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
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("file_rename(): MoveFileEx(" + paths + ") failed: 13",
                            "MFastFile_WriteAtOnce(): file_rename(" + paths +
                                ") failed: " + platform::ErrorText(EACCES),
                            "MFastFile_WriteLinesAtOnce(): MFastFile_WriteAtOnce(\"" + m_path +
                                "\",..,10,14) failed",
                            "MIniData::Save(): MFastFile_WriteLinesAtOnce(\"" +
                                m_path.substr(0, 40) + "\") failed"));
    EXPECT_EQ(store.LastErrorText(),
              "MFastFile_WriteLinesAtOnce() failed: " + platform::ErrorText(EACCES));
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
              "MFastFile_WriteLinesAtOnce() failed: " + platform::ErrorText(ENOSPC));
    EXPECT_EQ(m_traces.Texts()[3], "write64(): WriteFile() failed: 28");
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
    EXPECT_THAT(m_traces.Texts(), ElementsAre("MIniData::Save(): out of memory (" +
                                              platform::ErrorText(ENOMEM).substr(0, 50) + ")"));
    EXPECT_EQ(Content(), "[A]\r\nx=1\r\n");
    EXPECT_TRUE(store.Save());
}

}  // namespace
}  // namespace wavo
