// What expressions give, against plain arithmetic.
#include "computed/expression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <random>

#include "comma_locale.h"
#include "computed/functions.h"
#include "graph/values/missing_value.h"

namespace wavo::computed {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNan;

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kCycle = 0.004;

Expression Compiled(const std::string& text) {
    auto expression = Expression::Compile(text);
    if (!expression) {
        ADD_FAILURE() << text << ": " << expression.Why().text;
        return std::move(*Expression::Compile("0"));
    }
    return std::move(*expression);
}

/// The values of an expression that takes the same series for each of its references.
std::vector<double> Of(const std::string& text, const std::vector<double>& series,
                       double before = 0.0) {
    Expression expression = Compiled(text);
    const std::vector<Column> columns(expression.References().size(), {series.data(), 1, before});
    std::vector<double> result(series.size());
    expression.Compute(columns, kCycle, series.size(), result.data(), 1);
    return result;
}

double Number(const std::string& text) {
    return Of(text, {0.0})[0];
}

TEST(Expression, ComputesLikeArithmetic) {
    EXPECT_EQ(Number("1 + 2 * 3"), 7.0);
    EXPECT_EQ(Number("(1 + 2) * 3"), 9.0);
    EXPECT_EQ(Number("2 ^ 3 ^ 2"), 512.0) << "powers from the right";
    EXPECT_EQ(Number("-2 ^ 2"), -4.0);
    EXPECT_EQ(Number("2 - -1"), 3.0);
    EXPECT_EQ(Number("2--1"), 3.0);
    EXPECT_EQ(Number("2^-1"), 0.5);
    EXPECT_EQ(Number("10 / 4 / 5"), 0.5);
    EXPECT_EQ(Number("1.5e3 + .5"), 1500.5);
    EXPECT_EQ(Number("2E-2"), 0.02);
    EXPECT_EQ(Number("1 < 2"), 1.0);
    EXPECT_EQ(Number("2 <= 1"), 0.0);
    EXPECT_EQ(Number("1 == 1 && 2 != 3 || 0"), 1.0);
    EXPECT_EQ(Number("1 > 2 ? 3 : 4 > 3 ? 5 : 6"), 5.0);
    EXPECT_EQ(Number("(0 ? 1 : 2) + 1"), 3.0);
    EXPECT_EQ(Number("max(1 ? 2 : 3, 1)"), 2.0);
    EXPECT_EQ(Number("pi"), std::numbers::pi);
}

TEST(Expression, HasTheFunctionsThatItSays) {
    EXPECT_EQ(Number("abs(-2)"), 2.0);
    EXPECT_EQ(Number("sqrt(2)"), std::sqrt(2.0));
    EXPECT_EQ(Number("sin(1) + cos(1) + tan(1)"), std::sin(1.0) + std::cos(1.0) + std::tan(1.0));
    EXPECT_EQ(Number("asin(.5)"), std::asin(0.5));
    EXPECT_EQ(Number("acos(.5)"), std::acos(0.5));
    EXPECT_EQ(Number("atan(.5)"), std::atan(0.5));
    EXPECT_EQ(Number("atan2(1, -1)"), std::atan2(1.0, -1.0));
    EXPECT_EQ(Number("hypot(3, 4)"), 5.0);
    EXPECT_EQ(Number("exp(1)"), std::exp(1.0));
    EXPECT_EQ(Number("ln(2)"), std::log(2.0));
    EXPECT_EQ(Number("log10(1000)"), 3.0);
    EXPECT_EQ(Number("log2(8)"), 3.0);
    EXPECT_EQ(Number("tanh(1)"), std::tanh(1.0));
    EXPECT_EQ(Number("floor(-1.5)"), -2.0);
    EXPECT_EQ(Number("ceil(-1.5)"), -1.0);
    EXPECT_EQ(Number("round(2.5)"), 3.0);
    EXPECT_EQ(Number("trunc(-1.5)"), -1.0);
    EXPECT_EQ(Number("sign(-3) + sign(0) + sign(5)"), 0.0);
    EXPECT_EQ(Number("min(3, 1, 2)"), 1.0);
    EXPECT_EQ(Number("max(3)"), 3.0);
    EXPECT_EQ(Number("mod(-30, 360)"), 330.0) << "an angle stays within a turn";
    EXPECT_EQ(Number("mod(370, 360)"), 10.0);
}

TEST(Expression, EachFunctionTakesAsManyValuesAsItSays) {
    for (const Function& function : Functions()) {
        const auto call = [&function](std::size_t arguments) {
            std::string text(function.name);
            for (std::size_t i = 0; i < arguments; ++i) {
                text += i == 0 ? "(1" : ",1";
            }
            return Expression::Compile(text + ")").HasValue();
        };
        EXPECT_FALSE(call(function.least - 1)) << function.name;
        EXPECT_TRUE(call(function.least)) << function.name;
        EXPECT_TRUE(call(function.most)) << function.name;
        EXPECT_FALSE(call(function.most + 1)) << function.name;
    }
}

TEST(Expression, NamesAxes) {
    const Expression expression = Compiled(
        "X_cmd - X_act + [Spindle load]*axis.0.pos + d(X_act) + prev( [a-b] ) + X_act + Ä");
    EXPECT_THAT(
        expression.References(),
        ElementsAre(Reference{"X_cmd", Use::kValue}, Reference{"X_act", Use::kValue},
                    Reference{"Spindle load", Use::kValue}, Reference{"axis.0.pos", Use::kValue},
                    Reference{"X_act", Use::kDerivative}, Reference{"a-b", Use::kPrevious},
                    Reference{"Ä", Use::kValue}));
    EXPECT_TRUE(expression.LooksBack());
    EXPECT_FALSE(Compiled("X*2").LooksBack());
}

TEST(Expression, TakesNamesOfFunctionsForAxesWhereNothingIsCalled) {
    EXPECT_THAT(Compiled("sin + d + [pi] + sin(d(d))").References(),
                ElementsAre(Reference{"sin", Use::kValue}, Reference{"d", Use::kValue},
                            Reference{"pi", Use::kValue}, Reference{"d", Use::kDerivative}));
}

TEST(Expression, KnowsTheLineBefore) {
    EXPECT_THAT(Of("prev(X)", {1.0, 2.0, 4.0}, 7.0), ElementsAre(7.0, 1.0, 2.0));
    EXPECT_THAT(Of("d(X)", {1.0, 2.0, 4.0}, 0.0),
                ElementsAre(1.0 / kCycle, 1.0 / kCycle, 2.0 / kCycle));
    EXPECT_THAT(Of("d(X)", {1.0, 2.0}, kNoValue), ElementsAre(IsNan(), 1.0 / kCycle));
    EXPECT_THAT(Of("X - prev(X)", {5.0, 2.0}, 5.0), ElementsAre(0.0, -3.0));
}

TEST(Expression, IsMissingWhereAValueIs) {
    const double missing = NoSample();
    for (const char* text : {"X", "X + 1", "X > 0 ? 1 : 2", "min(X, 0)", "max(0, X)", "X == X",
                             "X > 0 || 1", "0 * X", "X ^ 0", "prev(X)*0 + 1"}) {
        const std::vector<double> result = Of(text, {missing, 1.0, 2.0}, missing);
        EXPECT_THAT(result[0], IsNan()) << text;
        EXPECT_FALSE(IsNoSample(result[0])) << text << ": a line was there";
        EXPECT_FALSE(std::isnan(result[2])) << text;
    }
}

TEST(Expression, GivesWhatHasNoNumberAsMissingAndWhatHasNoEndAsInfinite) {
    EXPECT_THAT(Of("1/X", {0.0, -0.0, 2.0}), ElementsAre(kInfinite, -kInfinite, 0.5));
    EXPECT_THAT(Of("sqrt(X)", {-1.0, 4.0}), ElementsAre(IsNan(), 2.0));
    EXPECT_THAT(Of("X - X", {kInfinite}), ElementsAre(IsNan()));
    EXPECT_THAT(Of("X * 2", {kInfinite, 1e308, -1e308}),
                ElementsAre(kInfinite, kInfinite, -kInfinite));
    EXPECT_THAT(Of("ln(X)", {0.0}), ElementsAre(-kInfinite));
}

TEST(Expression, LeavesGapsBetweenWhatItReadsAndWrites) {
    Expression expression = Compiled("a - b");
    const std::vector<double> lines{1, 10, 0, 2, 20, 0, 3, 30, 0};
    std::vector<double> result(9, -1.0);
    const std::vector<Column> columns{{lines.data() + 1, 3, 0.0}, {lines.data(), 3, 0.0}};
    expression.Compute(columns, kCycle, 3, result.data() + 2, 3);
    EXPECT_THAT(result, ElementsAre(-1, -1, 9, -1, -1, 18, -1, -1, 27));
}

TEST(Expression, WritesNumbersWithAPointWhateverTheLocale) {
    const testing::CommaLocale locale;
    EXPECT_EQ(Number("0.5 + 1.25"), 1.75);
    EXPECT_FALSE(Expression::Compile("0,5").HasValue());
}

TEST(Expression, GivesTheExamplesOfTheGuide) {
    const std::vector<double> x{0.0, 3.0, 3.0, 9.0};
    EXPECT_THAT(Of("X / 25.4", {25.4, 50.8}), ElementsAre(1.0, 2.0));
    const std::vector<double> speed = Of("sqrt(d(X)^2 + d(Y)^2)", x);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double v = (x[i] - (i == 0 ? 0.0 : x[i - 1])) / kCycle;
        EXPECT_DOUBLE_EQ(speed[i], std::sqrt(v * v + v * v)) << i;
    }
}

