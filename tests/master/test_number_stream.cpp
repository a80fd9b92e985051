// From lines of text to lines of values: names, cycle time, faults and gaps.
#include "master/pipe/number_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class NumberStreamTest : public ::testing::Test, private LineSink {
 protected:
    void Open(StreamOptions options) {
        LineSink& sink = *this;
        m_stream = std::make_unique<NumberStream>(std::move(options), sink, m_bad, m_gaps);
        EXPECT_TRUE(m_stream->Start());
    }
    static StreamOptions Named(std::vector<std::string> axes, double cycle_time = 0.001) {
        StreamOptions options;
        options.axes = std::move(axes);
        options.cycle_time = cycle_time;
        return options;
    }
    static StreamOptions Timed(std::vector<std::string> axes = {}) {
        StreamOptions options;
        options.axes = std::move(axes);
        options.has_time = true;
        return options;
    }
    void Take(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            EXPECT_TRUE(m_stream->Take(line)) << line << ": " << m_stream->error();
        }
    }
    std::string FailureOf(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            if (!m_stream->Take(line)) {
                return m_stream->error();
            }
        }
        return m_stream->Finish() ? "" : m_stream->error();
    }

    bool Begin(const std::vector<std::string>& axes, double cycle_time) override {
        EXPECT_THAT(m_axes, IsEmpty()) << "begun twice";
        m_axes = axes;
        m_cycle_time = cycle_time;
        return true;
    }
    bool Line(std::span<const double> values) override {
        std::string text;
        for (const double value : values) {
            char number[32];
            std::snprintf(number, sizeof number, "%g", value);
            text.append(text.empty() ? "" : " ").append(std::isnan(value) ? "nan" : number);
        }
        m_lines.push_back(text);
        return m_goes_on;
    }

    Reports m_bad{[this](const std::string& text) { m_bad_texts.push_back(text); }};
    Reports m_gaps{[this](const std::string& text) { m_gap_texts.push_back(text); }};
    std::unique_ptr<NumberStream> m_stream;
    std::vector<std::string> m_axes;
    double m_cycle_time = 0.0;
    std::vector<std::string> m_lines;
    std::vector<std::string> m_bad_texts;
    std::vector<std::string> m_gap_texts;
    bool m_goes_on = true;
};

// ---- Names ----

TEST_F(NumberStreamTest, BeginsBeforeTheFirstLineWhereAllIsKnown) {
    Open(Named({"force", "temp"}, 0.002));
    EXPECT_THAT(m_axes, ElementsAre("force", "temp"));
    EXPECT_EQ(m_cycle_time, 0.002);
    Take({"1 2", "3 4\r"});
    EXPECT_THAT(m_lines, ElementsAre("1 2", "3 4"));
}

TEST_F(NumberStreamTest, NamesComeFromTheFirstLine) {
    StreamOptions options;
    options.cycle_time = 0.001;
    Open(options);
    Take({"\xEF\xBB\xBF# \"Force [N]\" , Temp,'a,b'", "1,2,3"});
    EXPECT_THAT(m_axes, ElementsAre("Force_[N]", "Temp", "'a", "b'"));
    EXPECT_THAT(m_bad_texts, ElementsAre("line 2: 3 fields in place of 4"));
}

TEST_F(NumberStreamTest, NamesThatAreGivenTakeThePlaceOfThoseInTheInput) {
    Open(Named({"a", "b"}));
    Take({"X;Y", "1;2"});
    EXPECT_THAT(m_axes, ElementsAre("a", "b"));
    EXPECT_THAT(m_lines, ElementsAre("1 2"));
    EXPECT_THAT(m_bad_texts, IsEmpty());
}

TEST_F(NumberStreamTest, NamesThatCannotBeUsed) {
    StreamOptions options;
    options.cycle_time = 0.001;
    Open(options);
    EXPECT_EQ(FailureOf({"1 2 3"}),
              "line 1: it has numbers where the names of the axes are expected; name them with "
              "--axes");
    Open(options);
    EXPECT_EQ(FailureOf({"a,,b"}), "line 1: column 2 has no name");
    Open(options);
    EXPECT_EQ(FailureOf({""}), "line 1: column 1 has no name");
    Open(options);
    EXPECT_EQ(FailureOf({}), "the input ended before the line with the names of the axes");
    Open(options);
    EXPECT_EQ(FailureOf({"a b a"}), "line 1: two columns are named a");
    Open(Timed());
    EXPECT_EQ(FailureOf({"time"}),
              "line 1: it has no column behind the time; give --cycle when there is none");
    EXPECT_THAT(m_axes, IsEmpty());
}

// ---- Lines that cannot be read ----

TEST_F(NumberStreamTest, ALineThatCannotBeReadBecomesMissingValues) {
    Open(Named({"a", "b"}));
    Take({"1,2", "3,x", "4", "5,6,7", "", "8,9"});
    EXPECT_TRUE(m_stream->TakeTooLong());
    EXPECT_THAT(m_lines,
                ElementsAre("1 2", "nan nan", "nan nan", "nan nan", "nan nan", "8 9", "nan nan"));
    EXPECT_THAT(m_bad_texts,
                ElementsAre("line 2: \"x\" is no number", "line 3: 1 field in place of 2",
                            "line 4: 3 fields in place of 2", "line 5: 1 field in place of 2",
                            "line 7: it is too long"));
}

