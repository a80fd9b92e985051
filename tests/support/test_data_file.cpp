// Data files: appended, synced, read at any place, shared with everybody.
#include "platform/data_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/folders.h"
#include "temporary_folder.h"

namespace wavo::platform {
namespace {

using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;

class DataFile : public ::testing::Test {
 protected:
    FileHandle Create(const std::string& name) {
        bool exists = false;
        return m_files.CreateNew(m_folder.File(name), exists);
    }
    std::string ReadAt(FileHandle file, std::uint64_t offset, std::size_t size) {
        std::string text(size, '?');
        std::size_t count = 0;
        EXPECT_TRUE(m_files.ReadAt(file, offset, text.data(), size, count));
        return text.substr(0, count);
    }

    TemporaryFolder m_folder;
    DataFileOperations& m_files = DataFiles();
};

TEST_F(DataFile, IsReadAsItIsAlsoWhereThatWasAnnounced) {
    const FileHandle file = Create("a.mcap");
    ASSERT_TRUE(m_files.Append(file, "hello", 5));
    m_files.WillRead(file, 1, 3);
    m_files.WillRead(file, 4, 1000000);
    m_files.WillRead(file, ~std::uint64_t{0}, 5);
    m_files.WillRead(file, std::uint64_t{1} << 62U, std::size_t{1} << 62U);
    m_files.WillRead(kInvalidFile, 0, 5);
    EXPECT_EQ(ReadAt(file, 1, 3), "ell");
    EXPECT_TRUE(m_files.Close(file));
}

TEST_F(DataFile, IsAppendedToAndReadAtAnyPlace) {
    const FileHandle file = Create("a.mcap");
    ASSERT_NE(file, kInvalidFile);
    EXPECT_TRUE(m_files.Append(file, "hello ", 6));
    EXPECT_TRUE(m_files.Append(file, "", 0));
    EXPECT_EQ(ReadAt(file, 1, 3), "ell") << "reading moves no place of writing";
    EXPECT_TRUE(m_files.Append(file, "world", 5));
    EXPECT_TRUE(m_files.Sync(file));
    std::uint64_t size = 0;
    EXPECT_TRUE(m_files.Size(file, size));
    EXPECT_EQ(size, 11U);
    const FileHandle reader = m_files.OpenForReading(m_folder.File("a.mcap"));
    ASSERT_NE(reader, kInvalidFile);
    EXPECT_EQ(ReadAt(reader, 4, 4), "o wo");
    EXPECT_EQ(ReadAt(reader, 9, 10), "ld") << "what there is before the end";
    EXPECT_EQ(ReadAt(reader, 11, 1), "");
    EXPECT_EQ(ReadAt(reader, std::uint64_t{1} << 62U, 1), "");
    EXPECT_EQ(ReadAt(reader, ~std::uint64_t{0}, 1), "");
    EXPECT_TRUE(m_files.Append(file, "!", 1)) << "also while it is read";
    EXPECT_EQ(ReadAt(reader, 11, 1), "!");
    EXPECT_TRUE(m_files.Close(reader));
    EXPECT_TRUE(m_files.Close(file));
}

TEST_F(DataFile, NeverTakesThePlaceOfAnother) {
    std::ofstream(m_folder.File("a.mcap")) << "old";
    bool exists = false;
    EXPECT_EQ(m_files.CreateNew(m_folder.File("a.mcap"), exists), kInvalidFile);
    EXPECT_TRUE(exists);
    EXPECT_EQ(m_folder.Read("a.mcap"), "old");
    EXPECT_EQ(m_files.CreateNew(m_folder.File("none/a.mcap"), exists), kInvalidFile);
    EXPECT_FALSE(exists);
    EXPECT_EQ(m_files.CreateNew(std::string("a\0b", 3), exists), kInvalidFile);
    EXPECT_FALSE(exists);
}

TEST_F(DataFile, OnlyRegularFilesOpen) {
    EXPECT_EQ(m_files.OpenForReading(m_folder.path()), kInvalidFile);
    EXPECT_EQ(m_files.OpenForReading(m_folder.File("none")), kInvalidFile);
    EXPECT_EQ(m_files.OpenForReading(std::string("a\0b", 3)), kInvalidFile);
}

TEST_F(DataFile, WhatIsWrittenIsNotRemoved) {
    const std::string path = m_folder.File("a.mcap");
    const FileHandle file = Create("a.mcap");
    ASSERT_NE(file, kInvalidFile);
    EXPECT_FALSE(m_files.RemoveUnused(path));
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_TRUE(m_files.Close(file));
    EXPECT_TRUE(m_files.RemoveUnused(path));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(m_files.RemoveUnused(path));
}

TEST_F(DataFile, WhatIsReadMayBeRemovedAndReplaced) {
    const std::string path = m_folder.File("a.mcap");
    std::ofstream(path) << "old";
    const FileHandle file = m_files.OpenForReading(path);
    ASSERT_NE(file, kInvalidFile);
    EXPECT_TRUE(m_files.IsNamed(file, path));
    std::filesystem::rename(path, m_folder.File("b.mcap"));
    EXPECT_FALSE(m_files.IsNamed(file, path));
    std::ofstream(path) << "new";
    EXPECT_FALSE(m_files.IsNamed(file, path));
    EXPECT_TRUE(m_files.IsNamed(file, m_folder.File("b.mcap")));
    EXPECT_EQ(ReadAt(file, 0, 3), "old");
    EXPECT_TRUE(m_files.Close(file));
}

TEST_F(DataFile, FoldersTellTheirFilesAndTheirRoom) {
    std::ofstream(m_folder.File("a")) << "12";
    std::ofstream(m_folder.File("b"));
    std::filesystem::create_directory(m_folder.File("c"));
    std::vector<FolderFile> files{{"left over", 1}};
    EXPECT_TRUE(m_files.List(m_folder.path(), files));
    EXPECT_THAT(files, UnorderedElementsAre(FolderFile{"a", 2}, FolderFile{"b", 0}));
    EXPECT_FALSE(m_files.List(m_folder.File("none"), files));
    EXPECT_TRUE(m_files.List("", files)) << "the current folder";
    std::uint64_t room = 0;
    EXPECT_TRUE(m_files.FreeSpace(m_folder.path(), room));
    EXPECT_GT(room, 0U);
    EXPECT_TRUE(m_files.FreeSpace("", room));
    EXPECT_FALSE(m_files.FreeSpace(m_folder.File("none") + PathSeparator() + "x", room));
}

TEST_F(DataFile, HoldsMoreThanFourGigabytes) {
    const std::string path = m_folder.File("large");
    std::ofstream(path).close();
    constexpr std::uint64_t kPlace = (std::uint64_t{1} << 32U) + 5;
    std::error_code error;
    std::filesystem::resize_file(path, kPlace, error);
    if (error) {
        GTEST_SKIP() << "no file of this size here: " << error.message();
    }
    std::ofstream(path, std::ios::binary | std::ios::app) << "end";
    const FileHandle file = m_files.OpenForReading(path);
    ASSERT_NE(file, kInvalidFile);
    EXPECT_EQ(ReadAt(file, kPlace, 8), "end");
    EXPECT_EQ(ReadAt(file, kPlace - 1, 2), std::string("\0e", 2));
    EXPECT_TRUE(m_files.Close(file));
}

}  // namespace
}  // namespace wavo::platform
