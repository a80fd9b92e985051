// Pixels that are painted with wide instructions are those of portable code.
#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

#include "graph/draw/raster/level_mask.h"
#include "graph/draw/raster/span_pixels.h"

namespace wavo {
namespace {

constexpr int kWidth = 70;
constexpr int kHeight = 50;

std::vector<std::uint32_t> RandomPixels(std::mt19937& random) {
    std::vector<std::uint32_t> pixels(std::size_t{kWidth} * kHeight);
    for (std::uint32_t& pixel : pixels) {
        pixel = static_cast<std::uint32_t>(random());
    }
    return pixels;
}

struct RandomCurve {
    explicit RandomCurve(std::mt19937& random) : top(kWidth), bottom(kWidth) {
        for (std::size_t i = 0; i < top.size(); ++i) {
            top[i] = static_cast<std::int16_t>(random() % kHeight);
            bottom[i] = static_cast<std::int16_t>(top[i] + static_cast<int>(random() % 20) - 4);
        }
    }
    std::vector<std::int16_t> top;
    std::vector<std::int16_t> bottom;
};

TEST(WidePixels, StacksOfCurves) {
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        const std::vector<std::uint32_t> background = RandomPixels(random);
        std::vector<int> rows(kHeight);
        std::iota(rows.begin(), rows.end(), 0);
        rows[7] = 3;
        const int first = static_cast<int>(random() % 20);
        const int count = round % 3 == 0 ? kBlockColumns : static_cast<int>(random() % 50) + 1;
        std::vector<RandomCurve> curves;
        std::vector<StackedSpans> stack;
        for (std::size_t i = random() % 6; i > 0; --i) {
            curves.emplace_back(random);
        }
        for (const RandomCurve& curve : curves) {
            const int from = static_cast<int>(random() % kHeight);
            stack.push_back({curve.top.data() + first, curve.bottom.data() + first,
                             static_cast<std::uint32_t>(random()), from,
                             from + static_cast<int>(random() % kHeight)});
        }
        const int first_row = static_cast<int>(random() % kHeight);
        const int last_row = first_row + static_cast<int>(random() % (kHeight - first_row));
        const std::vector<std::uint32_t> before = RandomPixels(random);
        std::vector<std::uint32_t> expected = before;
        for (int row = first_row; row <= last_row; ++row) {
            for (int i = 0; i < count; ++i) {
                std::uint32_t& pixel = expected[static_cast<std::size_t>(row * kWidth + first + i)];
                pixel = background[static_cast<std::size_t>(
                    rows[static_cast<std::size_t>(row)] * kWidth + first + i)];
                for (const StackedSpans& curve : stack) {
                    if (curve.first_row <= row && row <= curve.last_row && curve.top[i] <= row &&
                        row <= curve.bottom[i]) {
                        pixel = curve.color;
                    }
                }
            }
        }
        for (const Instructions use : {BestInstructions(), Instructions::kPortable}) {
            std::vector<std::uint32_t> pixels = before;
            PaintStack({pixels.data() + first, kWidth, background.data() + first, kWidth,
                        rows.data(), 0, count},
                       first_row, last_row, stack, use);
            ASSERT_EQ(pixels, expected) << "round " << round;
        }
    }
}

TEST(WidePixels, BlendingWithEveryLevel) {
    std::mt19937 random(2);
    QImage wide(kWidth, kHeight, QImage::Format_RGB32);
    for (int round = 0; round < 200; ++round) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                wide.setPixel(x, y, 0xFF000000U | static_cast<QRgb>(random()));
            }
        }
        QImage portable = wide.copy();
        QImage expected = wide.copy();
        const QRgb color = 0xFF000000U | static_cast<QRgb>(random());
        const QRect area(static_cast<int>(random() % 9), static_cast<int>(random() % 9),
                         1 + static_cast<int>(random() % 60), 1 + static_cast<int>(random() % 40));
        LevelMask masks[2];
        masks[0].Begin(area);
        masks[1].Begin(area);
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                if (random() % 3 != 0) {
                    const std::uint32_t level = static_cast<std::uint32_t>(random() % 256);
                    for (LevelMask& mask : masks) {
                        mask.Pixel({x, y, static_cast<LevelMask::Level>(level << 16U)});
                    }
                    if (level != 0) {
                        expected.setPixel(x, y, BlendPixel(expected.pixel(x, y), color, level));
                    }
                }
            }
        }
        PixelRuns touched;
        masks[0].BlendInto(wide, color, &touched, BestInstructions());
        masks[1].BlendInto(portable, color, nullptr, Instructions::kPortable);
        ASSERT_EQ(wide, expected) << "round " << round;
        ASSERT_EQ(portable, expected) << "round " << round;
        for (const PixelRun& run : touched) {
            ASSERT_TRUE(area.contains(run.first, run.row) && area.contains(run.end - 1, run.row));
        }
    }
}

}  // namespace
}  // namespace wavo
