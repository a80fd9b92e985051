// A source with computed axes: lines, what goes on and what begins anew, and what is said.
#include "computed/computed_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "graph/values/missing_value.h"
#include "special_values.h"

namespace wavo::computed {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNan;

class Machine : public ValueSource, public AxisLimitsSource {
 public:
    void SetEvents(ValueSourceEvents* e) override { events = e; }
    MaybeFault Start() override { return std::nullopt; }
    void Hold() override {}
    bool GoOn() override { return true; }
    void Stop() override {}
    BatchOutcome Take(ValueBatch& batch) override {
        batch = {lines.data(), lines.size() / axes, axes};
        return outcome;
    }
    bool Answer() override { return true; }
    const SourceDescription& Description() const override { return description; }
    AxisLimitsSource& Limits() override { return *this; }
    bool IsPresent() const override { return true; }
    bool CanStart() const override { return false; }
    const std::string& StateText() const override { return text; }
    SourceCounters Counters() const override { return {}; }
    std::optional<AxisCapabilities> FindAxis(const std::string&) override {
        return AxisCapabilities{5.0, -5.0, 0.0, 0.0, 0.001};
    }

    ValueSourceEvents* events = nullptr;
    SourceDescription description{{"X", "Y"}, 0.5};
    std::vector<double> lines;
    std::size_t axes = 2;
    BatchOutcome outcome = BatchOutcome::kTaken;
    std::string text = "Connected";
};

struct Listener : ValueSourceEvents {
    bool BatchReady() override { return true; }
    void Described(bool) override { ++described; }
    void StateChanged() override {}
    void ValuesBegin(bool by_itself) override { begun.push_back(by_itself); }
    void Closed() override {}
    void Ended() override {}
    void Quit() override {}
    void ShowFault(const std::string&) override {}
    void ShowBatchFault(const std::string&) override {}

    int described = 0;
    std::vector<bool> begun;
};

class ComputedLines : public ::testing::Test {
 protected:
    ComputedLines() { m_source.SetEvents(&m_listener); }

    /// The values of a column in a batch of these lines.
    std::vector<double> Take(std::vector<double> lines, std::size_t column = 2) {
        m_machine.lines = std::move(lines);
        ValueBatch batch;
        EXPECT_EQ(m_source.Take(batch), BatchOutcome::kTaken);
        EXPECT_TRUE(batch.count == 0 || batch.axes == m_source.Description().axis_names.size());
        std::vector<double> values;
        for (std::uint64_t i = 0; column < batch.axes && i < batch.count; ++i) {
            values.push_back(batch.lines[i * batch.axes + column]);
        }
        return values;
    }
    void Describe(std::vector<std::string> names) {
        m_machine.description.axis_names = std::move(names);
        m_machine.axes = std::max<std::size_t>(m_machine.description.axis_names.size(), 1);
        m_machine.events->Described(false);
    }

