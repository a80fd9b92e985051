// The crash logger in a program of its own: this one, started again to crash.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "crash.h"
#include "support/diagnostics.h"
#include "system/started_program.h"
#include "system_facts.h"
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
const bool crash_logger_ready = std::getenv(kCrashVariable) != nullptr &&
                                (testing::PrepareToCrash(), CrashLogDLL::InitCrashLogger(), true);

struct CrashDuringStaticInitialisation {
    [[gnu::noinline]] CrashDuringStaticInitialisation() {
        if (IsToCrash("before main")) {
            testing::CrashNow();
            asm volatile("" ::: "memory");  // no tail call: the function is to stand in the record
        }
    }
} const crash_early;

[[gnu::noinline]] void CrashWhenAsked() {
    testing::CrashNow();
    asm volatile("" ::: "memory");
}

class CrashLoggerTest : public ::testing::Test {
 protected:
    CrashLoggerTest() { testing::SetVariable(testing::kStateHome, m_state.path()); }
    ~CrashLoggerTest() override { testing::UnsetVariable(testing::kStateHome); }
    CrashLoggerTest(const CrashLoggerTest&) = delete;
    CrashLoggerTest& operator=(const CrashLoggerTest&) = delete;

    /// Runs this program again so that it crashes; its state folder is ours.
    static void Crash(const char* when) {
        testing::SetVariable(kCrashVariable, when);
        testing::StartedProgram program(WAVO_THIS_PROGRAM, {"--gtest_filter=Inner.*"});
        testing::UnsetVariable(kCrashVariable);
        EXPECT_NE(program.Wait(), 0);
        EXPECT_TRUE(program.HasEnded());
    }

    [[nodiscard]] std::string File(const char* name) const {
        return testing::kLogFolder + std::string(name);
    }
    [[nodiscard]] std::string Record() const { return m_state.Read(File("wavo_crash.log")); }

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
    EXPECT_THAT(Record(), HasSubstr(testing::kCrashName));
    EXPECT_THAT(Record(), HasSubstr(std::string("version: ") + WAVO_TEST_VERSION));
    EXPECT_THAT(Record(), HasSubstr("CrashWhenAsked"));
}

TEST_F(CrashLoggerTest, RecordsACrashBeforeMain) {
    Crash("before main");
    EXPECT_THAT(Record(), HasSubstr("CrashDuringStaticInitialisation"));
}

TEST_F(CrashLoggerTest, MovesALargeRecordFileAsideAtStart) {
    std::filesystem::create_directories(m_state.File(testing::kLogFolder));
    {
        std::ofstream old(m_state.File(File("wavo_crash.log")));
        old << std::string(2 * 1024 * 1024, 'x');
    }
    Crash("in main");
    EXPECT_THAT(Record(), HasSubstr(testing::kCrashName));
    EXPECT_LT(Record().size(), 1024U * 1024U);
    EXPECT_EQ(m_state.Read(File("wavo_crash.log.1")).size(), 2U * 1024U * 1024U);
}

}  // namespace

}  // namespace wavo
