#include "graph/draw/curve/sample_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <random>
#include <vector>

#include "graph/draw/raster/mapping.h"
#include "special_values.h"

namespace wavo {
namespace {

/// The edges of a plot area of so many rows, values from -1 to 1.
PixelEdges EdgesOf(std::int32_t height) {
    const QRect plot(0, 0, 10, height);
    AxisMapping mapping(Coordinate::kY, HorizontalScaleLines(plot, 3));
    mapping.Fill({-1.0, 1.0});
    PixelEdges edges;
    edges.Find(mapping, Coordinate::kY, plot.bottom(), height);
    return edges;
}

/// The samples of a curve, cut somewhere as a ring is.
class Samples {
 public:
    explicit Samples(unsigned seed) : m_random(seed) {}

    void Add(std::size_t count) {
        std::uniform_real_distribution<double> level(-1.2, 1.2);
        for (std::size_t i = 0; i < count; ++i) {
            held.push_back(m_random() % 97 == 0 ? kInf : level(m_random));
        }
    }
    void Drop(std::size_t count) {
        held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(count));
        first += count;
    }
    bool FollowedBy(SampleRows& rows, const PixelEdges& edges) {
        const std::size_t cut = m_random() % (held.size() + 1);
        const auto at = held.begin() + static_cast<std::ptrdiff_t>(cut);
        const std::vector<double> before(held.begin(), at);
        const std::vector<double> after(at, held.end());
        return rows.Follow(first, {before, after}, edges);
    }
    void ExpectRows(const SampleRows& rows, const PixelEdges& edges) {
        std::vector<std::size_t> bounds{0};
        const std::size_t most = 1 + m_random() % 150;
        while (bounds.back() < held.size()) {
            bounds.push_back(std::min(held.size(), bounds.back() + 1 + m_random() % most));
        }
        const std::size_t columns = bounds.size() - 1;
        for (const Instructions use : {Instructions::kPortable, BestInstructions()}) {
            std::vector<std::int32_t> first_row(columns);
            std::vector<std::int32_t> top(columns);
            std::vector<std::int32_t> bottom(columns);
            rows.OfColumns(bounds, {first_row.data(), top.data(), bottom.data()}, use);
            for (std::size_t i = 0; i < columns; ++i) {
                const auto begin = held.begin() + static_cast<std::ptrdiff_t>(bounds[i]);
                const auto end = held.begin() + static_cast<std::ptrdiff_t>(bounds[i + 1]);
                const auto row = [&](double sample) {
                    return edges.Size() - 1 - edges.IndexOf(sample);
                };
                ASSERT_EQ(first_row[i], row(*begin));
                ASSERT_EQ(top[i], row(*std::max_element(begin, end)));
                ASSERT_EQ(bottom[i], row(*std::min_element(begin, end)));
            }
        }
    }

    std::deque<double> held;
    std::uint64_t first = 7;

 private:
    std::mt19937 m_random;
};

TEST(SampleRows, AreThoseOfTheSamplesHoweverTheseMove) {
    for (const std::int32_t height : {1, 2, 60, 255, 256, 257, 900, 32767}) {
        const PixelEdges edges = EdgesOf(height);
        Samples samples(static_cast<unsigned>(height));
        std::mt19937 random(3);
        SampleRows rows;
        samples.Add(1);
        for (int step = 0; step < 200; ++step) {
            switch (random() % 12) {
                case 0:  // others altogether
                    samples.first += 100000;
                    break;
                case 1:  // some from before, which it knows no more
                    samples.held.push_front(0.5);
                    --samples.first;
                    break;
                case 2:  // fewer
                    samples.held.pop_back();
                    samples.Add(samples.held.empty() ? 1 : 0);
                    rows.Forget();
                    break;
                default:
                    samples.Add(random() % 300);
                    samples.Drop(std::min<std::size_t>(samples.held.size() - 1, random() % 290));
            }
            ASSERT_TRUE(samples.FollowedBy(rows, edges));
            samples.ExpectRows(rows, edges);
            if (HasFatalFailure()) {
                FAIL() << height << " rows, step " << step;
            }
        }
    }
}

TEST(SampleRows, TellWhileThereIsNaN) {
    const PixelEdges edges = EdgesOf(100);
    Samples samples(1);
    SampleRows rows;
    samples.Add(50);
    samples.held.push_back(kNaN);
    samples.Add(10);
    EXPECT_FALSE(samples.FollowedBy(rows, edges));
    samples.Drop(50);
    EXPECT_FALSE(samples.FollowedBy(rows, edges));
    samples.Drop(1);
    samples.Add(5);
    EXPECT_TRUE(samples.FollowedBy(rows, edges));
    samples.ExpectRows(rows, edges);
}

}  // namespace
}  // namespace wavo
