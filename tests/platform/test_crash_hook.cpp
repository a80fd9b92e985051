#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "child_process.h"
#include "platform/process.h"
#include "window_fixture.h"

namespace wavo::testing {

// Functions that a backtrace can name: not inlined, not ended by a tail call.

[[gnu::noinline]] int ReadFarAway(const volatile int* address) {
    const int value = *address;
    asm volatile("" ::: "memory");
    return value;
}

[[gnu::noinline]] int CallThatCrashes(int depth) {
    const int result = depth > 0 ? CallThatCrashes(depth - 1)
                                 : ReadFarAway(reinterpret_cast<const volatile int*>(0x10));
    asm volatile("" ::: "memory");
    return result + 1;
}

[[gnu::noinline]] void GiveUp() {
    std::abort();
    asm volatile("" ::: "memory");
}

[[gnu::noinline]] int FillTheStack(int depth) {
    volatile char room[4096] = {};
    room[depth % 4096] = static_cast<char>(depth);
    const int below = depth < 1000000000 ? FillTheStack(depth + 1) : 0;
    return below + room[0];
}

}  // namespace wavo::testing

namespace wavo::platform {

using testing::ChildProcess;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::NumberPipe;
using testing::TemporaryFolder;

namespace {

class CrashHookTest : public ::testing::Test {
 protected:
    /// Runs a crash in a process of its own. Returns its status.
    int Crash(const std::function<void()>& crash) {
        ChildProcess child([&](NumberPipe&) {
            // What ends a process is what is tested: no dumps of it, no talk in the test's output.
            const rlimit none{0, 0};
            ::setrlimit(RLIMIT_CORE, &none);
            const int error = ::open(ErrorPath().c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
            ::dup2(error, STDERR_FILENO);
            InstallCrashHook(RecordPath(), "1.2.3-test");
            crash();
            return 0;
        });
        return child.Wait();
    }

    [[nodiscard]] std::string RecordPath() const { return m_folder.path() + "/crash.log"; }
    [[nodiscard]] std::string ErrorPath() const { return m_folder.path() + "/stderr"; }

    static std::string Contents(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

 private:
    const TemporaryFolder m_folder;
};

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

void ExpectEndedBy(int status, int signal) {
    if (kSanitized && signal != SIGABRT) {
        // The sanitizer's own handler comes after the hook and exits.
        EXPECT_NE(status, 0);
        return;
    }
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), signal);
}

TEST_F(CrashHookTest, ARecordTellsSignalTimeVersionAndTheCallsThatLedThere) {
    ExpectEndedBy(Crash([] { testing::CallThatCrashes(2); }), SIGSEGV);
    const std::string record = Contents(RecordPath());
    EXPECT_THAT(record, HasSubstr("signal: 11 (SIGSEGV), address 0x10, instruction 0x"));
    EXPECT_THAT(record, ContainsRegex("time: 20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:"
                                      "[0-9]{2}\\.[0-9]{3}Z\n"));
    EXPECT_THAT(record, HasSubstr("version: 1.2.3-test\n"));
    EXPECT_THAT(record, ContainsRegex("#0 wavo::testing::ReadFarAway\\(.*test_crash_hook\\.cpp:"));
    EXPECT_THAT(record, ContainsRegex("#1 wavo::testing::CallThatCrashes\\(int\\) at "
                                      ".*test_crash_hook\\.cpp:[0-9]+ \\["));
    EXPECT_THAT(record, ContainsRegex("#3 wavo::testing::CallThatCrashes\\(int\\)"));
    EXPECT_THAT(record, HasSubstr("---- end\n"));
    EXPECT_THAT(record, Not(HasSubstr("again,")));
    EXPECT_THAT(Contents(ErrorPath()), HasSubstr(record));
}

TEST_F(CrashHookTest, AnAbortIsRecorded) {
    ExpectEndedBy(Crash([] { testing::GiveUp(); }), SIGABRT);
    EXPECT_THAT(Contents(RecordPath()), HasSubstr("(SIGABRT)"));
    EXPECT_THAT(Contents(RecordPath()), ContainsRegex("#[0-9]+ wavo::testing::GiveUp\\(\\) at "));
}

TEST_F(CrashHookTest, EveryFatalSignalIsRecordedAndEndsTheProcess) {
    const std::pair<int, const char*> signals[] = {{SIGSEGV, "SIGSEGV"},
                                                   {SIGBUS, "SIGBUS"},
                                                   {SIGFPE, "SIGFPE"},
                                                   {SIGILL, "SIGILL"},
                                                   {SIGABRT, "SIGABRT"}};
    for (const auto& [number, name] : signals) {
        ExpectEndedBy(Crash([number = number] { ::raise(number); }), number);
        EXPECT_THAT(Contents(RecordPath()), HasSubstr(std::string("(") + name + "), sent by"));
    }
}

TEST_F(CrashHookTest, AFullStackIsRecordedOnce) {
    ExpectEndedBy(Crash([] { testing::FillTheStack(0); }), SIGSEGV);
    const std::string record = Contents(RecordPath());
    EXPECT_THAT(record, HasSubstr("(SIGSEGV)"));
    EXPECT_THAT(record, HasSubstr("FillTheStack"));
    EXPECT_EQ(record.find("---- crash"), record.rfind("---- crash"));
}

TEST_F(CrashHookTest, RecordsAreAppended) {
    Crash([] { ::raise(SIGFPE); });
    Crash([] { ::raise(SIGILL); });
    const std::string record = Contents(RecordPath());
    EXPECT_LT(record.find("(SIGFPE)"), record.find("(SIGILL)"));
}

TEST_F(CrashHookTest, AJumpIntoNothingIsRecorded) {
    ExpectEndedBy(Crash([] {
                      void (*volatile nowhere)() = nullptr;
                      nowhere();  // NOLINT(clang-analyzer-core.CallAndMessage): that is the test
                  }),
                  SIGSEGV);
    EXPECT_THAT(Contents(RecordPath()), HasSubstr("instruction 0x0\n"));
    EXPECT_THAT(Contents(RecordPath()), HasSubstr("---- end\n"));
}

TEST_F(CrashHookTest, WithoutAFileOnlyStandardErrorGetsTheRecord) {
    Crash([] {
        InstallCrashHook({}, "changed");
        ::raise(SIGSEGV);
    });
    EXPECT_EQ(Contents(RecordPath()), "");
    EXPECT_THAT(Contents(ErrorPath()), HasSubstr("version: changed\n"));
}

TEST_F(CrashHookTest, AnUnwritableFileDoesNotKeepTheRecordFromStandardError) {
    Crash([this] {
        InstallCrashHook(RecordPath() + "/no/such/folder", "1");
        ::raise(SIGSEGV);
    });
    EXPECT_THAT(Contents(ErrorPath()), HasSubstr("(SIGSEGV)"));
}

TEST_F(CrashHookTest, AProcessThatDoesNotCrashLeavesNoRecord) {
    EXPECT_EQ(Crash([] {}), 0);
    EXPECT_EQ(Contents(RecordPath()), "");
}

}  // namespace

}  // namespace wavo::platform
