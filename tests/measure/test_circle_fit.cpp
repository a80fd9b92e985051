#include "measure/circle_fit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "measure/least_squares.h"
#include "measure/units.h"

namespace wavo::measure {
namespace {

struct Points {
    std::vector<double> x, y;

    [[nodiscard]] Arc AsArc() const { return {x, y}; }
};

template <typename Deviation>
Points OnCircle(const Circle& circle, std::size_t count, double degrees, Deviation deviation) {
    Points points;
    for (std::size_t i = 0; i < count; ++i) {
        const double angle =
            degrees / kDegrees * static_cast<double>(i) / static_cast<double>(count);
        const double radius = circle.radius + deviation(angle);
        points.x.push_back(circle.x + radius * std::cos(angle));
        points.y.push_back(circle.y + radius * std::sin(angle));
    }
    return points;
}

Points OnCircle(const Circle& circle, std::size_t count, double degrees = 360.0) {
    return OnCircle(circle, count, degrees, [](double) { return 0.0; });
}

TEST(LeastSquares, IsExactOverManyBlocksOfRows) {
    LeastSquares fit(3);
    for (int i = 0; i < 100000; ++i) {
        const double at = i * 1e-5;
        const std::array<double, 4> row{1.0, at, at * at, 5.0 - 3.0 * at + 0.25 * at * at};
        fit.Add(row);
    }
    const auto solution = fit.Solve();
    EXPECT_EQ(solution.rank, 3U);
    EXPECT_NEAR(solution.unknowns[0], 5.0, 1e-12);
    EXPECT_NEAR(solution.unknowns[1], -3.0, 1e-11);
    EXPECT_NEAR(solution.unknowns[2], 0.25, 1e-11);
    EXPECT_LT(solution.residual, 1e-20);
    EXPECT_GT(solution.condition, 10.0);
}

TEST(LeastSquares, KeepsDigitsThatNormalEquationsLose) {
    // Two columns that differ by 1e-8: their products differ by less than a double holds.
    LeastSquares fit(2);
    for (int i = 0; i < 1000; ++i) {
        const double off = (i % 2 == 0 ? 1.0 : -1.0) * 1e-8;
        const std::array<double, 3> row{1.0, 1.0 + off, 2.0 + 3.0 * off};
        fit.Add(row);
    }
    const auto solution = fit.Solve();
    EXPECT_EQ(solution.rank, 2U);
    EXPECT_NEAR(solution.unknowns[1], 3.0, 1e-6);
    EXPECT_NEAR(solution.condition, 2e8, 1e7);
}

TEST(LeastSquares, TellsALackOfRankAndOfRows) {
    LeastSquares parallel(2);
    for (int i = 0; i < 10; ++i) {
        const std::array<double, 3> row{1.0 * i, 2.0 * i, 1.0};
        parallel.Add(row);
    }
    EXPECT_EQ(parallel.Solve().rank, 1U);
    LeastSquares few(3);
    few.Add(std::array<double, 4>{1.0, 2.0, 3.0, 4.0});
    EXPECT_LT(few.Solve().rank, 3U);
    LeastSquares zeros(2);
    for (int i = 0; i < 10; ++i) {
        zeros.Add(std::array<double, 3>{1.0, 0.0, 1.0});
    }
    EXPECT_EQ(zeros.Solve().rank, 1U);
}

TEST(LeastSquares, TellsTheVarianceOfItsUnknowns) {
    LeastSquares mean(1);
    for (int i = 0; i < 400; ++i) {
        mean.Add(std::array<double, 2>{1.0, i % 2 == 0 ? 1.0 : -1.0});
    }
    const auto solution = mean.Solve();
    EXPECT_NEAR(solution.unknowns[0], 0.0, 1e-15);
    EXPECT_NEAR(solution.residual, 400.0, 1e-9);
    EXPECT_NEAR(solution.variance[0], 1.0 / 400.0, 1e-15);
}

TEST(FitCircle, FindsTheCircleFarFromTheOrigin) {
    for (const double offset : {0.0, 100.0, 1e6, -1e6}) {
        SCOPED_TRACE(offset);
        const Circle truth{offset, 2.0 * offset, 20.0};
        const Points points = OnCircle(truth, 1000);
        const Arc arc = points.AsArc();
        const auto circle = FitCircle({&arc, 1});
        ASSERT_TRUE(circle) << circle.reason;
        const double rounding = 1e-12 + std::abs(offset) * 1e-15;
        EXPECT_NEAR(circle->x, truth.x, rounding);
        EXPECT_NEAR(circle->y, truth.y, rounding);
        EXPECT_NEAR(circle->radius, 20.0, rounding);
    }
}

TEST(FitCircle, IsNotBiasedOnAnArc) {
    std::mt19937_64 random(17);
    std::normal_distribution<double> noise(0.0, 0.010);
    double quick = 0.0;
    double exact = 0.0;
    constexpr int kRuns = 300;
    for (int run = 0; run < kRuns; ++run) {
        const Points points =
            OnCircle({3.0, -4.0, 20.0}, 500, 60.0, [&](double) { return noise(random); });
        const Arc arc = points.AsArc();
        quick += (FitCircleQuickly({&arc, 1})->radius - 20.0) * 1000.0 / kRuns;
        exact += (FitCircle({&arc, 1})->radius - 20.0) * 1000.0 / kRuns;
    }
    EXPECT_LT(std::abs(exact), 1.5);  // um; the scatter of the mean is 0.6
    EXPECT_LT(quick, exact - 1.0);    // the algebraic one is too small
}

TEST(FitCircle, QuicklyIsEnoughOnAFullTurn) {
    const Points points =
        OnCircle({0.0, 0.0, 20.0}, 1256, 360.0, [](double a) { return 0.01 * std::sin(2.0 * a); });
    const Arc arc = points.AsArc();
    const auto exact = FitCircle({&arc, 1});
    const auto quick = FitCircleQuickly({&arc, 1});
    EXPECT_NEAR(quick->radius, exact->radius, 5e-6);
    EXPECT_NEAR(quick->x, exact->x, 1e-6);
}

TEST(FitCircle, ArcsWeighTheSame) {
    const Points few = OnCircle({0.0, 0.0, 10.0}, 100);
    const Points many = OnCircle({0.0, 0.0, 10.2}, 10000);
    const std::array<Arc, 2> arcs{few.AsArc(), many.AsArc()};
    EXPECT_NEAR(FitCircle(arcs)->radius, 10.1, 1e-9);
}

TEST(FitCircle, SaysWhyThereIsNone) {
    const auto of = [](std::vector<double> x, std::vector<double> y) {
        const Arc arc{x, y};
        return FitCircle({&arc, 1}).reason;
    };
    EXPECT_EQ(of({}, {}), "too few points for a circle");
    EXPECT_EQ(of({0.0, 1.0}, {0.0, 1.0}), "too few points for a circle");
    EXPECT_EQ(of({1.0, 1.0, 1.0, 1.0}, {2.0, 2.0, 2.0, 2.0}),
              "the points lie on a line or in one place");
    EXPECT_EQ(of({0.0, 1.0, 2.0, 3.0}, {5.0, 5.0, 5.0, 5.0}),
              "the points lie on a line or in one place");
    EXPECT_EQ(of({0.0, 1.0, 2.0, 3.0}, {0.0, 2.0, 4.0, 6.0}),
              "the points lie on a line or in one place");
    EXPECT_EQ(FitCircle({}).reason, "too few points for a circle");
}

TEST(MinimumZone, IsNotWiderThanAboutAnyCentreNearby) {
    std::mt19937_64 random(2);
    std::normal_distribution<double> noise(0.0, 0.0005);
    for (int run = 0; run < 5; ++run) {
        const Points points = OnCircle({7.0, 8.0, 20.0}, 700, 360.0, [&](double a) {
            return 0.004 * std::cos(2.0 * a) + 0.002 * std::cos(3.0 * a + run) + noise(random);
        });
        const Arc arc = points.AsArc();
        const auto start = FitCircle({&arc, 1});
        const auto zone = FitMinimumZone({&arc, 1}, *start);
        ASSERT_TRUE(zone) << zone.reason;
        const double width = RadialRangeAbout({&arc, 1}, zone->x, zone->y).Width();
        EXPECT_LT(width, RadialRangeAbout({&arc, 1}, start->x, start->y).Width());
        for (int i = 0; i < 60; ++i) {
            for (const double shift : {1e-5, 1e-4, 1e-3}) {
                const double x = zone->x + shift * std::cos(i * 0.1);
                const double y = zone->y + shift * std::sin(i * 0.1);
                EXPECT_GT(RadialRangeAbout({&arc, 1}, x, y).Width(), width - 2e-7);
            }
        }
    }
}

TEST(MinimumZone, OfAPerfectCircleIsItsCentre) {
    const Points points = OnCircle({1.0, 2.0, 5.0}, 360);
    const Arc arc = points.AsArc();
    const auto zone = FitMinimumZone({&arc, 1}, {1.0, 2.0, 5.0});
    ASSERT_TRUE(zone) << zone.reason;
    EXPECT_NEAR(zone->x, 1.0, 1e-6);
    EXPECT_NEAR(zone->radius, 5.0, 1e-6);
}

TEST(RadialRange, OfAPointIsNothing) {
    const std::vector<double> x{3.0};
    const std::vector<double> y{4.0};
    const Arc arc{x, y};
    const auto range = RadialRangeAbout({&arc, 1}, 0.0, 0.0);
    EXPECT_EQ(range.smallest, 5.0);
    EXPECT_EQ(range.Width(), 0.0);
}

}  // namespace
}  // namespace wavo::measure
