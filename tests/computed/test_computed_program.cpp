// Which computed axes there are, in which order, and what is said of the others.
#include "computed/computed_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "graph/values/missing_value.h"

namespace wavo::computed {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNan;
using ::testing::SizeIs;
using Kind = Finding::Kind;

const std::vector<std::string> kMachine{"X", "Y", "Spindle load"};

/// Definitions of "name", "expression" pairs.
std::vector<ComputedAxis> Axes(std::initializer_list<std::pair<const char*, const char*>> rows) {
    std::vector<ComputedAxis> axes;
    for (const auto& [name, expression] : rows) {
        axes.push_back({name, expression, ""});
    }
    return axes;
}

ComputedProgram Of(std::initializer_list<std::pair<const char*, const char*>> rows) {
    return {Axes(rows), kMachine};
}

std::vector<std::string> Texts(const ComputedProgram& program) {
    std::vector<std::string> texts;
    for (const Finding& finding : program.Findings()) {
        texts.push_back(finding.text);
    }
    return texts;
}

/// An axis in one line: X = 10, Y = 3.
double ValueOf(ComputedProgram& program, const std::string& name) {
    const double line[] = {10.0, 3.0, 50.0};
    std::vector<Column> source;
    for (const double& value : line) {
        source.push_back({&value, 1, 1.0});
    }
    std::vector<double> values(program.Names().size());
    std::vector<Column> computed;
    for (const double& value : values) {
        computed.push_back({&value, 1, 1.0});
    }
    for (const std::size_t axis : program.Order()) {
        program.Compute(axis, source, computed, 0.5, 1, &values[axis], 1);
    }
    return values[*program.Find(name)];
}

TEST(ComputedProgram, ComputesAxesOfAxesInWhateverOrderTheyStand) {
    ComputedProgram program =
        Of({{"c", "b + 1"}, {"b", "a * 2"}, {"a", "X - Y"}, {"v", "d(a)"}, {"k", "5"}});
    EXPECT_THAT(program.Names(), ElementsAre("c", "b", "a", "v", "k"));
    EXPECT_THAT(Texts(program), ElementsAre("", "", "", "", ""));
    EXPECT_EQ(ValueOf(program, "a"), 7.0);
    EXPECT_EQ(ValueOf(program, "b"), 14.0);
    EXPECT_EQ(ValueOf(program, "c"), 15.0);
    EXPECT_EQ(ValueOf(program, "v"), 12.0);
    EXPECT_EQ(ValueOf(program, "k"), 5.0);
    EXPECT_EQ(program.Find("d"), std::nullopt);
}

TEST(ComputedProgram, RefusesNamesThatCannotBeUsed) {
    const std::string long_name(kLongestComputedName + 1, 'a');
    ComputedProgram program = Of({{"", "X"},
                                  {"2a", "X"},
                                  {"a b", "X"},
                                  {"a,b", "X"},
                                  {"sin", "X"},
                                  {"pi", "X"},
                                  {"prev", "X"},
                                  {"d", "X"},
                                  {"a", "X"},
                                  {"a", "Y"},
                                  {long_name.c_str(), "X"},
                                  {"Größe.1_", "X"}});
    EXPECT_THAT(
        Texts(program),
        ElementsAre("The name is missing",
                    "A name has letters, digits, \"_\" and \".\", and begins with a letter",
                    "A name has letters, digits, \"_\" and \".\", and begins with a letter",
                    "A name has letters, digits, \"_\" and \".\", and begins with a letter",
                    "\"sin\" is the name of a function or number",
                    "\"pi\" is the name of a function or number",
                    "\"prev\" is the name of a function or number",
                    "\"d\" is the name of a function or number", "",
                    "Another computed axis has the name \"a\"", "The name is too long", ""));
    EXPECT_THAT(program.Names(), ElementsAre("a", "Größe.1_"));
    EXPECT_EQ(ValueOf(program, "a"), 10.0) << "the first one";
}

TEST(ComputedProgram, LeavesNamesToTheMachine) {
    ComputedProgram program = Of({{"X", "Y * 2"}, {"b", "X + 1"}});
    EXPECT_EQ(program.Findings()[0],
              (Finding{Kind::kTaken, "The machine has an axis with the name \"X\"", 0}));
    EXPECT_THAT(program.Names(), ElementsAre("b"));
    EXPECT_EQ(ValueOf(program, "b"), 11.0) << "the machine's X is meant";
}

TEST(ComputedProgram, HasAxesWithoutValuesWhereSomethingIsWrong) {
    ComputedProgram program =
        Of({{"a", "X +"}, {"b", "X + Q"}, {"c", "b * 0"}, {"e", "d(Q) ? 1 : 2"}});
    EXPECT_EQ(program.Findings()[0],
              (Finding{Kind::kExpression, "Something is missing at the end: a value", 4}));
    EXPECT_EQ(program.Findings()[1],
              (Finding{Kind::kUnknown,
                       "There is no axis \"Q\": the values are missing until there is", 0}));
    EXPECT_EQ(program.Findings()[2].kind, Kind::kNone) << "what is wrong is said once";
    EXPECT_THAT(program.Names(), ElementsAre("a", "b", "c", "e"));
    for (const char* name : {"a", "b", "c", "e"}) {
        EXPECT_THAT(ValueOf(program, name), IsNan()) << name;
    }
}

TEST(ComputedProgram, RefusesCycles) {
    ComputedProgram program = Of({{"a", "a + 1"},
                                  {"b", "c"},
                                  {"c", "prev(e)"},
                                  {"e", "b + X"},
                                  {"f", "e"},
                                  {"g", "0.9 * prev(g) + 0.1 * X"},
                                  {"h", "X"}});
    EXPECT_THAT(Texts(program), ElementsAre("\"a\" is computed of itself",
                                            "\"b\" is computed of itself, through \"c\"",
                                            "\"c\" is computed of itself, through \"e\"",
                                            "\"e\" is computed of itself, through \"b\"", "",
                                            "\"g\" is computed of itself", ""));
    for (const char* name : {"a", "b", "c", "e", "f", "g"}) {
        EXPECT_THAT(ValueOf(program, name), IsNan()) << name;
    }
    EXPECT_EQ(ValueOf(program, "h"), 10.0);
}

TEST(ComputedProgram, KnowsWhatAnAxisNeeds) {
    const ComputedProgram program = Of({{"a", "d(X) + Y"},
                                        {"b", "prev(a) + a"},
                                        {"c", "d(b) + [Spindle load]"},
                                        {"k", "1"},
                                        {"e", "b + k"}});
    const auto needs = [&](const char* name) { return program.NeedsOf(*program.Find(name)); };
    EXPECT_THAT(needs("a").source, ElementsAre(0, 1));
    EXPECT_EQ(needs("a").lines_before, 1U);
    EXPECT_EQ(needs("b").lines_before, 2U);
    EXPECT_THAT(needs("c").order, ElementsAre(0, 1, 2));
    EXPECT_THAT(needs("c").source, ElementsAre(0, 1, 2));
    EXPECT_EQ(needs("c").lines_before, 3U);
    EXPECT_THAT(needs("k").source, IsEmpty());
    EXPECT_EQ(needs("k").lines_before, 0U);
    EXPECT_EQ(needs("e").order.back(), *program.Find("e"));
}

TEST(ComputedProgram, TellsWhichAxesStayTheSame) {
    const ComputedProgram former =
        Of({{"a", "X"}, {"b", "a + 1"}, {"c", "Y"}, {"e", "Q"}, {"f", "Y"}});
    const ComputedProgram later =
        Of({{"c", "Y"}, {"a", "X + 0"}, {"b", "a + 1"}, {"Q", "2"}, {"e", "Q"}});
    const auto is_same = [&](const char* name) { return later.IsSame(*later.Find(name), former); };
    EXPECT_FALSE(is_same("a"));
    EXPECT_FALSE(is_same("b")) << "computed of one that has changed";
    EXPECT_TRUE(is_same("c")) << "it only stands elsewhere";
    EXPECT_FALSE(is_same("e")) << "what it names has come";
    EXPECT_FALSE(is_same("Q"));
}

TEST(ComputedProgram, BearsVeryManyAxes) {
    std::vector<ComputedAxis> axes;
    for (std::size_t i = 0; i < kMostComputedAxes + 5; ++i) {
        axes.push_back({"a" + std::to_string(i),
                        i == 0 ? "X" : "prev(a" + std::to_string(i - 1) + ") + 1", ""});
    }
    ComputedProgram program(axes, kMachine);
    EXPECT_THAT(program.Names(), SizeIs(kMostComputedAxes));
    EXPECT_EQ(program.Findings().back(),
              (Finding{Kind::kName, "There are too many computed axes", 0}));
    EXPECT_EQ(program.NeedsOf(kMostComputedAxes - 1).lines_before, kMostComputedAxes - 1);

    // Each leads to each other: as many ways as nobody could go.
    std::string all = "0";
    for (std::size_t i = 0; i < 100; ++i) {
        all += "+a" + std::to_string(i);
    }
    for (ComputedAxis& axis : axes) {
        axis.expression = all;
    }
    program = ComputedProgram(axes, kMachine);
    EXPECT_EQ(program.Findings()[0].kind, Kind::kExpression);
}

TEST(ComputedProgram, IsNothingOfNothing) {
    const ComputedProgram program({}, {});
    EXPECT_TRUE(program.IsEmpty());
    EXPECT_THAT(program.Order(), IsEmpty());
}

}  // namespace
}  // namespace wavo::computed
