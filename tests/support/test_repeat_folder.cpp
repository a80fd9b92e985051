#include "support/repeat_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace wavo::diagnostics {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Clock = RepeatFolder::Clock;

class RepeatFolderTest : public ::testing::Test {
 protected:
    static Clock::time_point At(double seconds) {
        return Clock::time_point(std::chrono::hours(24)) +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }
    static std::vector<std::string> Texts(const std::vector<RepeatFolder::Line>& lines) {
        std::vector<std::string> texts;
        for (const RepeatFolder::Line& line : lines) {
            texts.push_back(line.text);
        }
        return texts;
    }
    /// What is written because of a report.
    std::vector<std::string> Add(const std::string& text, double seconds, int line = 12) {
        return Texts(m_folder.Add("src/a.cpp", line, text, At(seconds)));
    }
    std::vector<std::string> Flush(double seconds) { return Texts(m_folder.Flush(At(seconds))); }

    RepeatFolder m_folder;
};

TEST_F(RepeatFolderTest, TheFirstIsWrittenAndTheOthersAreCounted) {
    EXPECT_THAT(Add("overrun", 0.0), ElementsAre("overrun"));
    for (int i = 0; i < 149'899; ++i) {
        EXPECT_THAT(Add("overrun", 1e-6 * i), IsEmpty());
    }
    EXPECT_TRUE(m_folder.HasCounts());
    EXPECT_THAT(Flush(0.2), ElementsAre("overrun ... 149,899 times more"));
    EXPECT_FALSE(m_folder.HasCounts());
    EXPECT_THAT(Flush(0.3), IsEmpty());
}

TEST_F(RepeatFolderTest, ACountHasPlaceAndTimeOfTheLastOne) {
    Add("overrun", 0.0);
    Add("overrun", 0.25);
    Add("overrun", 0.5);
    const std::vector<RepeatFolder::Line> lines = m_folder.Flush(At(0.75));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].source, "src/a.cpp");
    EXPECT_EQ(lines[0].line, 12);
    EXPECT_EQ(lines[0].time, At(0.5));
}

TEST_F(RepeatFolderTest, SizesOfCountsAreReadable) {
    for (const auto& [count, text] :
         {std::pair(1, "x ... 1 time more"), std::pair(999, "x ... 999 times more"),
          std::pair(1000, "x ... 1,000 times more"),
          std::pair(1'234'567, "x ... 1,234,567 times more")}) {
        m_folder.BeginAnew();
        Add("x", 0.0);
        for (int i = 0; i < count; ++i) {
            Add("x", 0.0);
        }
        EXPECT_THAT(Flush(0.0), ElementsAre(text));
    }
}

TEST_F(RepeatFolderTest, AnotherPlaceOrTextIsAnotherReport) {
    EXPECT_THAT(Add("one", 0.0, 1), ElementsAre("one"));
    EXPECT_THAT(Add("one", 0.0, 2), ElementsAre("one"));
    EXPECT_THAT(Add("two", 0.0, 1), ElementsAre("two"));
    EXPECT_THAT(Texts(m_folder.Add("src/b.cpp", 1, "one", At(0.0))), ElementsAre("one"));
}

TEST_F(RepeatFolderTest, ReportsThatAlternateAreCountedEach) {
    EXPECT_THAT(Add("open", 0.0), ElementsAre("open"));
    EXPECT_THAT(Add("read", 0.0), ElementsAre("read"));
    for (int i = 0; i < 500; ++i) {
        EXPECT_THAT(Add("open", 0.001 * i), IsEmpty());
        EXPECT_THAT(Add("read", 0.001 * i), IsEmpty());
    }
    EXPECT_THAT(Flush(0.6), ElementsAre("open ... 500 times more", "read ... 500 times more"));
}

TEST_F(RepeatFolderTest, CountsAreWrittenBeforeAnotherReport) {
    Add("one", 0.0);
    Add("one", 0.1);
    Add("one", 0.2);
    EXPECT_THAT(Add("two", 0.3), ElementsAre("one ... 2 times more", "two"));
    EXPECT_THAT(Add("one", 0.4), IsEmpty()) << "it still repeats itself";
}

