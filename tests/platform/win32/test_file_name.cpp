// Names that Windows takes for something else, paths longer than its old limit, and files larger
// than what 32 bits can count.
#include <gtest/gtest.h>
#include <windows.h>

// Behind windows.h:
#include <winioctl.h>

#include <array>
#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include "platform/data_file.h"
#include "platform/file.h"
#include "platform/file_name.h"
#include "platform/last_error.h"
#include "platform/win32/wide.h"
#include "support/temporary_folder.h"

namespace wavo::platform {
namespace {

constexpr char kDeviceWords[] = "Windows keeps this name for a device";
constexpr char kEndWords[] = "on Windows the name of a file cannot end with a dot or a blank";
constexpr char kCharacterWords[] =
    "on Windows the name of a file cannot have < > : \" | ? * or control characters in it";

TEST(FileName, OfADeviceIsUnfitWhateverItsExtensionAndFolder) {
    for (const char* const name : {"CON",
                                   "con.ini",
                                   "C:\\graphs\\Con.ini",
                                   "graphs/NUL.mcap",
                                   "nul",
                                   "prn.pdf",
                                   "AUX.csv.gz",
                                   "COM1",
                                   "com9.mcap",
                                   "COM0.ini",
                                   "LPT1.txt",
                                   "COM\xC2\xB9.ini",
                                   "lpt\xC2\xB3",
                                   "CONIN$",
                                   "conout$.txt",
                                   "CON .ini",
                                   "C:CON",
                                   "\\\\?\\C:\\aux.ini",
                                   "\\\\.\\COM1",
                                   "NUL:"}) {
        EXPECT_EQ(UnfitNameText(name), kDeviceWords) << name;
    }
}

TEST(FileName, ThatOnlyBeginsLikeADeviceIsFit) {
    for (const char* const name : {"",
                                   ".",
                                   "..",
                                   "C:\\",
                                   "C:",
                                   "console.ini",
                                   "CON1.ini",
                                   "COM.ini",
                                   "COM10.ini",
                                   "COM1a",
                                   "LPT",
                                   "LPTX",
                                   "nullpunkt.mcap",
                                   "auxiliary",
                                   "my con.ini",
                                   "con_.ini",
                                   ".con",
                                   "a.con",
                                   "C:\\con.d\\a.ini",
                                   "C:a.ini",
                                   "\xC3\xA4.ini",
                                   "COM\xC2\xA4.ini",
                                   "COM\xC2\xB9\xC2\xB9"}) {
        EXPECT_EQ(UnfitNameText(name), "") << name;
    }
}

TEST(FileName, ThatEndsWithADotOrABlankIsUnfit) {
    for (const char* const name : {"a.", "a.mcap ", "graphs\\a. ", "...", " "}) {
        EXPECT_EQ(UnfitNameText(name), kEndWords) << name;
    }
}

TEST(FileName, WithACharacterThatMeansSomethingElseIsUnfit) {
    for (const char* const name :
         {"ab:c", "a<b", "a>b", "a\"b", "a|b", "a?", "*.ini", "a\tb", "C:\\a.ini:stream"}) {
        EXPECT_EQ(UnfitNameText(name), kCharacterWords) << name;
    }
}

TEST(FileName, WhatIsUnfitIsNotMadeAndItsWordsAreTheReason) {
    const testing::TemporaryFolder folder;
    const std::string device = folder.File("CON.ini");
    bool exists = true;
    EXPECT_EQ(DataFiles().CreateNew(folder.File("a."), exists), kInvalidFile);
    EXPECT_FALSE(exists);
    EXPECT_EQ(ErrorText(LastError()), kEndWords);
    for (const Creation creation :
         {Creation::kCreateNew, Creation::kOpenAlways, Creation::kCreateAlways}) {
        SetLastError(0);
        EXPECT_EQ(Files().OpenForWriting(device, creation, false), kInvalidFile);
        EXPECT_EQ(ErrorText(LastError()), kDeviceWords);
    }
    std::array<char, 300> name{};
    EXPECT_FALSE(
        Files().CreateTemporaryFile(folder.path() + "\\", "ffw", folder.File("ab:c"), name.data()));
    EXPECT_EQ(ErrorText(LastError()), kCharacterWords);
    const FileHandle fit = Files().OpenForWriting(folder.File("a"), Creation::kCreateNew, false);
    ASSERT_TRUE(Files().Close(fit));
    EXPECT_FALSE(Files().Rename(folder.File("a"), folder.File("LPT1")));
    EXPECT_EQ(ErrorText(LastError()), kDeviceWords);
    EXPECT_TRUE(Files().Exists(folder.File("a")));
    std::vector<FolderFile> files;
    ASSERT_TRUE(DataFiles().List(folder.path(), files));
    EXPECT_EQ(files.size(), 1U);
}

/// A folder far below the temporary one, with a path of more than 500 characters.
class LongPath : public ::testing::Test {
 protected:
    LongPath() {
        std::wstring path = L"\\\\?\\" + Wide(m_folder.path());
        for (int i = 0; i < 10; ++i) {
            path += L'\\';
            path.append(50, static_cast<wchar_t>(L'a' + i));
            EXPECT_NE(::CreateDirectoryW(path.c_str(), nullptr), 0);
            m_made.push_back(path);
        }
        m_path = Utf8(path.substr(4));
    }
    ~LongPath() override {
        for (; !m_made.empty(); m_made.pop_back()) {
            EXPECT_NE(::RemoveDirectoryW(m_made.back().c_str()), 0);
        }
    }
    LongPath(const LongPath&) = delete;
    LongPath& operator=(const LongPath&) = delete;

