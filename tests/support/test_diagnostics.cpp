#include "support/diagnostics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "platform/last_error.h"
#include "support/diagnostics_output.h"

namespace wavo {

using diagnostics::Report;
using diagnostics::Service;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;

namespace {

struct Seen {
    Service service;
    std::string source;
    int line;
    std::string text;
};

class DiagnosticsTest : public ::testing::Test {
 protected:
    void TearDown() override {
        MErrTrace_ClearContext();
        _MTrace_SetLevel("default", 1);
    }

    /// All reports from now on, with their locations. Takes the place of the usual observer, so
    /// error-log entries need not be announced.
    void CollectAll() {
        diagnostics::SetObserver([this](const Report& report) {
            m_seen.push_back({report.service, std::string(report.source), report.line,
                              std::string(report.text)});
        });
    }

    std::vector<Seen> m_seen;
};

TEST_F(DiagnosticsTest, AChannelBeginsWithLevelOne) {
    EXPECT_NE(_MTrace_TestLevel("never set", 0), 0);
    EXPECT_NE(_MTrace_TestLevel("never set", 1), 0);
    EXPECT_EQ(_MTrace_TestLevel("never set", 2), 0);
    EXPECT_NE(_MTrace_TestLevel("default", 1), 0);
    EXPECT_EQ(_MTrace_TestLevel("default", 2), 0);
}

TEST_F(DiagnosticsTest, AMessageIsWrittenWhenTheLevelIsAtLeastItsOwn) {
    _MTrace_SetLevel("default", 4);
    EXPECT_NE(_MTrace_TestLevel("default", 4), 0);
    EXPECT_EQ(_MTrace_TestLevel("default", 5), 0);
    _MTrace_SetLevel("default", 0);
    EXPECT_EQ(_MTrace_TestLevel("default", 1), 0);
    EXPECT_NE(_MTrace_TestLevel("default", 0), 0);
}

TEST_F(DiagnosticsTest, ChannelsAreKnownByTheirNamesAndNotByTheirAddresses) {
    std::string name = "default";
    _MTrace_SetLevel(name.c_str(), 3);
    EXPECT_NE(_MTrace_TestLevel("default", 3), 0);
    name[0] = 'D';
    EXPECT_EQ(_MTrace_TestLevel(name.c_str(), 3), 0);
    _MTrace_SetLevel("defaul", 9);
    _MTrace_SetLevel("default2", 9);
    _MTrace_SetLevel("", 9);
    EXPECT_EQ(_MTrace_TestLevel("default", 4), 0);
    EXPECT_NE(_MTrace_TestLevel("defaul", 9), 0);
    EXPECT_NE(_MTrace_TestLevel("", 9), 0);
}

TEST_F(DiagnosticsTest, LevelFourTracesAppearAtLevelFourOnly) {
    const CollectReports traces(Service::kTrace);
    MTRACE(1, "at %d", 1);
    MTRACE(4, "not yet");
    _MTrace_SetLevel("default", 4);
    MTRACE(4, "OnDraw(): --- start to draw all graphs");
    _MTrace_SetLevel("default", 1);
    MTRACE(4, "no longer");
    EXPECT_THAT(traces.Texts(), ElementsAre("at 1", "OnDraw(): --- start to draw all graphs"));
}

TEST_F(DiagnosticsTest, ATraceBelowTheLevelEvaluatesNoArgument) {
    int evaluated = 0;
    MTRACE(4, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    MTRACE(1, "%d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
}

TEST_F(DiagnosticsTest, TheLocationCallTellsWhetherToGoOn) {
    EXPECT_NE(_MTrace_Location("a.cpp", 5, "default", 1), 0);
    EXPECT_EQ(_MTrace_Location("a.cpp", 5, "default", 2), 0);
}

TEST_F(DiagnosticsTest, AlwaysWritesWithTheLastLocationWithoutTestingTheLevel) {
    CollectAll();
    _MTrace_Location("src/a.cpp", 5, "default", 4);
    _MTrace_Always("%s", "text");
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0].service, Service::kTrace);
    EXPECT_EQ(m_seen[0].source, "src/a.cpp");
    EXPECT_EQ(m_seen[0].line, 5);
    EXPECT_EQ(m_seen[0].text, "text");
}

TEST_F(DiagnosticsTest, EveryServiceKeepsItsOwnLocation) {
    CollectAll();
    _MErrTrace_Location(0, "trace.cpp", 1);
    _MErrLog_Location(0, "log.cpp", 2);
    _MTrace_Location("progress.cpp", 3, "default", 1);
    _MErrTrace_Add("a");
    _MErrLog_Add("b");
    _MTrace_Always("c");
    ASSERT_EQ(m_seen.size(), 3U);
    EXPECT_EQ(m_seen[0].source + ":" + std::to_string(m_seen[0].line), "trace.cpp:1");
    EXPECT_EQ(m_seen[1].source + ":" + std::to_string(m_seen[1].line), "log.cpp:2");
    EXPECT_EQ(m_seen[2].source + ":" + std::to_string(m_seen[2].line), "progress.cpp:3");
}

TEST_F(DiagnosticsTest, TheMacrosReportOurOwnRelativePaths) {
    CollectAll();
    MERRTRACE("x");
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0].source, "tests/support/test_diagnostics.cpp");
    EXPECT_EQ(m_seen[0].line, __LINE__ - 3);
}

