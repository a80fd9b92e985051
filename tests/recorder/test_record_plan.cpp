// Which lines go into which file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "recorder/record_plan.h"

namespace wavo::recorder {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writes down what it is told: "[0-9 10 !trigger@5 ]".
class ToldSink : public RecordSink {
 public:
    void BeginFile() override { text += '['; }
    bool TakeLines(LineBlock block, bool is_history) override {
        for (std::size_t i = 0; i < block.lines; ++i) {
            EXPECT_EQ(block.values[i], static_cast<double>(block.first + i)) << "another line";
        }
        const bool is_taken = !is_full || is_history;
        if (is_taken) {
            if (!m_end || *m_end != block.first) {
                text += (text.back() == '[' ? "" : " ") + std::to_string(block.first) + "-";
            } else {
                text.resize(text.rfind('-') + 1);
            }
            m_end = block.End();
            text += std::to_string(block.End() - 1);
        }
        return is_taken;
    }
    void TakeEvent(const recording::Event& event) override {
        text += " !" + event.kind + "@" + std::to_string(event.line);
        if (event.lost > 0) {
            text += "/" + std::to_string(event.lost);
        }
        m_end.reset();
    }
    void EndFile() override {
        text += ']';
        m_end.reset();
    }

    std::string text;
    bool is_full = false;

