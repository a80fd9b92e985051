#include "support/diagnostics_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "matches_pattern.h"
#include "platform/folders.h"
#include "support/diagnostics.h"
#include "temporary_folder.h"

namespace wavo {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::MatchesPattern;

namespace {

constexpr char kTraceFile[] = "wavo_trace.log";
constexpr char kErrorFile[] = "wavo_error.log";

class DiagnosticsOutputTest : public ::testing::Test {
 protected:
    void SetUp() override {
        diagnostics::SetObserver(nullptr);  // entries are looked for in the files
        diagnostics::SetLogFolder(m_folder.path());
    }
    void TearDown() override {
        diagnostics::SetLogFaultHandler(nullptr);
        diagnostics::SetLogFolder({});
        diagnostics::SetEcho(false);
        diagnostics::SetLogSizeLimit(std::size_t{4} * 1024 * 1024);
        _MTrace_SetLevel("default", 1);
    }

    static void Log(const std::string& text) {
        _MErrLog_Location(0, "src/a.cpp", 12);
        _MErrLog_Add("%s", text.c_str());
    }

    static void Trace() {
        _MTrace_Location("src/t.cpp", 7, "default", 1);
        _MTrace_Always("progress");
    }
    /// Remembers the log files that are told to be lost.
    void CollectLostLogs() {
        diagnostics::SetLogFaultHandler([this](const std::string& path) {
            m_lost.push_back(std::filesystem::path(path).filename().string());
        });
    }

    const testing::TemporaryFolder m_folder;
    std::vector<std::string> m_lost;
};

TEST_F(DiagnosticsOutputTest, ALineHasTimeKindPlaceAndText) {
    _MTrace_SetLevel("default", 4);
    _MTrace_Location("src/t.cpp", 7, "default", 4);
    _MTrace_Always("progress");
    _MErrTrace_Location(0, "src/e.cpp", 8);
    _MErrTrace_Add("fault");
    Log("entry");
    const std::string time =
        "20[0-9][0-9]-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-6][0-9]"
        "\\.[0-9][0-9][0-9]Z ";
    EXPECT_THAT(m_folder.Lines(kTraceFile),
                ElementsAre(MatchesPattern(time + "trace 4 src/t\\.cpp\\(7\\): progress"),
                            MatchesPattern(time + "error-trace src/e\\.cpp\\(8\\): fault")));
    EXPECT_THAT(m_folder.Lines(kErrorFile),
                ElementsAre(MatchesPattern(time + "error-log src/a\\.cpp\\(12\\): entry")));
}

TEST_F(DiagnosticsOutputTest, OneReportIsOneLineWhateverItsText) {
    Log(std::string("a\nb\r\tc\x1B[31m\x7F end \\ \xC3\xA4"));
    ASSERT_EQ(m_folder.Lines(kErrorFile).size(), 1U);
    EXPECT_THAT(m_folder.Read(kErrorFile),
                HasSubstr(": a\\nb\\r\\tc\\x1b[31m\\x7f end \\ \xC3\xA4\n"));
}

TEST_F(DiagnosticsOutputTest, WithoutAFolderNothingIsWritten) {
    diagnostics::SetLogFolder({});
    Log("nowhere");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path()));
}

TEST_F(DiagnosticsOutputTest, AFolderThatIsMissingIsNotCreatedAndTroublesNobody) {
    diagnostics::SetLogFolder(m_folder.File("missing"));
    Log("nowhere");
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("missing")));
    std::filesystem::create_directory(m_folder.File("missing"));
    Log("now");
    EXPECT_TRUE(std::filesystem::exists(m_folder.File("missing/wavo_error.log")));
}

TEST_F(DiagnosticsOutputTest, ALogThatIsLostIsToldOnceForEachTime) {
    const std::filesystem::path folder(m_folder.File("missing"));
    diagnostics::SetLogFolder(folder.string());
    CollectLostLogs();
    Log("lost");
    Log("lost");
    EXPECT_THAT(m_lost, ElementsAre(kErrorFile));
    EXPECT_EQ(diagnostics::LostErrorLog(),
              folder.string() + platform::PathSeparator() + kErrorFile);
    Trace();
    Trace();
    EXPECT_THAT(m_lost, ElementsAre(kErrorFile, kTraceFile));
    std::filesystem::create_directory(folder);
    Log("written");
    EXPECT_EQ(diagnostics::LostErrorLog(), "");
    std::filesystem::remove_all(folder);
    Log("lost");
    Trace();
    EXPECT_THAT(m_lost, ElementsAre(kErrorFile, kTraceFile, kErrorFile));
}