    [[nodiscard]] std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
    const testing::TemporaryFolder m_folder;
    std::vector<std::wstring> m_made;
    std::string m_path;
};

TEST_F(LongPath, IsGivenInTheFormWithoutALimit) {
    const std::wstring wide = WidePath(File("a.ini"));
    EXPECT_GT(wide.size(), 500U);
    EXPECT_TRUE(wide.starts_with(L"\\\\?\\C:\\") || wide.starts_with(L"\\\\?\\Z:\\"));
    EXPECT_EQ(wide.find(L'/'), std::wstring::npos);
    EXPECT_EQ(WidePath(Utf8(wide)), wide);
    EXPECT_EQ(WidePath("\\\\server\\share\\" + std::string(300, 'a')),
              L"\\\\?\\UNC\\server\\share\\" + std::wstring(300, L'a'));
    EXPECT_EQ(WidePath("a/b.ini"), L"a/b.ini") << "short ones stay as they are";
    EXPECT_TRUE(WidePath(std::string(300, 'a')).starts_with(L"\\\\?\\")) << "from the current one";
}

TEST_F(LongPath, FilesAreWrittenReadRenamedAndRemoved) {
    FileOperations& files = SystemFiles();
    std::size_t count = 0;
    const FileHandle made = files.OpenForWriting(File("a.ini"), Creation::kCreateNew, false);
    ASSERT_TRUE(files.Write(made, "text", 4, count));
    ASSERT_TRUE(files.Close(made));
    EXPECT_TRUE(files.Exists(File("a.ini")));
    EXPECT_EQ(files.FollowLinks(File("a.ini")), File("a.ini"));
    std::vector<char> temporary(File("").size() + 13);
    ASSERT_TRUE(files.CreateTemporaryFile(File(""), "ffw", File("a.ini"), temporary.data()));
    EXPECT_TRUE(files.Rename(File("a.ini"), temporary.data()));
    const FileHandle opened = files.OpenForReading(temporary.data());
    std::array<char, 10> text{};
    EXPECT_TRUE(files.Read(opened, text.data(), text.size(), count));
    EXPECT_EQ(std::string(text.data(), count), "text");
    EXPECT_TRUE(files.Close(opened));
    std::string line;
    EXPECT_TRUE(std::getline(std::ifstream(StreamPath(temporary.data())), line));
    EXPECT_EQ(line, "text");
    EXPECT_TRUE(files.Remove(temporary.data()));
}

TEST_F(LongPath, RecordingsAreMadeReadListedAndRemoved) {
    DataFileOperations& files = SystemDataFiles();
    bool exists = false;
    const FileHandle file = files.CreateNew(File("a.mcap"), exists);
    ASSERT_NE(file, kInvalidFile);
    EXPECT_TRUE(files.Append(file, "lines", 5));
    EXPECT_TRUE(files.IsNamed(file, File("a.mcap")));
    EXPECT_TRUE(files.Close(file));
    std::vector<FolderFile> found;
    EXPECT_TRUE(files.List(File(""), found));
    EXPECT_EQ(found, (std::vector<FolderFile>{{"a.mcap", 5}}));
    std::uint64_t free = 0;
    EXPECT_TRUE(files.FreeSpace(File(""), free));
    const FileHandle opened = files.OpenForReading(File("a.mcap"));
    EXPECT_NE(opened, kInvalidFile);
    EXPECT_TRUE(files.Close(opened));
    EXPECT_TRUE(files.RemoveUnused(File("a.mcap")));
}

TEST(LargeFile, IsWrittenAndReadBehindTheFirstFourGigabytes) {
    const testing::TemporaryFolder folder;
    DataFileOperations& files = SystemDataFiles();
    bool exists = false;
    const FileHandle file = files.CreateNew(folder.File("a.mcap"), exists);
    ASSERT_NE(file, kInvalidFile);
    const auto handle = reinterpret_cast<HANDLE>(file);
    constexpr std::uint64_t kHole = (std::uint64_t{5} << 30U) + 7;
    // It takes no room on the disk.
    DWORD unused = 0;
    ::DeviceIoControl(handle, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &unused, nullptr);
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(kHole);
    ASSERT_NE(::SetFilePointerEx(handle, end, nullptr, FILE_BEGIN), 0);
    ASSERT_NE(::SetEndOfFile(handle), 0);
    ASSERT_TRUE(files.Append(file, "end", 3));
    std::uint64_t size = 0;
    EXPECT_TRUE(files.Size(file, size));
    EXPECT_EQ(size, kHole + 3);
    std::array<char, 8> text{};
    std::size_t count = 0;
    EXPECT_TRUE(files.ReadAt(file, kHole - 1, text.data(), text.size(), count));
    EXPECT_EQ(std::string(text.data(), count), std::string("\0end", 4));
    EXPECT_TRUE(files.Close(file));
    std::vector<FolderFile> found;
    EXPECT_TRUE(files.List(folder.path(), found));
    EXPECT_EQ(found, (std::vector<FolderFile>{{"a.mcap", kHole + 3}}));
    FileOperations& whole = SystemFiles();
    const FileHandle opened = whole.OpenForReading(folder.File("a.mcap"));
    EXPECT_EQ(whole.Size(opened), kHole + 3);
    EXPECT_TRUE(whole.Close(opened));
    std::ifstream stream(StreamPath(folder.File("a.mcap")), std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(kHole));
    std::string read;
    EXPECT_TRUE(std::getline(stream, read));
    EXPECT_EQ(read, "end");
}

}  // namespace
}  // namespace wavo::platform
