// Values of the past for points: read in pieces, together, and not twice.
#include "graph/draw/past_points.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>

#include "counted_history.h"

namespace wavo {
namespace {

using testing::CountedHistory;

constexpr std::size_t kMany = 1'000'000;

std::vector<double> Rising(std::size_t count) {
    std::vector<double> values(count);
    std::iota(values.begin(), values.end(), 0.0);
    return values;
}

/// What is expected of a window that was read from line `read` on.
std::vector<double> Window(const LineRange& lines, std::int64_t read, const History& history) {
    const LineRange held = history.Lines();
    std::vector<double> values;
    for (std::int64_t line = lines.begin; line < lines.end; ++line) {
        values.push_back(line < read || line >= held.end ? NoSample() : static_cast<double>(line));
    }
    return values;
}

bool AreTheSame(const std::vector<double>& a, const std::vector<double>& b) {
    return std::ranges::equal(
        a, b, [](double x, double y) { return x == y || (IsNoSample(x) && IsNoSample(y)); });
}

TEST(PastPoints, ComeInPiecesTheNewestFirst) {
    CountedHistory x(Rising(10000));
    CountedHistory y(Rising(10000));
    PastPoints points;
    EXPECT_TRUE(points.IsComplete()) << "nothing was asked for";
    const LineRange lines{3000, 8000};
    x.looks_left = 1;
    EXPECT_TRUE(points.Read({&x, nullptr, &y}, lines));
    EXPECT_FALSE(points.IsComplete());
    // Pieces begin where they do in every window.
    EXPECT_TRUE(AreTheSame(points.Values(0), Window(lines, 7168, x)));
    EXPECT_TRUE(AreTheSame(points.Values(1), Window(lines, 8000, x)));
    EXPECT_TRUE(AreTheSame(points.Values(2), Window(lines, 7168, y)))
        << "a piece that was begun is read for all streams";
    EXPECT_FALSE(points.Read({&x, nullptr, &y}, lines)) << "nothing may be read";
    EXPECT_FALSE(points.IsComplete());
    EXPECT_TRUE(AreTheSame(points.Values(0), Window(lines, 7168, x)));
    x.looks_left = kMany;
    EXPECT_TRUE(points.Read({&x, nullptr, &y}, lines));
    EXPECT_TRUE(points.IsComplete());
    EXPECT_TRUE(AreTheSame(points.Values(0), Window(lines, 3000, x)));
    EXPECT_TRUE(AreTheSame(points.Values(2), Window(lines, 3000, y)));
    EXPECT_FALSE(points.Read({&x, nullptr, &y}, lines)) << "nothing has changed";
    EXPECT_EQ(x.values_read, 5000U);
}

TEST(PastPoints, AreNotReadAgainInAnotherWindow) {
    CountedHistory x(Rising(20000));
    x.looks_left = kMany;
    PastPoints points;
    points.Read({&x}, {5000, 10000});
    for (const LineRange lines :
         {LineRange{5500, 10500}, LineRange{4000, 9000}, LineRange{6000, 7000},
          LineRange{5990, 7010}, LineRange{100, 300}}) {
        const std::size_t before = x.values_read;
        EXPECT_TRUE(points.Read({&x}, lines));
        EXPECT_TRUE(points.IsComplete());
        EXPECT_TRUE(AreTheSame(points.Values(0), Window(lines, lines.begin, x))) << lines.begin;
        EXPECT_LE(x.values_read - before, 1500U) << lines.begin;
    }
    CountedHistory other(std::vector<double>(20000, 0.0));
    other.looks_left = kMany;
    points.Read({&other}, {100, 300});
    EXPECT_EQ(points.Values(0), std::vector<double>(200, 0.0)) << "another stream";
}

TEST(PastPoints, StayWhereLinesComeAndGoWhereTheyAreLost) {
    CountedHistory x(Rising(10000));
    x.looks_left = kMany;
    PastPoints points;
    points.Read({&x}, {5000, 10000});
    x.Grow({10000.0, 10001.0});
    EXPECT_TRUE(points.IsComplete());
    const std::size_t before = x.values_read;
    points.Read({&x}, {5002, 10002});
    EXPECT_EQ(x.values_read - before, 2U);
    EXPECT_TRUE(AreTheSame(points.Values(0), Window({5002, 10002}, 5002, x)));
    x.Lose({6000, 6001});
    EXPECT_FALSE(points.IsComplete());
    EXPECT_TRUE(points.Read({&x}, {5002, 10002}));
    EXPECT_TRUE(points.IsComplete());
    EXPECT_TRUE(IsNoSample(points.Values(0)[6000 - 5002]));
}

TEST(PastPoints, OfLinesThatAreNotThereYetAreReadWhenTheyCome) {
    CountedHistory x(Rising(100));
    x.looks_left = kMany;
    PastPoints points;
    points.Read({&x}, {50, 120});
    EXPECT_TRUE(points.IsComplete());
    EXPECT_TRUE(IsNoSample(points.Values(0)[50]));
    x.Grow({100.0});
    EXPECT_FALSE(points.IsComplete());
    EXPECT_TRUE(points.Read({&x}, {50, 120}));
    EXPECT_EQ(points.Values(0)[50], 100.0);
}

TEST(PastPoints, OfLinesBeforeTheFirstOneAreMissing) {
    CountedHistory x(Rising(5000));
    x.looks_left = kMany;
    PastPoints points;
    for (const LineRange lines :
         {LineRange{-2, 3000}, LineRange{-1500, 20}, LineRange{-3000, -1000}}) {
        EXPECT_TRUE(points.Read({&x}, lines));
        EXPECT_TRUE(points.IsComplete());
        EXPECT_TRUE(AreTheSame(points.Values(0), Window(lines, 0, x))) << lines.begin;
    }
}

TEST(PastPoints, OfMoreStreamsThanADrawingMayLookAtCome) {
    std::vector<std::unique_ptr<CountedHistory>> histories;
    std::vector<History*> streams;
    for (int i = 0; i < 100; ++i) {
        histories.push_back(std::make_unique<CountedHistory>(Rising(3000)));
        streams.push_back(histories.back().get());
    }
    PastPoints points;
    for (int drawing = 0; drawing < 3; ++drawing) {
        for (const auto& history : histories) {
            history->looks_left = 1;
        }
        points.Read(streams, {0, 3000});
    }
    EXPECT_TRUE(points.IsComplete());
}

}  // namespace
}  // namespace wavo