/// An expression as text and as what it means.
struct Made {
    std::string text;
    std::function<double(double, double)> value;  ///< of x and y
};

class Maker {
 public:
    explicit Maker(std::uint64_t seed) : m_random(seed) {}

    Made Make(int depth) {
        const int kind = depth == 0 ? Pick(3) : Pick(9);
        if (kind == 0) {
            const double number = Pick(1000) / 8.0;
            char text[32];
            std::snprintf(text, sizeof text, "%.3f", number);
            return {text, [number](double, double) { return number; }};
        }
        if (kind <= 2) {
            return kind == 1 ? Made{"x", [](double x, double) { return x; }}
                             : Made{"[y]", [](double, double y) { return y; }};
        }
        const Made a = Make(depth - 1);
        const Made b = Make(depth - 1);
        const auto both = [&](const char* sign, auto value) {
            return Made{"(" + a.text + sign + b.text + ")", [a, b, value](double x, double y) {
                            return value(a.value(x, y), b.value(x, y));
                        }};
        };
        switch (kind) {
            case 3:
                return both("+", [](double l, double r) { return l + r; });
            case 4:
                return both(" - ", [](double l, double r) { return l - r; });
            case 5:
                return both("*", [](double l, double r) { return l * r; });
            case 6:
                return both(" <", [](double l, double r) { return l < r ? 1.0 : 0.0; });
            case 7:
                return {"abs(-" + a.text + ")",
                        [a](double x, double y) { return std::abs(-a.value(x, y)); }};
            default:
                return {"(" + a.text + " > 0 ? " + b.text + " : x)", [a, b](double x, double y) {
                            return a.value(x, y) > 0 ? b.value(x, y) : x;
                        }};
        }
    }

