// What is said of expressions that are none, to the letter, and that nothing hostile gets further.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "computed/expression.h"

namespace wavo::computed {
namespace {

struct Row {
    const char* text;
    const char* fault;
    int place;
};

constexpr Row kRows[] = {
    {"", "The expression is missing", 1},
    {"   ", "The expression is missing", 1},
    {"X +", "Something is missing at the end: a value", 4},
    {"X + * Y", "\"*\" stands where a value is expected", 5},
    {"X Y", "\"Y\" stands where an operator is expected", 3},
    {"X 2", "\"2\" stands where an operator is expected", 3},
    {"X - - - Y", "Two signs stand in a row", 7},
    {"2X", "A number and a name stand together: names begin with a letter", 1},
    {"1.2.3", "A number and a name stand together: names begin with a letter", 1},
    {".", "\".\" is no number", 1},
    {"0,5",
     "A comma stands between the values of a function; the decimals of a number stand behind "
     "a point",
     2},
    {"(1, 2)",
     "A comma stands between the values of a function; the decimals of a number stand behind a "
     "point",
     3},
    {"(X", "A \")\" is missing: this \"(\" is not closed", 1},
    {"2*(X + (Y)", "A \")\" is missing: this \"(\" is not closed", 3},
    {"X)", "A \"(\" is missing: this \")\" closes none", 2},
    {"()", "\")\" stands where a value is expected", 2},
    {"sin()", "\")\" stands where a value is expected", 5},
    {"foo(X)", "There is no function \"foo\"", 1},
    {"log(X)", "There is no function \"log\"", 1},
    {"2*atan2(1)", "atan2() takes 2 values", 3},
    {"sin(1, 2)", "sin() takes no more than 1 value", 1},
    {"hypot(1,2,3)", "hypot() takes no more than 2 values", 1},
    {"d(X - Y)", "d() takes the name of one axis and nothing else", 1},
    {"d(2)", "d() takes the name of one axis and nothing else", 1},
    {"d(d(X))", "d() takes the name of one axis and nothing else", 1},
    {"1 + prev(X, Y)", "prev() takes the name of one axis and nothing else", 5},
    {"d(X", "A \")\" is missing", 4},
    {"[X", "A \"]\" is missing behind the name of an axis", 1},
    {"[ ]", "The name of an axis is missing", 1},
    {"X = 2", "\"=\" gives no value; what is equal is asked with \"==\"", 3},
    {"X > 0 ? 1", "A \":\" is missing: condition ? value : other value", 10},
    {"(X > 0 ? 1) : 2", "A \":\" is missing: condition ? value : other value", 11},
    {"1 : 2", "A \"?\" is missing: condition ? value : other value", 3},
    {"X % 2", "\"%\" stands where an operator is expected", 3},
    {"\"X\"", "\"\"\" stands where a value is expected", 1},
    {"X # Y", "\"#\" stands where an operator is expected", 3},
    {"X − Y", "\"−\" stands where an operator is expected", 3},
    {"X; Y", "\";\" stands where an operator is expected", 2},
    {"!X", "\"!\" stands where a value is expected", 1},
};

TEST(ExpressionFaults, SayWhatIsWrongAndWhere) {
    for (const Row& row : kRows) {
        auto expression = Expression::Compile(row.text);
        ASSERT_FALSE(expression.HasValue()) << row.text;
        EXPECT_EQ(expression.Why(), (Fault{row.fault, row.place})) << row.text;
    }
}

TEST(ExpressionFaults, EndWhatHasNoEnd) {
    const auto fault = [](const std::string& text) {
        auto expression = Expression::Compile(text);
        return expression ? std::string() : expression.Why().text;
    };
    EXPECT_EQ(fault(std::string(51, '(') + "1" + std::string(51, ')')),
              "There are too many brackets in brackets");
    EXPECT_EQ(fault(std::string(50, '(') + "1" + std::string(50, ')')), "");
    std::string sum = "1";
    while (sum.size() < kLongestExpression - 3) {
        sum += "+.1";
    }
    EXPECT_EQ(fault(sum), "") << "numbers are written longer than they were";
    EXPECT_EQ(fault(sum + "+1+1"), "The expression is too long");
    EXPECT_EQ(fault(std::string(1 << 20, '(')), "The expression is too long");
    std::string choices;
    for (int i = 0; i < 150; ++i) {
        choices += "x?1:";
    }
    EXPECT_EQ(fault(choices + "2"), "");
    std::string axes = "a0";
    for (int i = 1; i < 150; ++i) {
        axes += "+a" + std::to_string(i);
    }
    EXPECT_EQ(fault(axes), "") << "many axes";
    EXPECT_EQ(fault("1e99999 + 1e-99999"), "");
    EXPECT_EQ(fault(std::string("X\0Y", 3)).substr(1, 1), std::string(1, '\0'));
}

// Whatever is typed either has a fault with a place in it, or can be computed.
TEST(ExpressionFaults, AreFoundInWhateverIsTyped) {
    constexpr const char* kPieces[] = {
        "X",    "[a b]", "1",    "2.5",   "e3", "(",  ")",      "+",  "-",          "*",
        "/",    "^",     "<",    ">=",    "==", "&&", "||",     "?",  ":",          ",",
        "sin(", "min(",  "d(X)", "prev(", "d(", "=",  " ",      "[",  "]",          ".",
        "!",    "pi",    "\xC3", "_",     "\"", "v0", "atan2(", "\t", "hypot(1,2)", "\x80"};
    std::mt19937_64 random(7);
    int right = 0;
    for (int i = 0; i < 60000; ++i) {
        std::string text;
        for (std::uint64_t n = random() % 12; n > 0; --n) {
            text += kPieces[random() % std::size(kPieces)];
        }
        auto expression = Expression::Compile(text);
        if (!expression) {
            ASSERT_FALSE(expression.Why().text.empty()) << text;
            ASSERT_FALSE(expression.Why().text.starts_with("The expression cannot be computed"))
                << text << ": " << expression.Why().text;
            ASSERT_GE(expression.Why().code, 1) << text;
            ASSERT_LE(expression.Why().code, static_cast<int>(text.size()) + 1) << text;
            continue;
        }
        ++right;
        const double values[] = {1.0, -2.0, 0.0};
        const std::vector<Column> columns(expression->References().size(), {values, 1, 0.5});
        double result[3];
        expression->Compute(columns, 0.001, 3, result, 1);
    }
    EXPECT_GT(right, 1000);
}

}  // namespace
}  // namespace wavo::computed