    Machine m_machine;
    Listener m_listener;
    ComputedSource m_source{m_machine};
};

TEST_F(ComputedLines, PassOnWhatTheyAreWithoutComputedAxes) {
    m_machine.lines = {1, 2, 3, 4};
    ValueBatch batch;
    ASSERT_EQ(m_source.Take(batch), BatchOutcome::kTaken);
    EXPECT_EQ(batch.lines, m_machine.lines.data()) << "nothing was copied";
    EXPECT_THAT(m_source.Description().axis_names, ElementsAre("X", "Y"));
    EXPECT_EQ(m_source.StateText(), "Connected");
}

TEST_F(ComputedLines, HaveTheComputedAxesBehind) {
    EXPECT_THAT(m_source.Define({{"sum", "X + Y", "mm"}, {"half", "sum / 2", ""}}),
                ElementsAre("sum", "half"));
    EXPECT_THAT(m_source.Description().axis_names, ElementsAre("X", "Y", "sum", "half"));
    EXPECT_EQ(m_source.Description().cycle_time, 0.5);
    EXPECT_THAT(Take({1, 2, 3, 4}, 0), ElementsAre(1, 3));
    EXPECT_THAT(Take({1, 2, 3, 4}, 1), ElementsAre(2, 4));
    EXPECT_THAT(Take({1, 2, 3, 4}, 2), ElementsAre(3, 7));
    EXPECT_THAT(Take({1, 2, 3, 4}, 3), ElementsAre(1.5, 3.5));
    EXPECT_THAT(m_source.Units(),
                ElementsAre(std::pair<const std::string, std::string>("sum", "mm")));
    EXPECT_FALSE(m_source.Limits().FindAxis("sum"));
    EXPECT_TRUE(m_source.Limits().FindAxis("X"));
}

TEST_F(ComputedLines, BeginAsDerivedStreamsDo) {
    m_source.Define({{"v", "d(X)", ""}, {"a", "d(v)", ""}, {"p", "prev(X)", ""}});
    m_machine.events->ValuesBegin(false);
    EXPECT_THAT(Take({1, 0, 2, 0, 4, 0}, 2), ElementsAre(0, 2, 4));
    m_machine.events->ValuesBegin(false);
    EXPECT_THAT(Take({1, 0, 2, 0, 4, 0}, 3), ElementsAre(0, 4, 4));
    m_machine.events->ValuesBegin(false);
    EXPECT_THAT(Take({1, 0, 2, 0, 4, 0}, 4), ElementsAre(1, 1, 2));
}

TEST_F(ComputedLines, GoOnFromBatchToBatch) {
    m_source.Define({{"v", "d(X)", ""}, {"a", "d(v)", ""}});
    EXPECT_THAT(Take({1, 0, 2, 0}), ElementsAre(0, 2));
    EXPECT_THAT(Take({5, 0}, 3), ElementsAre(8)) << "(6 - 2) / 0.5";
    EXPECT_THAT(Take({5, 0}), ElementsAre(0));
    EXPECT_THAT(Take({}), IsEmpty());
    EXPECT_THAT(Take({6, 0}), ElementsAre(2)) << "an empty batch is no line";
}

TEST_F(ComputedLines, DoNotReachAcrossAGap) {
    m_source.Define({{"v", "d(X)", ""}, {"s", "X + 1", ""}});
    m_machine.events->ValuesBegin(false);
    Take({1, 0});
    m_machine.events->ValuesBegin(true);
    EXPECT_THAT(Take({5, 0, 6, 0}), ElementsAre(IsNan(), 2));
    m_machine.events->ValuesBegin(true);
    EXPECT_THAT(Take({5, 0}, 3), ElementsAre(6)) << "what needs no line before has its value";
    m_machine.events->ValuesBegin(false);
    EXPECT_THAT(Take({9, 0, 9, 0}), ElementsAre(0, 0));
    EXPECT_THAT(m_listener.begun, ElementsAre(false, true, true, false));
}

TEST_F(ComputedLines, AreMissingForValuesThatAreNone) {
    m_source.Define({{"s", "X + Y", ""}, {"v", "d(X)", ""}});
    Take({1, 1});
    EXPECT_THAT(Take({kNaN, 1, 2, kInf, 4, 1}), ElementsAre(IsNan(), kInf, 5));
    Take({1, 1});
    EXPECT_THAT(Take({kNaN, 1, 2, 1, 4, 1}, 3), ElementsAre(IsNan(), IsNan(), 4));
}

TEST_F(ComputedLines, OfAxesThatStayGoOnWhenOthersChange) {
    m_source.Define({{"v", "d(X)", ""}, {"w", "d(Y)", ""}, {"a", "d(v)", ""}});
    Take({1, 1, 2, 3});
    EXPECT_THAT(m_source.Define({{"n", "d(X)", ""},
                                 {"v", "d(X)", "mm/s"},
                                 {"w", "d(Y) * 2", ""},
                                 {"a", "d(v)", ""},
                                 {"b", "d(w)", ""}}),
                ElementsAre("n", "w", "b"));
    m_machine.lines = {5, 5};
    ValueBatch batch;
    ASSERT_EQ(m_source.Take(batch), BatchOutcome::kTaken);
    ASSERT_EQ(batch.axes, 7U);
    EXPECT_THAT(std::vector<double>(batch.lines, batch.lines + 7), ElementsAre(5, 5, 6, 6, 8, 8, 0))
        << "v knows its last value, what is new begins with 0";
    EXPECT_THAT(m_source.Define({}), IsEmpty());
    EXPECT_THAT(m_source.Description().axis_names, ElementsAre("X", "Y"));
}

TEST_F(ComputedLines, SayWhatIsWrongOnceAndBehindTheStateOfTheSource) {
    m_source.Define({{"a", "Q * 2", ""}});
    EXPECT_EQ(m_source.StateText(),
              "Connected; computed axis a: There is no axis \"Q\": the values are missing until "
              "there is");
    EXPECT_THAT(Take({1, 2}), ElementsAre(IsNan()));
    m_source.Define({{"a", "Q", ""}, {"b", "R", ""}, {"X", "1", ""}});
    EXPECT_EQ(m_source.StateText(),
              "Connected; computed axis a: There is no axis \"Q\": the values are missing until "
              "there is (and 2 more)");
    Describe({});
    EXPECT_EQ(m_source.StateText(), "Connected") << "no axes at all say no more";
    EXPECT_THAT(m_source.Description().axis_names, IsEmpty());
}

TEST_F(ComputedLines, LeaveANameToAMachineThatComesWithIt) {
    m_source.Define({{"v", "X * 10", ""}, {"w", "v + 1", ""}});
    EXPECT_THAT(Take({1, 2}, 3), ElementsAre(11));
    Describe({"X", "v", "Y"});
    EXPECT_EQ(m_listener.described, 1);
    EXPECT_THAT(m_source.Description().axis_names, ElementsAre("X", "v", "Y", "w"));
    EXPECT_EQ(m_source.StateText(),
              "Connected; computed axis v: The machine has an axis with the name \"v\"");
    EXPECT_THAT(Take({1, 2, 3}, 3), ElementsAre(3)) << "of the machine's v";
    Describe({"X", "Y"});
    EXPECT_THAT(Take({1, 2}, 3), ElementsAre(11)) << "and back";
}

TEST_F(ComputedLines, GoWithTheAxesOfASourceThatDoesNotTell) {
    m_source.Define({{"a", "X", ""}});
    m_machine.description.axis_names.clear();
    EXPECT_THAT(m_source.Description().axis_names, IsEmpty());
    EXPECT_EQ(m_source.StateText(), "Connected");
}

TEST_F(ComputedLines, AreDefinedForTheAxesThatAreThereThen) {
    m_source.Define({{"S", "X + Y", ""}, {"P", "prev(X)", ""}});
    Take({1, 2, 3, 4});
    m_machine.description = {{"X", "Y", "Z"}, 0.25};  // another source, which has not told
    m_machine.axes = 3;
    m_source.Define({{"S", "X + Y", ""}, {"P", "prev(X)", ""}});
    EXPECT_THAT(m_source.Description().axis_names, ElementsAre("X", "Y", "Z", "S", "P"));
    EXPECT_EQ(m_source.Description().cycle_time, 0.25);
    m_machine.events->ValuesBegin(true);
    EXPECT_THAT(Take({5, 6, 7}, 3), ElementsAre(11.0));
    m_source.Define({});
    m_source.Define({{"P", "prev(X)", ""}});
}

TEST_F(ComputedLines, AreMissingInTheFirstLineOfASourceThatTakesOverByItself) {
    m_machine.events->ValuesBegin(false);
    m_source.Define({{"P", "prev(X)", ""}});
    Take({1, 2, 3, 4});
    m_machine.description.cycle_time = 0.25;
    m_source.Define({{"P", "prev(X)", ""}});
    m_machine.events->ValuesBegin(true);
    EXPECT_THAT(Take({5, 6, 7, 8}), ElementsAre(IsNan(), 5.0));
}

TEST_F(ComputedLines, StayAsTheyAreWhereTheyFitNothingOrWereNotTaken) {
    m_source.Define({{"a", "X", ""}});
    m_machine.axes = 3;
    m_machine.lines = {1, 2, 3};
    ValueBatch batch;
    EXPECT_EQ(m_source.Take(batch), BatchOutcome::kTaken);
    EXPECT_EQ(batch.axes, 3U);
    m_machine.outcome = BatchOutcome::kDrained;
    EXPECT_EQ(m_source.Take(batch), BatchOutcome::kDrained);
}

}  // namespace
}  // namespace wavo::computed