 private:
    int Pick(int count) { return static_cast<int>(m_random() % static_cast<unsigned>(count)); }

    std::mt19937_64 m_random;
};

TEST(Expression, GivesWhatAPlainLoopGives) {
    const std::vector<double> xs{0.0, 1.5, -2.25, 1e6, -0.0};
    const std::vector<double> ys{3.0, -1.0, 0.5, 1e-3, 7.0};
    int compared = 0;
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        const Made made = Maker(seed).Make(4);
        auto expression = Expression::Compile(made.text);
        if (made.text.size() > kLongestExpression) {
            continue;
        }
        ASSERT_TRUE(expression.HasValue()) << made.text << ": " << expression.Why().text;
        std::vector<Column> columns;
        for (const Reference& reference : expression->References()) {
            columns.push_back({reference.name == "x" ? xs.data() : ys.data(), 1, 0.0});
        }
        std::vector<double> result(xs.size());
        expression->Compute(columns, kCycle, xs.size(), result.data(), 1);
        for (std::size_t i = 0; i < xs.size(); ++i) {
            const double wanted = made.value(xs[i], ys[i]);
            // Parts without axes may be folded in another order.
            ASSERT_NEAR(result[i], wanted, 1e-12 * std::abs(wanted)) << made.text;
            ++compared;
        }
    }
    EXPECT_GT(compared, 5000);
}

}  // namespace
}  // namespace wavo::computed