 private:
    std::optional<std::uint64_t> m_end;
};

/// Axis X is the number of the line; axis Y counts up to 10 and begins anew.
LineBlock NumberedLines(std::uint64_t first, std::size_t count) {
    LineBlock block{first, count, {}};
    for (std::size_t i = 0; i < count; ++i) {
        block.values.push_back(static_cast<double>(first + i));
    }
    return block;
}

WavoGraph Graph(TriggerTypeCode type, double limit, double range = 1.0) {
    WavoGraph graph;
    graph.GraphNumber = 1;
    graph.XScale = {ScaleTypeCode::kTime, range, {}, 0.0, 0.0};
    graph.YCoorAxName = {"X"};
    graph.YCoorAxDerivation = {0};
    graph.Triggers = {{type, limit, "X"}};
    return graph;
}

/// What is written of `count` lines, 0.1 s each, that come in blocks of `block` lines.
std::string Written(const PlanOptions& options, std::size_t count, std::size_t block) {
    ToldSink sink;
    RecordPlan plan(options, {"X"}, 0.1, sink);
    for (std::size_t first = 0; first < count; first += block) {
        plan.Take(NumberedLines(first, std::min(block, count - first)));
    }
    plan.Finish();
    return sink.text;
}

TEST(RecordPlans, WithoutTriggersEverythingIsWritten) {
    EXPECT_EQ(Written({}, 25, 10), "[0-24]");
    EXPECT_EQ(Written({}, 0, 10), "");
}

TEST(RecordPlans, EndAfterATimeOrANumberOfLines) {
    for (const std::size_t block : {1U, 7U, 100U}) {
        PlanOptions options;
        options.end_line = 12;
        EXPECT_EQ(Written(options, 50, block), "[0-11]");
        options = {};
        options.lines = 12;
        EXPECT_EQ(Written(options, 50, block), "[0-11]");
    }
    ToldSink sink;
    PlanOptions options;
    options.end_line = 12;
    RecordPlan plan(options, {"X"}, 0.1, sink);
    plan.Take(NumberedLines(0, 5));
    EXPECT_FALSE(plan.IsDone());
    plan.Take(NumberedLines(20, 5));  // a gap over the end
    EXPECT_TRUE(plan.IsDone());
    EXPECT_EQ(sink.text, "[0-4]");
}

TEST(RecordPlans, SplitByTime) {
    for (const std::size_t block : {1U, 7U, 100U}) {
        PlanOptions options;
        options.split = 1.0;
        EXPECT_EQ(Written(options, 25, block), "[0-9][10-19][20-24]");
    }
}

TEST(RecordPlans, AStartTriggerWritesWhatTheGraphRecords) {
    for (const std::size_t block : {1U, 7U, 100U}) {
        PlanOptions options;
        options.graphs = {Graph(TriggerTypeCode::kStartAbove, 11.5)};
        EXPECT_EQ(Written(options, 50, block), "[ !trigger@12 12-21]");
        options.before = 0.3;
        EXPECT_EQ(Written(options, 50, block), "[9-11 !trigger@12 12-21]");
        options.after = 0.2;
        EXPECT_EQ(Written(options, 50, block), "[9-11 !trigger@12 12-13]");
        options.before = 100.0;
        EXPECT_EQ(Written(options, 50, block), "[0-11 !trigger@12 12-13]");
    }
}

TEST(RecordPlans, AStopTriggerWritesWhatTheGraphShows) {
    for (const std::size_t block : {1U, 7U, 100U}) {
        PlanOptions options;
        options.graphs = {Graph(TriggerTypeCode::kStopAbove, 11.5)};
        EXPECT_EQ(Written(options, 50, block), "[2-11 !trigger@12 12-12]");
        options.after = 0.5;
        options.before = 0.0;
        EXPECT_EQ(Written(options, 50, block), "[ !trigger@12 12-17]");
    }
}

TEST(RecordPlans, RepeatTakesAFileEach) {
    // Graph over a saw tooth of ten lines, made of a difference.
    for (const std::size_t block : {1U, 7U, 40U}) {
        ToldSink sink;
        PlanOptions options;
        WavoGraph graph = Graph(TriggerTypeCode::kStartAbove, 7.5, 0.2);
        graph.YCoorAxName = {"Saw"};
        options.graphs = {graph};
        options.before = 0.1;
        options.repeat = true;
        class SawSink : public ToldSink {
         public:
            bool TakeLines(LineBlock lines, bool is_history) override {
                LineBlock numbers{lines.first, lines.lines, {}};
                for (std::size_t i = 0; i < lines.lines; ++i) {
                    numbers.values.push_back(lines.values[2 * i]);
                }
                return ToldSink::TakeLines(std::move(numbers), is_history);
            }
        } saw;
        RecordPlan plan(options, {"X", "Saw"}, 0.1, saw);
        for (std::size_t first = 0; first < 40; first += block) {
            LineBlock lines{first, std::min<std::size_t>(block, 40 - first), {}};
            for (std::size_t i = 0; i < lines.lines; ++i) {
                lines.values.push_back(static_cast<double>(first + i));
                lines.values.push_back(static_cast<double>((first + i) % 10));
            }
            plan.Take(std::move(lines));
        }
        EXPECT_FALSE(plan.IsDone());
        EXPECT_EQ(saw.text,
                  "[7-7 !trigger@8 8-9][17-17 !trigger@18 18-19][27-27 !trigger@28 28-29]"
                  "[37-37 !trigger@38 38-39")
            << block;
    }
}

TEST(RecordPlans, WithoutRepeatItIsDoneAfterOne) {
    ToldSink sink;
    PlanOptions options;
    options.graphs = {Graph(TriggerTypeCode::kStartAbove, 3.5, 0.2)};
    RecordPlan plan(options, {"X"}, 0.1, sink);
    plan.Take(NumberedLines(0, 6));
    EXPECT_FALSE(plan.IsDone());
    EXPECT_TRUE(plan.IsWriting());
    plan.Take(NumberedLines(6, 1));
    EXPECT_TRUE(plan.IsDone());
    EXPECT_EQ(sink.text, "[ !trigger@4 4-5]");
}

TEST(RecordPlans, AnotherTriggerMeanwhileMakesItLonger) {
    ToldSink sink;
    PlanOptions options;
    options.graphs = {Graph(TriggerTypeCode::kStartAbove, 3.5, 1.0),
                      Graph(TriggerTypeCode::kStartAbove, 8.5, 1.0)};
    RecordPlan plan(options, {"X"}, 0.1, sink);
    plan.Take(NumberedLines(0, 30));
    EXPECT_EQ(sink.text, "[ !trigger@4 4-8 !trigger@9 9-18]");
}

TEST(RecordPlans, WhatTheDiskCannotTakeIsCountedAndTold) {
    ToldSink sink;
    RecordPlan plan({}, {"X"}, 0.1, sink);
    plan.Take(NumberedLines(0, 5));
    sink.is_full = true;
    plan.Take(NumberedLines(5, 5));
    plan.Take(NumberedLines(10, 5));
    sink.is_full = false;
    plan.Take(NumberedLines(15, 5));
    plan.Finish();
    EXPECT_EQ(sink.text, "[0-4 15-19 !disk_too_slow@15/10]");
    EXPECT_EQ(plan.LinesDropped(), 10U);
}

TEST(RecordPlans, EventsStandInTheFileOfTheirLines) {
    ToldSink sink;
    RecordPlan plan({}, {"X"}, 0.1, sink);
    plan.TakeEvent({"lost before anything", 0, 0, ""});
    plan.Take(NumberedLines(0, 5));
    plan.TakeEvent({"overrun", 8, 3, ""});
    plan.Take(NumberedLines(8, 2));
    plan.Finish();
    EXPECT_EQ(sink.text, "[0-4 !overrun@8/3 8-9]");
    ToldSink armed;
    PlanOptions options;
    options.graphs = {Graph(TriggerTypeCode::kStartAbove, 11.5, 0.2)};
    options.before = 0.5;
    RecordPlan watching(options, {"X"}, 0.1, armed);
    watching.Take(NumberedLines(0, 2));
    watching.TakeEvent({"overrun", 4, 2, ""});
    watching.Take(NumberedLines(4, 4));
    watching.TakeEvent({"overrun", 10, 2, ""});
    watching.Take(NumberedLines(10, 10));
    EXPECT_EQ(armed.text, "[7-7 !overrun@10/2 10-11 !trigger@12 12-13]");
}

TEST(RecordPlans, HistoryHasALimit) {
    ToldSink sink;
    PlanOptions options;
    options.graphs = {Graph(TriggerTypeCode::kStartAbove, 1.0)};
    options.before = 1e6;
    const RecordPlan plan(options, std::vector<std::string>(1000, "X"), 0.001, sink);
    ASSERT_TRUE(plan.ShortenedHistory());
    EXPECT_NEAR(*plan.ShortenedHistory(), 134.2, 0.1);
}

}  // namespace
}  // namespace wavo::recorder
