// Files of Windows: sharing, inheritance, temporary names, rename, and paths of any characters.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "platform/file.h"
#include "platform/last_error.h"
#include "platform/win32/wide.h"
#include "support/temporary_folder.h"

namespace wavo::platform {
namespace {

class WindowsFile : public ::testing::Test {
 protected:
    void Make(const std::string& name, const std::string& content) {
        const FileHandle file =
            m_files.OpenForWriting(m_folder.File(name), Creation::kCreateAlways, false);
        std::size_t count = 0;
        ASSERT_TRUE(m_files.Write(file, content.data(), content.size(), count));
        ASSERT_TRUE(m_files.Close(file));
    }
    std::string Content(const std::string& name) {
        const FileHandle file = m_files.OpenForReading(m_folder.File(name));
        std::array<char, 100> text{};
        std::size_t count = 0;
        EXPECT_TRUE(m_files.Read(file, text.data(), text.size(), count));
        EXPECT_EQ(m_files.Size(file), count);
        EXPECT_TRUE(m_files.Close(file));
        return {text.data(), count};
    }
    static HANDLE HandleOf(FileHandle file) { return reinterpret_cast<HANDLE>(file); }

    FileOperations& m_files = SystemFiles();
    const testing::TemporaryFolder m_folder;
};

TEST_F(WindowsFile, NamesOfAnyCharactersAreWrittenReadRenamedAndRemoved) {
    const std::string name = "\xC3\xA4 \xE6\x97\xA5\xE6\x9C\xAC.ini";
    Make(name, "content");
    EXPECT_EQ(Content(name), "content");
    EXPECT_TRUE(m_files.Exists(m_folder.File(name)));
    EXPECT_NE(::GetFileAttributesW(Wide(m_folder.File(name)).c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(m_files.Rename(m_folder.File(name), m_folder.File("\xD0\xB6")));
    EXPECT_EQ(Content("\xD0\xB6"), "content");
    EXPECT_TRUE(m_files.Remove(m_folder.File("\xD0\xB6")));
    EXPECT_FALSE(m_files.Exists(m_folder.File("\xD0\xB6")));
}

TEST_F(WindowsFile, AFileForReadingIsSharedWithWritersAndInherited) {
    Make("a", "x");
    const FileHandle reading = m_files.OpenForReading(m_folder.File("a"));
    DWORD flags = 0;
    ASSERT_NE(::GetHandleInformation(HandleOf(reading), &flags), 0);
    EXPECT_NE(flags & HANDLE_FLAG_INHERIT, 0U);
    const FileHandle writing =
        m_files.OpenForWriting(m_folder.File("a"), Creation::kOpenAlways, false);
    EXPECT_NE(writing, kInvalidFile);
    EXPECT_TRUE(m_files.Close(writing));
    EXPECT_TRUE(m_files.Close(reading));
}

TEST_F(WindowsFile, AFileForWritingIsNotInheritedAndSharedWithReadersOnly) {
    const std::string path = m_folder.File("a");
    const FileHandle writing = m_files.OpenForWriting(path, Creation::kCreateNew, true);
    ASSERT_NE(writing, kInvalidFile);
    DWORD flags = 0;
    ASSERT_NE(::GetHandleInformation(HandleOf(writing), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
    EXPECT_EQ(m_files.OpenForWriting(path, Creation::kOpenAlways, false), kInvalidFile);
    EXPECT_EQ(LastError(), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(m_files.Flush(writing));
    const FileHandle reading = m_files.OpenForReading(path);
    EXPECT_NE(reading, kInvalidFile);
    m_files.Close(reading);
    EXPECT_TRUE(m_files.Close(writing));
    EXPECT_EQ(m_files.OpenForWriting(path, Creation::kCreateNew, false), kInvalidFile);
    EXPECT_EQ(LastError(), ERROR_FILE_EXISTS);
}

TEST_F(WindowsFile, AppendingWritesToTheEndAndCreatingEmptiesTheFile) {
    Make("a", "old content");
    for (const char* const piece : {"1", "2"}) {
        const FileHandle file =
            m_files.OpenForWriting(m_folder.File("a"), Creation::kOpenAlways, true);
        std::size_t count = 0;
        EXPECT_TRUE(m_files.Write(file, piece, 1, count));
        EXPECT_TRUE(m_files.Flush(file));
        EXPECT_TRUE(m_files.Close(file));
    }
    EXPECT_EQ(Content("a"), "old content12");
    Make("a", "new");
    EXPECT_EQ(Content("a"), "new");
}

TEST_F(WindowsFile, FoldersDevicesAndPathsWithANulDoNotOpen) {
    EXPECT_EQ(m_files.OpenForReading(m_folder.path()), kInvalidFile);
    EXPECT_EQ(LastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(m_files.OpenForReading("NUL"), kInvalidFile);
    EXPECT_EQ(LastError(), ERROR_BAD_FILE_TYPE);
    const std::string with_nul("a\0b", 3);
    EXPECT_EQ(m_files.OpenForReading(with_nul), kInvalidFile);
    EXPECT_EQ(LastError(), ERROR_INVALID_NAME);
    EXPECT_EQ(m_files.OpenForWriting(with_nul, Creation::kCreateAlways, false), kInvalidFile);
    EXPECT_FALSE(m_files.Rename(with_nul, "c"));
    EXPECT_FALSE(m_files.Exists(with_nul));
}

TEST_F(WindowsFile, ATemporaryFileIsMadeInItsFolderWithADigitName) {
    std::array<char, 512> name{};
    ASSERT_TRUE(m_files.CreateTemporaryFile(m_folder.path() + "\\", "ffw", "", name.data()));
    const std::string path = name.data();
    EXPECT_TRUE(path.starts_with(m_folder.path() + "\\ffw"));
    EXPECT_EQ(path.size(), m_folder.path().size() + 1 + 3 + 8);
    EXPECT_TRUE(m_files.Exists(path));
    EXPECT_FALSE(m_files.CreateTemporaryFile("C:\\no such folder\\", "ffw", "", name.data()));
    EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
}

TEST_F(WindowsFile, ARenameReplacesAFileButNoFolderAndNoReadOnlyFile) {
    Make("from", "new");
    Make("to", "old");
    EXPECT_TRUE(m_files.Rename(m_folder.File("from"), m_folder.File("to")));
    EXPECT_EQ(Content("to"), "new");
    Make("from", "newer");
    ASSERT_NE(::CreateDirectoryW(Wide(m_folder.File("folder")).c_str(), nullptr), 0);
    EXPECT_FALSE(m_files.Rename(m_folder.File("from"), m_folder.File("folder")));
    const std::wstring to = Wide(m_folder.File("to"));
    ASSERT_NE(::SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    EXPECT_FALSE(m_files.Rename(m_folder.File("from"), m_folder.File("to")));
    EXPECT_EQ(LastError(), ERROR_ACCESS_DENIED);
    ASSERT_NE(::SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL), 0);
    EXPECT_EQ(Content("to"), "new");
}

TEST_F(WindowsFile, APathThatIsNoLinkLeadsToItself) {
    Make("a", "x");
    EXPECT_EQ(m_files.FollowLinks(m_folder.File("a")), m_folder.File("a"));
    EXPECT_EQ(m_files.FollowLinks(m_folder.File("none")), m_folder.File("none"));
}

}  // namespace
}  // namespace wavo::platform
