// The crash hook of Windows: this program runs once more, and crashes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "matches_pattern.h"
#include "platform/process.h"
#include "platform/win32/wide.h"
#include "support/temporary_folder.h"
#include "system_facts.h"

namespace wavo::platform {
namespace {

using testing::ContainsPattern;
using ::testing::HasSubstr;
using testing::SetVariable;
using testing::UnsetVariable;

/// Set in the program that is to crash: how, and the file for the record.
constexpr char kHow[] = "WAVO_TEST_CRASH";
constexpr char kFile[] = "WAVO_TEST_CRASH_FILE";

__attribute__((noinline)) void WriteToNowhere() {
    auto* volatile nowhere = reinterpret_cast<int*>(0x40);
    *nowhere = 1;
    asm volatile("" ::: "memory");  // no tail call: the function is to stand in the record
}

__attribute__((noinline)) void CallNowhere() {
    void (*volatile nowhere)() = nullptr;
    nowhere();
    asm volatile("" ::: "memory");
}

__attribute__((noinline)) void GiveUp() {
    std::abort();
}

// Runs in the program that is to crash only.
TEST(Inner, CrashesWhenAsked) {
    const char* const how = std::getenv(kHow);
    if (how == nullptr) {
        GTEST_SKIP() << "for the program that is to crash";
    }
    // What the program had installed before goes on behind the record; this ends without a box.
    ::SetUnhandledExceptionFilter(
        [](EXCEPTION_POINTERS*) -> LONG { return EXCEPTION_EXECUTE_HANDLER; });
    InstallCrashHook(std::getenv(kFile), "1.2.3-test");
    const std::string way = how;
    if (way == "write") {
        WriteToNowhere();
    } else if (way == "call") {
        CallNowhere();
    } else {
        GiveUp();
    }
}

class CrashHook : public ::testing::Test {
 protected:
    /// Lets the other program crash. Returns its exit code.
    DWORD Crash(const std::string& how) {
        SetVariable(kHow, how);
        SetVariable(kFile, m_folder.File("crash.log"));
        std::wstring program(4096, L'\0');
        program.resize(
            ::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
        std::wstring command =
            L"\"" + program + L"\" --gtest_filter=Inner.*" + L" --gtest_catch_exceptions=0";
        STARTUPINFOW start{};
        start.cb = sizeof start;
        PROCESS_INFORMATION process{};
        const BOOL started = ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE,
                                              CREATE_NO_WINDOW | CREATE_DEFAULT_ERROR_MODE, nullptr,
                                              nullptr, &start, &process);
        UnsetVariable(kHow);
        EXPECT_NE(started, 0);
        EXPECT_EQ(::WaitForSingleObject(process.hProcess, 60000), WAIT_OBJECT_0);
        DWORD code = 0;
        ::GetExitCodeProcess(process.hProcess, &code);
        ::TerminateProcess(process.hProcess, 1);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        return code;
    }
    [[nodiscard]] std::string Record() const { return m_folder.Read("crash.log"); }

    const testing::TemporaryFolder m_folder;
};

TEST_F(CrashHook, RecordsAFaultWithItsPlaceVersionAndBacktrace) {
    EXPECT_EQ(Crash("write"), EXCEPTION_ACCESS_VIOLATION);
    const std::string record = Record();
    EXPECT_THAT(record, ContainsPattern("---- crash of platform_test.exe, process [0-9]+\r\n"));
    EXPECT_THAT(record, HasSubstr("exception: 0xc0000005 (access violation), address 0x40, "));
    EXPECT_THAT(record, ContainsPattern("time: 20[0-9][0-9]-[0-9]+-[0-9]+T[0-9:]+\\.[0-9]+Z\r\n"));
    EXPECT_THAT(record, HasSubstr("version: 1.2.3-test\r\n"));
    EXPECT_THAT(record, ContainsPattern("#0 0x[0-9a-f]+ platform_test.exe\\+0x[0-9a-f]+ .*"
                                        "WriteToNowhere\\(\\)\\+0x"));
    EXPECT_THAT(record, ContainsPattern("#1 .*CrashesWhenAsked.*TestBody"));
    EXPECT_THAT(record, HasSubstr("backtrace, names as linked:\r\n"));
    EXPECT_TRUE(record.ends_with("---- end\r\n")) << record;
}

TEST_F(CrashHook, RecordsWhoCalledThroughANullPointer) {
    EXPECT_EQ(Crash("call"), EXCEPTION_ACCESS_VIOLATION);
    const std::string record = Record();
    EXPECT_THAT(record, HasSubstr("instruction 0x0\r\n"));
    EXPECT_THAT(record, HasSubstr("#0 0x0\r\n"));
    EXPECT_THAT(record, ContainsPattern("#1 0x[0-9a-f]+ platform_test.exe\\+0x[0-9a-f]+ .*"
                                        "CallNowhere\\(\\)\\+0x"));
    EXPECT_TRUE(record.ends_with("---- end\r\n")) << record;
}

TEST_F(CrashHook, NamesTheModulesOfTheSystem) {
    Crash("write");
    EXPECT_THAT(Record(), ContainsPattern(" (KERNEL32|kernel32|ntdll)\\.dll\\+0x[0-9a-f]+"));
}

TEST_F(CrashHook, RecordsAnAbort) {
    EXPECT_NE(Crash("abort"), 0U);
    EXPECT_THAT(Record(), HasSubstr("(abort)"));
    EXPECT_THAT(Record(), HasSubstr("GiveUp()"));
}

TEST_F(CrashHook, AppendsToWhatIsThere) {
    Crash("write");
    const std::size_t one = Record().size();
    Crash("write");
    EXPECT_GT(Record().size(), one + one / 2);
}

}  // namespace
}  // namespace wavo::platform
