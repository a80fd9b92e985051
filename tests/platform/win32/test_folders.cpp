// Standard folders, and the number and words of the last error, on Windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

// Behind windows.h:
#include <aclapi.h>
#include <sddl.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "platform/version_resource.h"
#include "platform/win32/common_folder.h"
#include "platform/win32/wide.h"
#include "support/temporary_folder.h"
#include "system_facts.h"

namespace wavo::platform {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using testing::kDataHome;
using testing::SetVariable;
using testing::TemporaryFolder;
using testing::UnsetVariable;

class Folders : public ::testing::Test {
 protected:
    Folders() { SetVariable(kDataHome, m_base.path()); }
    ~Folders() override { UnsetVariable(kDataHome); }

    const TemporaryFolder m_base;
};

TEST_F(Folders, DataFolderIsTheMakersInTheChosenFolderAndIsCreated) {
    EXPECT_EQ(DataFolder(), m_base.path() + "\\Velk");
    EXPECT_TRUE(fs::is_directory(m_base.path() + "\\Velk"));
    EXPECT_EQ(DataFolder(), m_base.path() + "\\Velk") << "a second time, when it exists";
}

TEST_F(Folders, LogsLieInTheDataFolder) {
    EXPECT_EQ(StateFolder(), m_base.path() + "\\Velk\\logs");
    EXPECT_TRUE(fs::is_directory(m_base.path() + "\\Velk\\logs"));
}

TEST_F(Folders, TheCacheLiesInTheDataFolderThatWasChosen) {
    EXPECT_EQ(CacheFolder(), m_base.path() + "\\Velk\\cache");
    EXPECT_TRUE(fs::is_directory(m_base.path() + "\\Velk\\cache"));
}

TEST_F(Folders, AFileInThePlaceOfTheFolderIsAFailure) {
    std::ofstream(m_base.path() + "\\Velk") << "in the way";
    EXPECT_EQ(DataFolder(), "");
    EXPECT_EQ(LastError(), ERROR_DIRECTORY);
    EXPECT_EQ(StateFolder(), "");
}

TEST_F(Folders, AChosenFolderMayHaveAnyName) {
    const std::string name = m_base.path() + "\\\xC3\xA4 \xE6\x97\xA5";
    ASSERT_NE(::CreateDirectoryW(Wide(name).c_str(), nullptr), 0);
    ASSERT_NE(::SetEnvironmentVariableW(Wide(kDataHome).c_str(), Wide(name).c_str()), 0);
    EXPECT_EQ(DataFolder(), name + "\\Velk");
}

TEST_F(Folders, AChosenFolderMayEndWithSeparators) {
    for (const char* const end : {"\\", "/", "\\\\", "/\\/"}) {
        SetVariable(kDataHome, m_base.path() + end);
        EXPECT_EQ(DataFolder(), m_base.path() + "\\Velk");
    }
}

TEST_F(Folders, AFolderForAllUsersIsMadeOnce) {
    const std::wstring path = Wide(m_base.path() + "\\shared");
    ASSERT_TRUE(ProvideFolderForAllUsers(path));
    std::ofstream(m_base.path() + "\\shared\\file") << "kept";
    EXPECT_TRUE(ProvideFolderForAllUsers(path)) << "a second time, when it exists";
    EXPECT_EQ(m_base.Read("shared/file"), "kept");
    EXPECT_FALSE(ProvideFolderForAllUsers(path + L"\\file"));
    EXPECT_EQ(LastError(), ERROR_DIRECTORY);
    EXPECT_FALSE(ProvideFolderForAllUsers(path + L"\\no\\such"));
    EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
}

/// Who may do what with a file or folder, in the system's notation.
std::string Rights(const std::string& path) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(::GetNamedSecurityInfoW(Wide(path).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                      nullptr, nullptr, nullptr, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    wchar_t* words = nullptr;
    EXPECT_NE(::ConvertSecurityDescriptorToStringSecurityDescriptorW(
                  descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &words, nullptr),
              0);
    const std::string rights = words == nullptr ? "" : Utf8(words);
    ::LocalFree(words);
    ::LocalFree(descriptor);
    return rights;
}

TEST_F(Folders, InAFolderForAllUsersEachMayChangeTheFilesOfOthers) {
    if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr) {
        GTEST_SKIP() << "Wine keeps no rights of groups";
    }
    const std::string folder = m_base.path() + "\\shared";
    ASSERT_TRUE(ProvideFolderForAllUsers(Wide(folder)));
    std::ofstream(folder + "\\file") << "anybody's";
    EXPECT_THAT(Rights(folder), HasSubstr("(A;OICI;0x1301bf;;;BU)"));
    EXPECT_THAT(Rights(folder + "\\file"), HasSubstr("0x1301bf;;;BU)"));
}

TEST_F(Folders, ElseTheDataFolderIsThatOfAllUsers) {
    UnsetVariable(kDataHome);
    const std::string common = DataFolder();
    for (const char* const relative :
         {"relative", "C:relative", "C:", "\\relative", "/relative", "\\", "\\\\", "\\\\\\"}) {
        SetVariable(kDataHome, relative);
        EXPECT_EQ(DataFolder(), common) << relative << ": a relative path counts as not set";
    }
    EXPECT_TRUE(common.ends_with("ProgramData\\Velk")) << common;
}

TEST(Terminal, IsPreparedOnlyWhereThereIsOne) {
    SetLastError(ERROR_DISK_FULL);
    PrepareTerminal();
    EXPECT_EQ(LastError(), ERROR_DISK_FULL);
    const HANDLE before = ::GetStdHandle(STD_ERROR_HANDLE);
    ASSERT_NE(::SetStdHandle(STD_ERROR_HANDLE, nullptr), 0);
    EXPECT_FALSE(HasStandardError());
    PrepareTerminal();
    const HANDLE file = ::CreateFileW(L"NUL", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(::SetStdHandle(STD_ERROR_HANDLE, file), 0);
    EXPECT_TRUE(HasStandardError());
    ::SetStdHandle(STD_ERROR_HANDLE, before);
    ::CloseHandle(file);
}

TEST(StandardOutput, IsThereWhenTheProcessWasStartedWithOne) {
    const HANDLE before = ::GetStdHandle(STD_OUTPUT_HANDLE);
    ASSERT_NE(::SetStdHandle(STD_OUTPUT_HANDLE, nullptr), 0);
    EXPECT_FALSE(HasStandardOutput());
    ASSERT_NE(::SetStdHandle(STD_OUTPUT_HANDLE, ::GetStdHandle(STD_ERROR_HANDLE)), 0);
    EXPECT_EQ(HasStandardOutput(), HasStandardError());
    ::SetStdHandle(STD_OUTPUT_HANDLE, before);
}

TEST(Paths, HaveBackslashes) {
    EXPECT_EQ(PathSeparator(), "\\");
    EXPECT_EQ(NativePath("a/b\\c/d.ini"), "a\\b\\c\\d.ini");
}

TEST(LastError, IsWhatTheLastFailedCallLeftAndIsKeptOverAScope) {
    SetLastError(ERROR_DISK_FULL);
    {
        const LastErrorKeeper keep;
        EXPECT_EQ(::GetFileAttributesW(L"C:\\no such file"), INVALID_FILE_ATTRIBUTES);
        EXPECT_EQ(LastError(), ERROR_FILE_NOT_FOUND);
    }
    EXPECT_EQ(LastError(), ERROR_DISK_FULL);
}

TEST(LastError, HasWordsForEveryNumber) {
    for (const int number : {-1, 0, 2, 5, 87, 99999}) {
        SetLastError(ERROR_DISK_FULL);
        const std::string text = ErrorText(number);
        EXPECT_FALSE(text.empty());
        EXPECT_GT(text.back(), ' ') << text;
        EXPECT_EQ(text.find('\n'), std::string::npos);
        EXPECT_EQ(LastError(), ERROR_DISK_FULL);
    }
    EXPECT_EQ(ErrorText(99999), "error 99999");
}

TEST(Wide, GoesThereAndBack) {
    const std::string text = "a\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Wide(text), L"a\u00e4\u65e5\xD83D\xDE00");
    EXPECT_EQ(Utf8(Wide("")), "");
    EXPECT_EQ(Wide("\xFF"), L"\xFFFD");
}

TEST(VersionResource, IsMissingInAProgramThatWasBuiltWithoutOne) {
    EXPECT_FALSE(OwnVersionResource());
}

}  // namespace
}  // namespace wavo::platform
