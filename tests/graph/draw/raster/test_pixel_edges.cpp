#include "graph/draw/raster/pixel_edges.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "graph/draw/raster/mapping.h"
#include "special_values.h"

namespace wavo {
namespace {

constexpr double kLeastDouble = std::numeric_limits<double>::denorm_min();

struct Case {
    const char* name;
    ScaleRange range;
};

const std::vector<Case> kCases{
    {"usual", {-10.0, 10.0}},
    {"odd", {0.1, 0.7}},
    {"far from 0", {1e9, 1e9 + 1e-3}},
    {"few doubles", {1.0, 1.0 + 5e-15}},
    {"tiny", {0.0, 1e-300}},
    {"least", {0.0, kLeastDouble}},
    {"around 0", {-kLeastDouble, kLeastDouble}},
    {"huge", {-1e300, 1e300}},
    {"whole", {-kMax, kMax}},
    {"constant", {5.0, 5.0}},
    {"zero", {0.0, 0.0}},
    {"greatest", {kMax, kMax}},
    {"inverted", {5.0, -5.0}},
    {"not a number", {kNaN, kNaN}},
    {"half a number", {0.0, kNaN}},
    {"endless", {-kInf, kInf}},
    {"endless upwards", {0.0, kInf}},
    {"endless downwards", {-kInf, 0.0}},
};

/// Values around everything where a mapping may step.
std::vector<double> Probes(const PixelEdges& edges, const ScaleLines& lines) {
    std::vector<double> probes{0.0,   -0.0, 1.0,   -1.0,   kLeastDouble, -kLeastDouble, kMax,
                               -kMax, kInf, -kInf, 1e-300, 1e300,        -1e300,        0.3};
    const auto add = [&](double value) {
        if (!std::isnan(value)) {
            probes.insert(probes.end(),
                          {value, std::nextafter(value, kInf), std::nextafter(value, -kInf)});
        }
    };
    for (std::int32_t index = 0; index < edges.Size(); ++index) {
        add(edges.Edge(index));
    }
    for (const ScaleLine& line : lines) {
        add(line.value);
    }
    const double span = lines.back().value - lines.front().value;
    for (int i = -10; i <= 110; ++i) {
        add(lines.front().value + span * i / 100.0);
    }
    return probes;
}

void ExpectAsMapped(const AxisMapping& mapping, Coordinate coordinate, std::int32_t first,
                    std::int32_t pixels, const char* name) {
    PixelEdges edges;
    edges.Find(mapping, coordinate, first, pixels);
    ASSERT_EQ(edges.Size(), pixels);
    PixelEdges one_by_one;
    one_by_one.Find(mapping, coordinate, first, pixels, Instructions::kPortable);
    for (std::int32_t index = 0; index < pixels; ++index) {
        const double edge = one_by_one.Edge(index);
        ASSERT_TRUE(std::isnan(edge) ? std::isnan(edges.Edge(index)) : edges.Edge(index) == edge)
            << name << ": " << index << " of " << pixels;
    }
    const std::vector<double> probes = Probes(edges, mapping.Lines());
    std::vector<std::int32_t> indices(probes.size());
    std::vector<std::int32_t> portable(probes.size());
    edges.IndicesOf(probes, indices.data(), BestInstructions());
    edges.IndicesOf(probes, portable.data(), Instructions::kPortable);
    for (std::size_t i = 0; i < probes.size(); ++i) {
        const std::int32_t pixel = mapping.MapForced(probes[i]);
        const std::int32_t expected = coordinate == Coordinate::kX ? pixel - first : first - pixel;
        ASSERT_EQ(edges.IndexOf(probes[i]), expected) << name << ": " << probes[i];
        ASSERT_EQ(indices[i], expected) << name << ": " << probes[i];
        ASSERT_EQ(portable[i], expected) << name << ": " << probes[i];
    }
}

const std::vector<QRect> kPlots{{0, 0, 1, 1},       {3, 4, 2, 2},        {6, 18, 77, 43},
                                {-20, -30, 50, 60}, {100, 10, 400, 333}, {0, 0, 5, 2000}};

TEST(PixelEdges, GiveThePixelsOfTheMappingForEveryScale) {
    for (const Case& scale : kCases) {
        for (const QRect& plot : kPlots) {
            for (const std::int32_t lines : {1, 3, 7}) {
                AxisMapping x(Coordinate::kX, VerticalScaleLines(plot, lines));
                AxisMapping y(Coordinate::kY, HorizontalScaleLines(plot, lines));
                x.Fill(scale.range);
                y.Fill(scale.range);
                ExpectAsMapped(x, Coordinate::kX, plot.left(), plot.width(), scale.name);
                ExpectAsMapped(y, Coordinate::kY, plot.bottom(), plot.height(), scale.name);
                if (HasFatalFailure()) {
                    FAIL() << plot.width() << " x " << plot.height() << ", " << lines << " lines";
                }
            }
        }
    }
}

TEST(PixelEdges, AreTheSameWhereverTheScaleLies) {
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> exponent(-12.0, 12.0);
    std::uniform_real_distribution<double> part(-1.0, 1.0);
    for (int round = 0; round < 300; ++round) {
        const double middle = part(random) * std::pow(10.0, exponent(random));
        const double half = std::pow(10.0, exponent(random));
        const auto height = static_cast<std::int32_t>(20 + random() % 900);
        const QRect plot(static_cast<int>(random() % 40), static_cast<int>(random() % 40), height,
                         height);
        const auto lines = static_cast<std::int32_t>(1 + random() % 9);
        AxisMapping x(Coordinate::kX, VerticalScaleLines(plot, lines));
        AxisMapping y(Coordinate::kY, HorizontalScaleLines(plot, lines));
        x.Fill({middle - half, middle + half});
        y.Fill({middle - half, middle + half});
        ExpectAsMapped(x, Coordinate::kX, plot.left(), plot.width(), "x");
        ExpectAsMapped(y, Coordinate::kY, plot.bottom(), plot.height(), "y");
        ASSERT_FALSE(HasFatalFailure()) << middle << " +- " << half << ", " << height << " pixels";
    }
}

TEST(PixelEdges, GiveThePixelsOfUnevenScaleLines) {
    // Values unevenly spread, lines unevenly spaced, two lines in one place, a step in the values.
    const std::vector<std::vector<double>> values{
        {0, 1, 10, 100, 1000}, {0, 0, 1, 1, 2}, {-1e-9, 0, 1e-9, 5, 1e9}};
    const std::vector<std::vector<std::int32_t>> places{
        {0, 10, 20, 30, 40}, {0, 1, 1, 37, 40}, {0, 39, 39, 40, 40}, {0, 0, 1, 2, 40}};
    for (const auto& value : values) {
        for (const auto& place : places) {
            ScaleLines vertical(5);
            ScaleLines horizontal(5);
            for (std::size_t i = 0; i < 5; ++i) {
                const std::int32_t x = 7 + place[i];
                const std::int32_t y = 60 - place[i];
                vertical[i] = {x, 60, x, 20, value[i]};
                horizontal[i] = {7, y, 47, y, value[i]};
            }
            ExpectAsMapped(AxisMapping(Coordinate::kX, vertical), Coordinate::kX, 7, 41, "x");
            ExpectAsMapped(AxisMapping(Coordinate::kY, horizontal), Coordinate::kY, 60, 41, "y");
        }
    }
}

std::int32_t ColumnOf(const std::vector<std::uint64_t>& first_steps, std::uint64_t step) {
    std::int32_t column = 0;
    for (std::size_t i = 0; i + 1 < first_steps.size(); ++i) {
        if (first_steps[i] <= step) {
            column = static_cast<std::int32_t>(i);
        }
    }
    return column;
}

TEST(StepColumns, PutEachPlaceWhereTheMappingPutsIt) {
    for (const double range : {1.0, 0.333, 7.0, 1e-300, 0.0, -1.0, 1e300, kInf, kNaN}) {
        for (const double step : {0.001, 0.1, 1.0 / 3.0, 2.0}) {
            const QRect plot(11, 0, 97, 10);
            AxisMapping x(Coordinate::kX, VerticalScaleLines(plot, 5));
            x.Fill({0.0, range});
            PixelEdges edges;
            edges.Find(x, Coordinate::kX, plot.left(), plot.width());
            StepColumns columns;
            columns.Find(edges, step, 1201);
            ASSERT_EQ(columns.FirstSteps().size(), 98U);
            ASSERT_EQ(columns.FirstSteps()[0], 0U);
            ASSERT_EQ(columns.FirstSteps()[97], 1201U);
            for (std::uint64_t k = 0; k < 1200; ++k) {
                ASSERT_EQ(ColumnOf(columns.FirstSteps(), k),
                          x.MapForced(static_cast<double>(k) * step) - plot.left())
                    << "step " << k << " of " << step << " in " << range;
            }
        }
    }
}

TEST(SumColumns, PutEachSumWhereTheMappingPutsItAndFollowTheCurve) {
    for (const double range : {1.0, 0.333, 1e-300, 0.0, -1.0, kNaN}) {
        for (const double step : {0.001, 0.1, 1.0 / 3.0}) {
            const QRect plot(11, 0, 97, 10);
            AxisMapping x(Coordinate::kX, VerticalScaleLines(plot, 5));
            x.Fill({0.0, range});
            PixelEdges edges;
            edges.Find(x, Coordinate::kX, plot.left(), plot.width());
            SumColumns columns;
            // Grows, stands still, and becomes shorter once.
            for (const std::uint64_t size : {1U, 2U, 50U, 50U, 997U, 3U, 400U, 1001U}) {
                columns.Follow(edges, step, size);
                ASSERT_EQ(columns.FirstSteps().size(), 98U);
                ASSERT_EQ(columns.FirstSteps().back(), size);
                double time = 0.0;
                for (std::uint64_t k = 0; k < size; ++k) {
                    ASSERT_EQ(ColumnOf(columns.FirstSteps(), k), x.MapForced(time) - plot.left())
                        << "sample " << k << " of " << size << ", step " << step;
                    time += step;
                }
            }
        }
    }
}

}  // namespace
}  // namespace wavo