TEST_F(RepeatFolderTest, AfterAWhileWithoutItAReportIsWrittenAsItIs) {
    Add("one", 0.0);
    EXPECT_THAT(Add("one", 9.0), ElementsAre("one ... 1 time more"));
    EXPECT_THAT(Add("one", 18.5), ElementsAre("one ... 1 time more"));
    EXPECT_THAT(Add("one", 28.5), ElementsAre("one"));
    EXPECT_THAT(Add("one", 29.0), IsEmpty());
    EXPECT_THAT(Add("one", 39.0), ElementsAre("one ... 1 time more", "one"));
}

TEST_F(RepeatFolderTest, AFloodIsToldEverLessOften) {
    std::uint64_t lines = Add("one", 0.0).size();
    for (int i = 1; i < 3'600'000; ++i) {
        lines += Add("one", 0.001 * i).size();
        if (i % 20 == 0) {
            lines += Flush(0.001 * i).size();
        }
    }
    // The first, then after 20 ms, 1, 2, 4, ... 32 s, and each minute.
    EXPECT_EQ(lines, 1U + 7U + 58U);
}

TEST_F(RepeatFolderTest, AFloodThatLeavesNoRestIsToldToo) {
    std::vector<std::string> lines;
    for (int i = 0; i <= 3500; ++i) {
        for (const std::string& line : Add("one", 0.001 * i)) {
            lines.push_back(line);
        }
    }
    EXPECT_THAT(lines, ElementsAre("one", "one ... 1,000 times more", "one ... 1,000 times more"));
    EXPECT_THAT(Texts(m_folder.FlushAll()), ElementsAre("one ... 1,500 times more"));
}

TEST_F(RepeatFolderTest, AClockThatIsSetBackHidesNothing) {
    Add("one", 3600.0);
    EXPECT_THAT(Add("one", 0.0), ElementsAre("one"));
    EXPECT_THAT(Add("one", 0.5), IsEmpty());
    EXPECT_THAT(Flush(-3600.0), ElementsAre("one ... 1 time more"));
}

TEST_F(RepeatFolderTest, InAnotherLogEachIsWrittenAsItIsOnceMore) {
    Add("one", 0.0);
    Add("two", 0.0);
    Add("one", 0.1);
    m_folder.BeginAnew();
    EXPECT_THAT(Add("one", 0.2), ElementsAre("one ... 1 time more", "one"));
    EXPECT_THAT(Add("one", 0.3), IsEmpty());
    EXPECT_THAT(Add("two", 0.4), ElementsAre("one ... 1 time more", "two"));
}

TEST_F(RepeatFolderTest, OfManyDifferentReportsTheLatestAreRemembered) {
    constexpr int kMore = RepeatFolder::kMostRemembered + 1;
    for (int i = 0; i < kMore; ++i) {
        EXPECT_THAT(Add(std::to_string(i), 0.001 * i), ElementsAre(std::to_string(i)));
    }
    for (int i = 1; i < kMore; ++i) {
        EXPECT_THAT(Add(std::to_string(i), 0.1 + 0.001 * i), IsEmpty());
    }
    EXPECT_EQ(Add("0", 0.2).size(), RepeatFolder::kMostRemembered + 1) << "each count, and it";
    EXPECT_FALSE(m_folder.HasCounts());
}

TEST_F(RepeatFolderTest, EveryReportIsInALineOrACount) {
    // A walk through few and many texts, pauses and looks, always the same.
    std::uint32_t random = 1;
    const auto next = [&random](std::uint32_t below) {
        random = random * 1664525U + 1013904223U;
        return (random >> 16U) % below;
    };
    std::uint64_t told = 0;
    const auto count = [&told](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const std::size_t mark = text.find(" ... ");
            std::string number = mark == std::string::npos ? "1" : text.substr(mark + 5);
            std::erase(number, ',');
            told += std::stoull(number);
        }
    };
    double time = 0.0;
    constexpr int kReports = 100'000;
    for (int i = 0; i < kReports; ++i) {
        time += next(1000) == 0 ? 11.0 : 0.001 * next(10);
        count(Add(std::to_string(next(next(100) == 0 ? 40 : 3)), time));
        if (next(50) == 0) {
            count(Flush(time));
        }
    }
    count(Texts(m_folder.FlushAll()));
    EXPECT_EQ(told, static_cast<std::uint64_t>(kReports));
}

}  // namespace

}  // namespace wavo::diagnostics
