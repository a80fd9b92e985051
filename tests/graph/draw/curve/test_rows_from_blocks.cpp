// Rows that are found from blocks are those of the samples.
#include "graph/draw/curve/rows_from_blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "graph/draw/raster/mapping.h"

namespace wavo {
namespace {

constexpr std::int32_t kRows = 431;

PixelEdges MakeEdges() {
    const QRect plot(0, 0, 10, kRows);
    AxisMapping mapping(Coordinate::kY, HorizontalScaleLines(plot, 4));
    mapping.Fill({-10.0, 10.0});
    PixelEdges edges;
    edges.Find(mapping, Coordinate::kY, plot.bottom(), kRows);
    return edges;
}

/// Rows of a row of columns, and how many of these were looked at.
struct Found {
    explicit Found(std::size_t columns) : first(columns), top(columns), bottom(columns) {}

    std::vector<std::int32_t> first;
    std::vector<std::int32_t> top;
    std::vector<std::int32_t> bottom;
    std::size_t looked_at = 0;
};

class ColumnsOfBlocks : public ::testing::Test {
 protected:
    void Fill(std::size_t count, const std::function<double(double)>& value) {
        std::vector<double> samples(count);
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = value(static_cast<double>(i) / static_cast<double>(count));
        }
        m_ring.SetExpectedSize(count);
        ASSERT_TRUE(m_ring.Push(samples, count));
        m_pyramid.Clear();
        m_pyramid.Update(m_ring);
    }

    [[nodiscard]] std::int32_t RowOf(double sample) const {
        return kRows - 1 - m_edges.IndexOf(sample);
    }

    /// Compares with the rows of each sample.
    Found ExpectRows(const std::vector<std::size_t>& bounds, std::size_t count) {
        const std::size_t columns = bounds.size() - 1;
        Found found(columns);
        RowsFromBlocks rows;
        const double* const slots = m_ring.Slots().data();
        const std::size_t detail = m_pyramid.DetailOf(count);
        EXPECT_GT(detail, 0U);
        found.looked_at = rows.Find({slots, m_pyramid}, bounds, detail, m_edges,
                                    {found.first.data(), found.top.data(), found.bottom.data()});
        for (std::size_t i = 0; i < columns; ++i) {
            const auto [least, most] =
                std::minmax_element(slots + bounds[i], slots + bounds[i + 1]);
            EXPECT_EQ(found.top[i], RowOf(*most)) << "column " << i;
            EXPECT_EQ(found.bottom[i], RowOf(*least)) << "column " << i;
            const std::int32_t first = RowOf(slots[bounds[i]]);
            if (i == 0 || i + 1 == columns || first < found.top[i - 1] ||
                first > found.bottom[i - 1]) {
                EXPECT_EQ(found.first[i], first) << "column " << i;
            } else {
                EXPECT_GE(found.first[i], found.top[i - 1]) << "column " << i;
                EXPECT_LE(found.first[i], found.bottom[i - 1]) << "column " << i;
            }
        }
        return found;
    }

    /// Columns of about one width, from a slot on.
    [[nodiscard]] std::vector<std::size_t> Bounds(std::size_t begin, std::size_t width) {
        std::vector<std::size_t> bounds{begin};
        while (bounds.back() + width + 1 < m_ring.Size()) {
            bounds.push_back(bounds.back() + width + m_random() % 2);
        }
        return bounds;
    }

    SampleRing m_ring;
    MinMaxPyramid m_pyramid;
    const PixelEdges m_edges = MakeEdges();
    std::mt19937_64 m_random{8};
};

TEST_F(ColumnsOfBlocks, HaveTheRowsOfTheirSamples) {
    std::uniform_real_distribution<double> noise(-11.0, 11.0);
    const std::vector<std::function<double(double)>> shapes = {
        [](double part) { return 9.0 * std::sin(40.0 * part); },
        [](double part) { return 12.0 * std::sin(4000.0 * part); },
        [&](double) { return noise(m_random); },
        [&](double part) { return 9.0 * std::sin(90.0 * part) + 0.01 * noise(m_random); },
        [](double part) { return std::fmod(part * 57.0, 1.0) < 0.5 ? -8.0 : 8.25; },
        [&](double part) {
            return m_random() % 500 == 0 ? std::numeric_limits<double>::infinity() : part;
        },
    };
    for (std::size_t shape = 0; shape < shapes.size(); ++shape) {
        Fill(150000, shapes[shape]);
        for (const std::size_t width : {48U, 64U, 100U, 767U, 768U, 1000U, 4096U, 13000U}) {
            for (const std::size_t begin : {0U, 1U, 255U, 256U, 999U}) {
                ExpectRows(Bounds(begin, width), width);
                ASSERT_FALSE(HasFailure())
                    << "shape " << shape << ", columns of " << width << " from " << begin;
            }
        }
    }
}

TEST_F(ColumnsOfBlocks, MayDifferInLength) {
    Fill(100000, [](double part) { return 9.0 * std::sin(40.0 * part); });
    for (int round = 0; round < 100; ++round) {
        std::vector<std::size_t> bounds{m_random() % 500};
        while (bounds.back() < 100000 && bounds.size() < 300) {
            const std::size_t longest = std::size_t{1} << m_random() % 13;
            bounds.push_back(
                std::min<std::size_t>(100000, bounds.back() + 1 + m_random() % longest));
        }
        ExpectRows(bounds, 1000);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(ColumnsOfBlocks, AreHardlyEverReadWhereTheCurveIsSmooth) {
    Fill(1000000, [](double part) { return 9.0 * std::sin(5.0 * part); });
    const std::vector<std::size_t> bounds = Bounds(77, 1000);
    const Found found = ExpectRows(bounds, 1000);
    EXPECT_LT(found.looked_at, bounds.size() / 20);
}

}  // namespace
}  // namespace wavo