TEST_F(DiagnosticsTest, TheLastErrorIsKeptByEveryCall) {
    CollectAll();
    platform::SetLastError(77);
    _MErrTrace_Location(0, "a.cpp", 1);
    EXPECT_EQ(platform::LastError(), 77);
    _MErrTrace_Add("failed (%d)", platform::LastError());
    EXPECT_EQ(platform::LastError(), 77);
    _MErrLog_Location(0, "a.cpp", 1);
    EXPECT_EQ(platform::LastError(), 77);
    _MErrLog_Add("failed (%d)", platform::LastError());
    _MTrace_TestLevel("other", 1);
    _MTrace_Location("a.cpp", 1, "default", 1);
    _MTrace_Always("x");
    MErrTrace_BeginContext();
    MErrTrace_Dump();
    MErrTrace_EndContext();
    EXPECT_EQ(platform::LastError(), 77);
    EXPECT_EQ(m_seen[0].text, "failed (77)");
    EXPECT_EQ(m_seen[1].text, "failed (77)");
}

TEST_F(DiagnosticsTest, WithoutAContextAnErrorTraceGoesOutAtOnce) {
    const CollectReports trace(Service::kErrorTrace);
    MERRTRACE("MSharedMem_Link() failed for '%s' (%d)", "name", 2);
    EXPECT_THAT(trace.Texts(), ElementsAre("MSharedMem_Link() failed for 'name' (2)"));
}

TEST_F(DiagnosticsTest, AContextHoldsAndItsEndPassesOnInOrder) {
    CollectAll();
    MErrTrace_BeginContext();
    _MErrTrace_Location(0, "first.cpp", 1);
    _MErrTrace_Add("one");
    _MErrTrace_Location(0, "second.cpp", 2);
    _MErrTrace_Add("two");
    EXPECT_THAT(m_seen, IsEmpty());
    MErrTrace_EndContext();
    ASSERT_EQ(m_seen.size(), 2U);
    EXPECT_EQ(m_seen[0].source, "first.cpp");
    EXPECT_EQ(m_seen[0].text, "one");
    EXPECT_EQ(m_seen[1].line, 2);
    EXPECT_EQ(m_seen[1].text, "two");
}

TEST_F(DiagnosticsTest, AHeldLocationDoesNotDependOnTheCallersText) {
    CollectAll();
    MErrTrace_BeginContext();
    {
        std::string source = "temporary.cpp";
        _MErrTrace_Location(0, source.c_str(), 1);
        _MErrTrace_Add("x");
        source.assign("overwritten!!");
    }
    MErrTrace_EndContext();
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0].source, "temporary.cpp");
}

TEST_F(DiagnosticsTest, AClearedContextDropsWhatItHolds) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_BeginContext();
    MERRTRACE("dropped");
    MErrTrace_ClearContext();
    MERRTRACE("kept");
    MErrTrace_EndContext();
    EXPECT_THAT(trace.Texts(), ElementsAre("kept"));
}

TEST_F(DiagnosticsTest, TheInnerContextEndsIntoTheEnclosingOne) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_BeginContext();
    MERRTRACE("outer");
    MErrTrace_BeginContext();
    MERRTRACE("inner");
    MErrTrace_EndContext();
    EXPECT_THAT(trace.Texts(), IsEmpty());
    MErrTrace_BeginContext();
    MERRTRACE("dropped");
    MErrTrace_ClearContext();
    MErrTrace_EndContext();
    MERRTRACE("last");
    MErrTrace_EndContext();
    EXPECT_THAT(trace.Texts(), ElementsAre("outer", "inner", "last"));
}

TEST_F(DiagnosticsTest, ClearingTheInnerContextLeavesTheOuterOne) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_BeginContext();
    MERRTRACE("outer");
    MErrTrace_BeginContext();
    MERRTRACE("inner");
    MErrTrace_ClearContext();
    MErrTrace_EndContext();
    MErrTrace_EndContext();
    EXPECT_THAT(trace.Texts(), ElementsAre("outer"));
}

