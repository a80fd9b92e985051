// The crash logger in a program of its own: this one, started again to crash.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/last_error.h"
#include "support/diagnostics.h"
#include "temporary_folder.h"

namespace wavo {

using ::testing::HasSubstr;

namespace {

/// Set in the program that is to crash; its value tells when.
constexpr char kCrashVariable[] = "WAVO_TEST_CRASH";

bool IsToCrash(const std::string& when) {
    const char* value = std::getenv(kCrashVariable);
    return value != nullptr && value == when;
}

// As a program does it: the hook stands before main begins.
const bool crash_logger_ready =
    std::getenv(kCrashVariable) != nullptr && (CrashLogDLL::InitCrashLogger(), true);

struct CrashDuringStaticInitialisation {
    CrashDuringStaticInitialisation() {
        if (IsToCrash("before main")) {
            std::raise(SIGSEGV);
        }
    }
} const crash_early;

[[gnu::noinline]] void CrashWhenAsked() {
    std::raise(SIGSEGV);
    asm volatile("" ::: "memory");  // no tail call: the function is to stand in the record
}

class CrashLoggerTest : public ::testing::Test {
 protected:
    /// Runs this program again so that it crashes; its state folder is ours.
    void Crash(const std::string& when) const {
        const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
        const std::string command = "ulimit -c 0; XDG_STATE_HOME='" + m_state.path() + "' " +
                                    kCrashVariable + "='" + when + "' '" + program +
                                    "' --gtest_filter='Inner.*' >/dev/null 2>&1";
        EXPECT_NE(std::system(command.c_str()), 0);
    }

    [[nodiscard]] std::string Record() const { return m_state.Read("Velk/wavo_crash.log"); }

    const testing::TemporaryFolder m_state;
};

// Runs in the program that is to crash only.
TEST(Inner, CrashesWhenAsked) {
    if (IsToCrash("in main")) {
        CrashWhenAsked();
    }
}

TEST_F(CrashLoggerTest, RecordsACrashInTheStateFolderWithTheProductsVersion) {
    Crash("in main");
    EXPECT_THAT(Record(), HasSubstr("(SIGSEGV)"));
    EXPECT_THAT(Record(), HasSubstr(std::string("version: ") + WAVO_TEST_VERSION + "\n"));
    EXPECT_THAT(Record(), HasSubstr("CrashWhenAsked"));
}

TEST_F(CrashLoggerTest, RecordsACrashBeforeMain) {
    Crash("before main");
    EXPECT_THAT(Record(), HasSubstr("CrashDuringStaticInitialisation"));
}

TEST_F(CrashLoggerTest, MovesALargeRecordFileAsideAtStart) {
    std::filesystem::create_directory(m_state.File("Velk"));
    {
        std::ofstream old(m_state.File("Velk/wavo_crash.log"));
        old << std::string(2 * 1024 * 1024, 'x');
    }
    Crash("in main");
    EXPECT_THAT(Record(), HasSubstr("(SIGSEGV)"));
    EXPECT_LT(Record().size(), 1024U * 1024U);
    EXPECT_EQ(m_state.Read("Velk/wavo_crash.log.1").size(), 2U * 1024U * 1024U);
}

TEST_F(CrashLoggerTest, ProgramsThatDoNotInstallItGetNoHook) {
    EXPECT_FALSE(crash_logger_ready);
    struct sigaction action {};
    ASSERT_EQ(::sigaction(SIGABRT, nullptr, &action), 0);
    EXPECT_EQ(action.sa_handler, SIG_DFL);
}

}  // namespace

}  // namespace wavo