TEST_F(DiagnosticsOutputTest, WhoAsksLaterIsToldAtOnce) {
    diagnostics::SetLogFolder(m_folder.File("missing"));
    Trace();
    Log("lost");
    CollectLostLogs();
    EXPECT_THAT(m_lost, ElementsAre(kTraceFile, kErrorFile));
    m_lost.clear();
    diagnostics::SetLogFolder(m_folder.path());
    CollectLostLogs();
    EXPECT_THAT(m_lost, ElementsAre()) << "another folder, another try";
}

TEST_F(DiagnosticsOutputTest, WhoIsToldMayReport) {
    diagnostics::SetLogFolder(m_folder.File("missing"));
    diagnostics::SetLogFaultHandler([this](const std::string&) {
        m_lost.emplace_back("told");
        Trace();
        Log("lost as well");
    });
    Log("lost");
    EXPECT_THAT(m_lost, ElementsAre("told", "told")) << "once for each log";
}

TEST_F(DiagnosticsOutputTest, AFileAtItsLimitIsMovedAsideAndOnePreviousGenerationIsKept) {
    Log("x");
    const std::size_t line = m_folder.Read(kErrorFile).size();
    diagnostics::SetLogSizeLimit(line * 3);
    std::vector<std::size_t> sizes;
    for (char c = 'a'; c <= 'h'; ++c) {
        Log(std::string(1, c));
        EXPECT_LE(m_folder.Read(kErrorFile).size(), line * 3);
    }
    // x a b | c d e | f g h
    const auto last_letters = [&](const std::string& name) {
        std::string letters;
        for (const std::string& text : m_folder.Lines(name)) {
            letters += text.back();
        }
        return letters;
    };
    EXPECT_EQ(last_letters(kErrorFile), "fgh");
    EXPECT_EQ(last_letters("wavo_error.log.1"), "cde");
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("wavo_error.log.2")));
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("wavo_trace.log.1")));
}

TEST_F(DiagnosticsOutputTest, ALineLongerThanTheLimitIsStillWritten) {
    diagnostics::SetLogSizeLimit(10);
    Log("first");
    Log("second");
    EXPECT_THAT(m_folder.Read(kErrorFile), HasSubstr("second\n"));
    EXPECT_THAT(m_folder.Read("wavo_error.log.1"), HasSubstr("first\n"));
}

TEST_F(DiagnosticsOutputTest, TheEchoGoesToStandardErrorWhenItIsOn) {
    ::testing::internal::CaptureStderr();
    Log("silent");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    diagnostics::SetEcho(true);
    ::testing::internal::CaptureStderr();
    Log("loud");
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("src/a.cpp(12): loud\n"));
}

TEST_F(DiagnosticsOutputTest, TheObserverIsCalledAfterTheLineIsWritten) {
    std::string at_call;
    diagnostics::SetObserver([&](const diagnostics::Report& report) {
        EXPECT_EQ(report.service, diagnostics::Service::kErrorLog);
        EXPECT_EQ(report.source, "src/a.cpp");
        EXPECT_EQ(report.line, 12);
        at_call = m_folder.Read(kErrorFile);
    });
    Log("entry");
    diagnostics::SetObserver(nullptr);
    EXPECT_THAT(at_call, HasSubstr("entry\n"));
}

TEST_F(DiagnosticsOutputTest, AFolderNameMayHoldAnyCharacters) {
    const std::filesystem::path folder =
        std::filesystem::path(m_folder.path()) / std::filesystem::path(u8"\u00e4 \u65e5");
    std::filesystem::create_directory(folder);
    const std::u8string name = folder.u8string();
    diagnostics::SetLogFolder(std::string(name.begin(), name.end()));
    Log("entry");
    EXPECT_TRUE(std::filesystem::exists(folder / "wavo_error.log"));
}

}  // namespace

}  // namespace wavo
