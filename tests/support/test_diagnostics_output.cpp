#include "support/diagnostics_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "matches_pattern.h"
#include "platform/folders.h"
#include "support/diagnostics.h"
#include "support/report_sink.h"
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
    /// A report that was made so many seconds after a certain time.
    static void LogAt(double seconds, const std::string& text,
                      diagnostics::Service service = diagnostics::Service::kErrorLog) {
        using Clock = std::chrono::system_clock;
        const auto passed =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        diagnostics::Emit({service, "src/a.cpp", 12, text}, 1,
                          Clock::time_point(std::chrono::hours(24)) + passed);
    }
    /// The lines of a log without times.
    [[nodiscard]] std::vector<std::string> Untimed(const std::string& name) const {
        std::vector<std::string> lines = m_folder.Lines(name);
        for (std::string& line : lines) {
            line.erase(0, line.find(' ') + 1);
        }
        return lines;
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

// ---- reports that repeat themselves ----

TEST_F(DiagnosticsOutputTest, RepeatsAreMadeOneByOneAndFoldedInTheLog) {
    int made = 0;
    diagnostics::SetObserver([&](const diagnostics::Report& report) {
        EXPECT_EQ(report.text, "overrun");
        ++made;
    });
    for (int i = 0; i < 149'900; ++i) {
        LogAt(1e-6 * i, "overrun");
    }
    diagnostics::SetObserver(nullptr);
    EXPECT_EQ(made, 149'900);
    EXPECT_THAT(Untimed(kErrorFile), ElementsAre("error-log src/a.cpp(12): overrun"));
    diagnostics::FlushRepeats();
    EXPECT_THAT(Untimed(kErrorFile),
                ElementsAre("error-log src/a.cpp(12): overrun",
                            "error-log src/a.cpp(12): overrun ... 149,899 times more"));
    EXPECT_THAT(m_folder.Lines(kErrorFile)[1], HasSubstr("1970-01-02T00:00:00.149Z"));
}

TEST_F(DiagnosticsOutputTest, WhatIsReportedInTheUsualWayIsFoldedToo) {
    constexpr int kReports = 20'000;
    for (int i = 0; i < kReports; ++i) {
        Log("overrun");
    }
    Log("another");
    const std::vector<std::string> lines = Untimed(kErrorFile);
    EXPECT_LT(lines.size(), 100U);
    EXPECT_EQ(lines.back(), "error-log src/a.cpp(12): another");
    std::uint64_t told = 0;
    const std::string begin = "error-log src/a.cpp(12): overrun";
    for (const std::string& line : lines) {
        if (line == begin) {
            ++told;
        } else if (line.starts_with(begin + " ... ")) {
            std::string count = line.substr(begin.size() + 5);
            std::erase(count, ',');
            told += std::stoull(count);
        }
    }
    EXPECT_EQ(told, static_cast<std::uint64_t>(kReports));
}

TEST_F(DiagnosticsOutputTest, TheErrorTraceIsFoldedAndTheTraceIsNot) {
    for (const diagnostics::Service service :
         {diagnostics::Service::kErrorTrace, diagnostics::Service::kTrace}) {
        for (int i = 0; i < 3; ++i) {
            LogAt(0.001 * i, "repeated", service);
        }
    }
    diagnostics::FlushRepeats();
    EXPECT_THAT(
        Untimed(kTraceFile),
        ElementsAre("error-trace src/a.cpp(12): repeated", "trace 1 src/a.cpp(12): repeated",
                    "trace 1 src/a.cpp(12): repeated", "trace 1 src/a.cpp(12): repeated",
                    "error-trace src/a.cpp(12): repeated ... 2 times more"));
}

TEST_F(DiagnosticsOutputTest, AFloodMovesNoLogAside) {
    Log("first");
    diagnostics::SetLogSizeLimit(2000);
    for (int i = 0; i < 100'000; ++i) {
        LogAt(0.001 * i, "flood");
    }
    EXPECT_THAT(m_folder.Read(kErrorFile), HasSubstr("first\n"));
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("wavo_error.log.1")));
}

TEST_F(DiagnosticsOutputTest, CountsGoToTheLogOfTheirReports) {
    Log("one");
    Log("one");
    std::filesystem::create_directory(m_folder.File("other"));
    diagnostics::SetLogFolder(m_folder.File("other"));
    Log("one");
    EXPECT_THAT(Untimed(kErrorFile), ElementsAre("error-log src/a.cpp(12): one",
                                                 "error-log src/a.cpp(12): one ... 1 time more"));
    EXPECT_THAT(Untimed("other/wavo_error.log"), ElementsAre("error-log src/a.cpp(12): one"));
}

TEST_F(DiagnosticsOutputTest, AFloodIntoALogThatIsLostIsTriedTwice) {
    diagnostics::SetLogFolder(m_folder.File("missing"));
    CollectLostLogs();
    for (int i = 0; i < 1000; ++i) {
        LogAt(0.0001 * i, "flood");
    }
    std::filesystem::create_directory(m_folder.File("missing"));
    diagnostics::FlushRepeats();
    EXPECT_THAT(Untimed("missing/wavo_error.log"),
                ElementsAre("error-log src/a.cpp(12): flood ... 998 times more"));
    EXPECT_THAT(m_lost, ElementsAre(kErrorFile));
}

TEST_F(DiagnosticsOutputTest, TheEchoIsFoldedToo) {
    diagnostics::SetLogFolder({});
    diagnostics::SetEcho(true);
    ::testing::internal::CaptureStderr();
    LogAt(0.0, "loud");
    LogAt(0.1, "loud");
    LogAt(0.2, "loud");
    LogAt(0.3, "louder");
    const std::string echoed = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(echoed.begin(), echoed.end(), '\n'), 3);
    EXPECT_THAT(echoed, HasSubstr("src/a.cpp(12): loud ... 2 times more\n"));
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