TEST_F(NumberStreamTest, TenReportsThenTheyAreCounted) {
    Open(Named({"a"}));
    for (int i = 0; i < 1000; ++i) {
        Take({i % 2 == 0 ? "1" : "one"});
    }
    EXPECT_THAT(m_bad_texts, SizeIs(11));
    EXPECT_EQ(m_bad_texts.back(), "further ones are counted only");
    EXPECT_EQ(m_bad.count(), 500U);
    EXPECT_THAT(m_lines, SizeIs(1000));
}

TEST_F(NumberStreamTest, ReportsQuoteNoControlCharactersAndNoLongTexts) {
    Open(Named({"a"}));
    Take({"1", "\x1b[2J", std::string(100, 'x')});
    EXPECT_THAT(m_bad_texts,
                ElementsAre("line 2: \"?[2J\" is no number",
                            "line 3: \"" + std::string(40, 'x') + "...\" is no number"));
}

TEST_F(NumberStreamTest, EndsWhenNoMoreIsWanted) {
    Open(Named({"a"}));
    m_goes_on = false;
    EXPECT_FALSE(m_stream->Take("1"));
    EXPECT_EQ(m_stream->error(), "");
}

// ---- Time ----

TEST_F(NumberStreamTest, CycleTimeIsTheMedianStepOfTheFirstLines) {
    Open(Timed());
    Take({"time a", "0.1 0", "0.101 1", "0.102 2", "0.1031 3", "0.104 4", "0.105 5", "0.1056 6",
          "0.107 7"});
    EXPECT_THAT(m_lines, IsEmpty());
    Take({"0.108 8", "0.109 9"});
    EXPECT_EQ(m_cycle_time, 0.001);
    EXPECT_THAT(m_axes, ElementsAre("a"));
    EXPECT_THAT(m_lines, ElementsAre("0", "1", "2", "3", "4", "5", "6", "7", "8", "9"));
    EXPECT_THAT(m_gap_texts, IsEmpty());
}

TEST_F(NumberStreamTest, AShortInputTellsTheCycleTimeAtItsEnd) {
    StreamOptions options = Timed({"a"});
    options.time_unit = 1e-3;
    Open(options);
    Take({"10 1", "12 2", "14 3"});
    EXPECT_TRUE(m_stream->Finish());
    EXPECT_EQ(m_cycle_time, 0.002);
    EXPECT_THAT(m_lines, ElementsAre("1", "2", "3"));
}

TEST_F(NumberStreamTest, GapsAreToldAndBecomeMissingValues) {
    StreamOptions options = Timed({"a"});
    options.cycle_time = 0.5;
    options.most_missing = 3;
    Open(options);
    Take({"0 1", "0.5 2", "2 3", "2.6 4", "9 5"});
    EXPECT_THAT(m_lines, ElementsAre("1", "2", "nan", "nan", "3", "4", "nan", "nan", "nan", "5"));
    EXPECT_THAT(m_gap_texts,
                ElementsAre("line 3: 2 lines are missing before it, between 0.5 s and 2 s",
                            "line 5: 12 lines are missing before it, between 2.6 s and 9 s; of "
                            "these 3 are shown"));
    EXPECT_EQ(m_stream->missing_lines(), 5U);
}

TEST_F(NumberStreamTest, ABadLineTakesTheTimeOfItsCycle) {
    StreamOptions options = Timed({"a"});
    options.cycle_time = 0.5;
    Open(options);
    Take({"0 1", "oops", "1 3", "nan 4", "2 5"});
    EXPECT_THAT(m_lines, ElementsAre("1", "nan", "3", "nan", "5"));
    EXPECT_THAT(m_bad_texts,
                ElementsAre("line 2: \"oops\" is no number", "line 4: it has no time"));
    EXPECT_THAT(m_gap_texts, IsEmpty());
}

TEST_F(NumberStreamTest, ATimeThatDoesNotAdvanceCostsOneLine) {
    StreamOptions options = Timed({"a"});
    options.cycle_time = 0.5;
    Open(options);
    Take({"10 1", "10.5 2", "3 3", "3.5 4", "3.5 5", "4 6"});
    EXPECT_THAT(m_lines, ElementsAre("1", "2", "nan", "4", "nan", "6"));
    EXPECT_THAT(m_bad_texts, ElementsAre("line 3: its time 3 s is not a cycle behind 10.5 s",
                                         "line 5: its time 3.5 s is not a cycle behind 3.5 s"));
}

TEST_F(NumberStreamTest, ATimeThatNeverRisesIsNoTime) {
    Open(Timed({"a"}));
    EXPECT_EQ(FailureOf(std::vector<std::string>(9, "1 2")),
              "the first column is no time that rises; give --cycle when there is none");
    Open(Timed({"a"}));
    EXPECT_EQ(FailureOf({}), "the input ended before a line that tells the cycle time");
}

}  // namespace
}  // namespace wavo::master