TEST_F(DiagnosticsTest, DumpWritesAllContextsOldestFirstAndEmptiesThem) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_BeginContext();
    MERRTRACE("outer");
    MErrTrace_BeginContext();
    MERRTRACE("inner");
    MErrTrace_Dump();
    EXPECT_THAT(trace.Texts(), ElementsAre("outer", "inner"));
    MERRTRACE("after");
    EXPECT_EQ(trace.Texts().size(), 2U) << "the contexts stay open";
    MErrTrace_EndContext();
    MErrTrace_EndContext();
    EXPECT_THAT(trace.Texts(), ElementsAre("outer", "inner", "after"));
}

TEST_F(DiagnosticsTest, CallsWithoutAContextDoNothing) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_EndContext();
    MErrTrace_ClearContext();
    MErrTrace_Dump();
    EXPECT_THAT(trace.Texts(), IsEmpty());
    MERRTRACE("still works");
    EXPECT_THAT(trace.Texts(), ElementsAre("still works"));
}

TEST_F(DiagnosticsTest, AContextThatIsNeverClosedDoesNotGrowForEver) {
    const CollectReports trace(Service::kErrorTrace);
    MErrTrace_BeginContext();
    for (int i = 0; i < 10003; ++i) {
        MERRTRACE("%d", i);
    }
    MErrTrace_EndContext();
    const std::vector<std::string> texts = trace.Texts();
    ASSERT_EQ(texts.size(), 10001U);
    EXPECT_EQ(texts[0], "0");
    EXPECT_EQ(texts[9999], "9999");
    EXPECT_EQ(texts[10000], "3 more messages not kept");
}

TEST_F(DiagnosticsTest, AnErrorLogEntryGoesOutAtOnceAlsoInsideAContext) {
    const ExpectErrorLog expected({"Close(): MSharedMem_Unlink() failed"});
    MErrTrace_BeginContext();
    MERRLOG("Close(): %s() failed", "MSharedMem_Unlink");
    MErrTrace_ClearContext();
    MErrTrace_EndContext();
}

TEST_F(DiagnosticsTest, APrecisionCutsEchoedText) {
    const CollectReports trace(Service::kErrorTrace);
    MERRTRACE("'%.5s'", "123456789");
    EXPECT_THAT(trace.Texts(), ElementsAre("'12345'"));
}

TEST_F(DiagnosticsTest, LineEndsAtTheEndOfATextAreTakenOff) {
    const CollectReports trace(Service::kErrorTrace);
    MERRTRACE("a\nb\r\n");
    EXPECT_THAT(trace.Texts(), ElementsAre("a\nb"));
}

TEST_F(DiagnosticsTest, AHugeTextIsCutBetweenTwoCharacters) {
    const CollectReports trace(Service::kErrorTrace);
    const std::string exact(8000, 'x');
    MERRTRACE("%s", exact.c_str());
    std::string umlauts = "x";
    for (int i = 0; i < 100000; ++i) {
        umlauts += "\xC3\xA4";
    }
    MERRTRACE("%s", umlauts.c_str());
    const std::vector<std::string> texts = trace.Texts();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0], exact);
    EXPECT_LE(texts[1].size(), 8000U);
    EXPECT_GT(texts[1].size(), 7990U);
    EXPECT_EQ(texts[1].substr(texts[1].size() - 5), "\xC3\xA4...");
}

TEST_F(DiagnosticsTest, NothingTroublesACall) {
    CollectAll();
    const char* const none = nullptr;
    _MTrace_SetLevel(none, 1);
    EXPECT_EQ(_MTrace_TestLevel(none, 0), 0);
    EXPECT_EQ(_MTrace_Location(none, -1, none, 0), 0);
    _MErrTrace_Location(-1, none, -1);
    _MErrTrace_Add("%s", "no source");
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0].source, "");

    diagnostics::SetObserver([](const Report&) { throw std::runtime_error("from the observer"); });
    MERRTRACE("not thrown");
}

TEST_F(DiagnosticsTest, AnObserverMayReportItself) {
    int calls = 0;
    diagnostics::SetObserver([&](const Report&) {
        ++calls;
        MERRTRACE("from the observer");
    });
    MErrTrace_BeginContext();
    MERRTRACE("one");
    MErrTrace_Dump();
    EXPECT_EQ(calls, 1);
    MErrTrace_ClearContext();
    MErrTrace_EndContext();
    MERRTRACE("two");
    EXPECT_EQ(calls, 2);
}

}  // namespace

}  // namespace wavo
